#include "Deletion/DeleteConfirmation.h"

#include "Controls/CheckBox.h"
#include "Deletion/LargestNames.h"
#include "Deletion/ReclaimLine.h"
#include "Text/MarkText.h"
#include "Text/SizeText.h"

#include <QLabel>
#include <QPushButton>

namespace tallyroom {

DeleteConfirmation::DeleteConfirmation(std::vector<Entry> entries, Default choice, const Caution& caution,
                                       QWidget* parent)
    : DeletionQuestion(choice == Default::leaveInTrash ? QStringLiteral("Supprimer définitivement ?")
                                                       : QStringLiteral("Comment supprimer ?"),
                       parent),
      m_entries(std::move(entries)), m_pending(PendingDeletion::many(m_entries))
{
    const bool isInTrash = choice == Default::leaveInTrash;
    QStringList parts{message(choice), caution.warning, MarkText::warning(m_entries)};
    parts.removeAll(QString{});
    QStringList said{addWrappedText(parts.join(QStringLiteral("\n\n")))->text(),
                     addText(largestNames(m_entries).join(QLatin1Char{'\n'}))->text()};
    if (!isInTrash) {
        said += addText(QStringLiteral("Corbeille : rien n’est libéré avant qu’elle soit vidée."))->text();
    }
    auto* const reclaim = new ReclaimLine(m_entries);
    addWidget(reclaim);
    const auto describe = [this, said, reclaim] {
        setAccessibleDescription((said + QStringList{reclaim->text()}).join(QStringLiteral("\n\n")));
    };
    connect(reclaim, &ReclaimLine::measured, this, describe);
    describe();
    QPushButton* const trash = isInTrash ? nullptr : addWay(QStringLiteral("Mettre à la corbeille"), false);
    QPushButton* const permanent = addWay(QStringLiteral("Supprimer définitivement"), true);
    prefer(isInTrash ? cancelButton() : choice == Default::trash ? trash : permanent);
    if (!caution.acknowledgement.isEmpty()) {
        demand(caution.acknowledgement, {trash, permanent});
        prefer(cancelButton());
    }
}

QString DeleteConfirmation::message(Default choice) const
{
    return m_pending.label + QStringLiteral(" · ") + sizeText(m_pending.size) + QStringLiteral("\n\n") +
           (choice == Default::leaveInTrash
                ? QStringLiteral("Ces éléments quittent la corbeille pour toujours.")
                : QStringLiteral("« Mettre à la corbeille » est réversible. « Supprimer définitivement » ne "
                                 "l'est pas."));
}

void DeleteConfirmation::demand(const QString& acknowledgement, const QList<QPushButton*>& choices)
{
    auto* const box = new CheckBox(acknowledgement, this);
    addWidget(box);
    for (QPushButton* const choice : choices) {
        choice->setEnabled(false);
        connect(box, &QCheckBox::toggled, choice, &QPushButton::setEnabled);
    }
}

QPushButton* DeleteConfirmation::addWay(const QString& text, bool permanently)
{
    QPushButton* const button = addChoice(text, permanently);
    connect(button, &QPushButton::clicked, this, [this, permanently] {
        Q_EMIT confirmed(m_entries, permanently);
        accept();
    });
    return button;
}

} // namespace tallyroom
