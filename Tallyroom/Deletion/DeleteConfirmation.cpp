#include "Deletion/DeleteConfirmation.h"

#include "Bridge/SizeText.h"
#include "Components/CheckBox.h"
#include "Components/Theme.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace tallyroom {

DeleteConfirmation::DeleteConfirmation(PendingDeletion pending, Default choice, const Caution& caution,
                                       QWidget* parent)
    : QDialog(parent), m_pending(std::move(pending))
{
    const QString title = QStringLiteral("Comment supprimer ?");
    setWindowTitle(title);
    auto* const heading = new QLabel(title);
    Theme::dress(heading, Theme::Text::title);
    auto* const text = new QLabel(
        caution.warning.isEmpty() ? message() : message() + QStringLiteral("\n\n") + caution.warning);
    text->setWordWrap(true);
    text->setTextFormat(Qt::PlainText);
    Theme::dress(text, Theme::Text::body);
    setAccessibleDescription(text->text());

    QPushButton* const trash = addChoice(QStringLiteral("Mettre à la corbeille"), false);
    QPushButton* const permanent = addChoice(QStringLiteral("Supprimer définitivement"), true);
    auto* const cancel = new QPushButton(QStringLiteral("Annuler"), this);
    Theme::dress(cancel, Theme::Button::plain);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    QPushButton* const preferred = choice == Default::trash ? trash : permanent;
    preferred->setDefault(true);
    preferred->setFocus();

    auto* const buttons = new QHBoxLayout;
    buttons->setSpacing(Theme::gap);
    for (QPushButton* const button : {trash, permanent, cancel}) {
        buttons->addWidget(button);
    }
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(Theme::margin, Theme::margin, Theme::margin, Theme::margin);
    column->setSpacing(Theme::gap);
    column->addWidget(heading);
    column->addWidget(text);
    if (!caution.acknowledgement.isEmpty()) {
        demand(caution.acknowledgement, {trash, permanent}, column);
        cancel->setDefault(true);
        cancel->setFocus();
    }
    column->addSpacing(Theme::gap);
    column->addLayout(buttons);
    column->setSizeConstraint(QLayout::SetFixedSize);
}

QString DeleteConfirmation::message() const
{
    return m_pending.label + QStringLiteral(" · ") + sizeText(m_pending.size) +
           QStringLiteral("\n\n« Mettre à la corbeille » est réversible. « Supprimer définitivement » ne "
                          "l'est pas.");
}

void DeleteConfirmation::demand(const QString& acknowledgement, const QList<QPushButton*>& choices,
                                QBoxLayout* column)
{
    auto* const box = new CheckBox(acknowledgement, this);
    column->addWidget(box, 0, Qt::AlignLeft);
    for (QPushButton* const choice : choices) {
        choice->setEnabled(false);
        connect(box, &QCheckBox::toggled, choice, &QPushButton::setEnabled);
    }
}

QPushButton* DeleteConfirmation::addChoice(const QString& text, bool permanently)
{
    auto* const button = new QPushButton(text, this);
    Theme::dress(button, Theme::Button::danger);
    connect(button, &QPushButton::clicked, this, [this, permanently] {
        Q_EMIT confirmed({m_pending.urls.begin(), m_pending.urls.end()}, permanently);
        accept();
    });
    return button;
}

} // namespace tallyroom
