#include "Deletion/DeletionSupport.h"

#include "Deletion/RemovedPlaces.h"
#include "Model/CheckedArithmetic.h"
#include "Text/NumberText.h"
#include "Text/SizeText.h"

#include <algorithm>
#include <iterator>

namespace tallyroom {

namespace {

/// What a stopped batch adds to its report.
QString stoppedText(std::size_t notBegun)
{
    return notBegun == 0 ? QString{}
                         : QStringLiteral(" Interrompu : ") +
                               NumberText::plural(notBegun, QStringLiteral("élément non traité."),
                                                  QStringLiteral("éléments non traités."));
}

/// What failed items have freed all the same.
QString partlyText(const FileRemover::RemovalResult& result)
{
    std::int64_t freed = 0;
    int count = 0;
    for (const FileRemover::RemovalFailure& failure : result.failures) {
        if (failure.freedBytes > 0) {
            freed = checkedSum(freed, failure.freedBytes);
            ++count;
        }
    }
    return count == 0 ? QString{}
                      : QStringLiteral(" %1 · %2 libérés.")
                            .arg(NumberText::plural(count, QStringLiteral("supprimé en partie"),
                                                    QStringLiteral("supprimés en partie")),
                                 sizeText(freed));
}

} // namespace

PendingDeletion PendingDeletion::many(const std::vector<Entry>& entries)
{
    PendingDeletion pending;
    std::ranges::transform(entries, std::back_inserter(pending.urls), &Entry::url);
    pending.size = totalSize(entries);
    pending.label = NumberText::plural(entries.size(), QStringLiteral("élément"));
    return pending;
}

EntryList withRestored(const EntryList& entries, const EntryList& restored)
{
    const RemovedPlaces places{restored.toVector()};
    const auto listed = entries.parted([&](const Entry& entry) { return places.contains(entry); }).first;
    const RemovedPlaces known{listed.toVector()};
    return entries.merged(restored.parted([&](const Entry& entry) { return known.contains(entry); }).second);
}

QString removalMessage(const FileRemover::RemovalResult& result, std::int64_t freed, bool permanently,
                       std::size_t notBegun)
{
    const QString verb =
        permanently ? QStringLiteral("supprimé(s) définitivement") : QStringLiteral("mis à la corbeille");
    const QString removed = NumberText::grouped(result.removed.size());
    const QString message = result.allSucceeded()
                                ? QStringLiteral("%1 élément(s) · %2 %3.").arg(removed, sizeText(freed), verb)
                                : QStringLiteral("%1 %2, %3 en échec.")
                                      .arg(removed, verb, NumberText::grouped(result.failures.size()));
    return message + partlyText(result) + stoppedText(notBegun);
}

QString restoreMessage(const FileRemover::RemovalResult& result, std::size_t notBegun)
{
    const QString message = result.allSucceeded()
                                ? QStringLiteral("Suppression annulée · %1 élément(s) restauré(s).")
                                      .arg(NumberText::grouped(result.removed.size()))
                                : QStringLiteral("Restauration partielle : %1 en échec.")
                                      .arg(NumberText::grouped(result.failures.size()));
    return message + stoppedText(notBegun);
}

QString removalIsBusyMessage()
{
    return QStringLiteral("Une suppression est déjà en cours : réessayez quand elle sera terminée.");
}

std::int64_t totalSize(const std::vector<Entry>& entries)
{
    std::int64_t total = 0;
    for (const Entry& entry : entries) {
        total = checkedSum(total, entry.sizeBytes);
    }
    return total;
}

} // namespace tallyroom
