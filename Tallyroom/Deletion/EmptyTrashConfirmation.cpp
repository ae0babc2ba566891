#include "Deletion/EmptyTrashConfirmation.h"

#include "Deletion/LargestNames.h"
#include "Text/NumberText.h"
#include "Text/VolumeText.h"

#include <QLabel>
#include <QPushButton>

#include <algorithm>
#include <iterator>

namespace tallyroom {

namespace {

QString message(const TrashContents& contents, const QString& volume)
{
    return NumberText::plural(contents.items.size(), QStringLiteral("élément")) + QStringLiteral(" · ") +
           VolumeText::atLeast(contents.totalBytes, contents.unread > 0) +
           QStringLiteral(
               "\n\nTout ce que contient votre corbeille sur « %1 » sera supprimé, y compris ce "
               "que d’autres programmes y ont mis. Cette suppression est définitive : elle ne peut "
               "pas être annulée.")
               .arg(volume);
}

/// The items under the names and at the places that people know.
std::vector<Entry> originals(const TrashContents& contents)
{
    std::vector<Entry> entries;
    std::ranges::transform(contents.items, std::back_inserter(entries), [](const TrashContents::Item& item) {
        Entry entry = item.entry;
        if (!item.original.isEmpty()) {
            entry.url = item.original;
            entry.name = item.original.lastPathComponent();
        }
        return entry;
    });
    return entries;
}

} // namespace

EmptyTrashConfirmation::EmptyTrashConfirmation(const TrashContents& contents, const QString& volume,
                                               QWidget* parent)
    : DeletionQuestion(QStringLiteral("Vider la corbeille ?"), parent)
{
    const auto* const text = addWrappedText(message(contents, volume));
    const auto* const names = addText(largestNames(originals(contents)).join(QLatin1Char{'\n'}));
    setAccessibleDescription(text->text() + QStringLiteral("\n\n") + names->text());
    connect(addChoice(QStringLiteral("Vider la corbeille"), true), &QPushButton::clicked, this,
            &QDialog::accept);
    prefer(cancelButton());
}

} // namespace tallyroom
