#include "Deletion/DeleteConfirmation.h"

#include "Controls/CheckBox.h"
#include "Deletion/LargestNames.h"
#include "Deletion/ReclaimLine.h"
#include "Text/MarkText.h"
#include "Text/SizeText.h"
#include "Theme/Theme.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace tallyroom {

DeleteConfirmation::DeleteConfirmation(std::vector<Entry> entries, Default choice, const Caution& caution,
                                       QWidget* parent)
    : QDialog(parent), m_entries(std::move(entries)), m_pending(PendingDeletion::many(m_entries))
{
    const bool isInTrash = choice == Default::leaveInTrash;
    const QString title =
        isInTrash ? QStringLiteral("Supprimer définitivement ?") : QStringLiteral("Comment supprimer ?");
    setWindowTitle(title);
    auto* const heading = new QLabel(title);
    Theme::dress(heading, Theme::Text::title);
    QStringList parts{message(choice), caution.warning, MarkText::warning(m_entries)};
    parts.removeAll(QString{});
    auto* const text = new QLabel(parts.join(QStringLiteral("\n\n")));
    text->setWordWrap(true);
    text->setTextFormat(Qt::PlainText);
    Theme::dress(text, Theme::Text::body);
    auto* const names = new QLabel(largestNames(m_entries).join(QLatin1Char{'\n'}));
    names->setTextFormat(Qt::PlainText);
    Theme::dress(names, Theme::Text::body);
    auto* const trashing =
        new QLabel(QStringLiteral("Corbeille : rien n’est libéré avant qu’elle soit vidée."));
    Theme::dress(trashing, Theme::Text::body);
    trashing->setVisible(!isInTrash);
    auto* const reclaim = new ReclaimLine(m_entries);
    const auto describe =
        [this, said = QStringList{text->text(), names->text(), isInTrash ? QString{} : trashing->text()},
         reclaim] {
            setAccessibleDescription((said + QStringList{reclaim->text()}).join(QStringLiteral("\n\n")));
        };
    connect(reclaim, &ReclaimLine::measured, this, describe);
    describe();

    QPushButton* const trash = addChoice(QStringLiteral("Mettre à la corbeille"), false);
    trash->setHidden(isInTrash);
    QPushButton* const permanent = addChoice(QStringLiteral("Supprimer définitivement"), true);
    auto* const cancel = new QPushButton(QStringLiteral("Annuler"), this);
    Theme::dress(cancel, Theme::Button::plain);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    QPushButton* const preferred = isInTrash ? cancel : choice == Default::trash ? trash : permanent;
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
    column->addWidget(names);
    column->addWidget(trashing);
    column->addWidget(reclaim);
    if (!caution.acknowledgement.isEmpty()) {
        demand(caution.acknowledgement, {trash, permanent}, column);
        cancel->setDefault(true);
        cancel->setFocus();
    }
    column->addSpacing(Theme::gap);
    column->addLayout(buttons);
    column->setSizeConstraint(QLayout::SetFixedSize);
}

QString DeleteConfirmation::message(Default choice) const
{
    return m_pending.label + QStringLiteral(" · ") + sizeText(m_pending.size) + QStringLiteral("\n\n") +
           (choice == Default::leaveInTrash
                ? QStringLiteral("Ces éléments quittent la corbeille pour toujours.")
                : QStringLiteral("« Mettre à la corbeille » est réversible. « Supprimer définitivement » ne "
                                 "l'est pas."));
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
        Q_EMIT confirmed(m_entries, permanently);
        accept();
    });
    return button;
}

} // namespace tallyroom
