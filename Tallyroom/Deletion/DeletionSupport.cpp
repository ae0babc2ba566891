#include "Deletion/DeletionSupport.h"

#include "Model/CheckedArithmetic.h"
#include "Text/SizeText.h"

#include <algorithm>
#include <iterator>

namespace tallyroom {

namespace {

/// What a stopped batch adds to its report.
QString stoppedText(std::size_t notBegun)
{
    return notBegun == 0 ? QString{}
                         : QStringLiteral(" Interrompu : %1 élément(s) non traité(s).").arg(notBegun);
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
    return count == 0
               ? QString{}
               : QStringLiteral(" %1 en partie supprimé(s) · %2 libérés.").arg(count).arg(sizeText(freed));
}

} // namespace

PendingDeletion PendingDeletion::many(const std::vector<Entry>& entries)
{
    PendingDeletion pending;
    std::ranges::transform(entries, std::back_inserter(pending.urls), &Entry::url);
    pending.size = totalSize(entries);
    pending.label = QString::number(entries.size()) + QStringLiteral(" élément") +
                    (entries.size() >= 2 ? QStringLiteral("s") : QString{});
    return pending;
}

EntryList withRestored(const EntryList& entries, const std::vector<Entry>& restored)
{
    UrlSet missing;
    std::ranges::transform(restored, std::inserter(missing, missing.end()), &Entry::url);
    for (const Entry& entry : entries) {
        missing.erase(entry.url);
    }
    if (missing.empty()) {
        return entries;
    }
    std::vector<Entry> all = entries.toVector();
    std::ranges::copy_if(restored, std::back_inserter(all),
                         [&missing](const Entry& entry) { return missing.contains(entry.url); });
    std::ranges::stable_sort(all, isLarger);
    return EntryList{std::move(all)};
}

QString removalMessage(const FileRemover::RemovalResult& result, std::int64_t freed, bool permanently,
                       std::size_t notBegun)
{
    const QString verb =
        permanently ? QStringLiteral("supprimé(s) définitivement") : QStringLiteral("mis à la corbeille");
    const QString removed = QString::number(result.removed.size());
    const QString message = result.allSucceeded()
                                ? QStringLiteral("%1 élément(s) · %2 %3.").arg(removed, sizeText(freed), verb)
                                : QStringLiteral("%1 %2, %3 en échec.")
                                      .arg(removed, verb, QString::number(result.failures.size()));
    return message + partlyText(result) + stoppedText(notBegun);
}

QString restoreMessage(const FileRemover::RemovalResult& result, std::size_t notBegun)
{
    const QString message =
        result.allSucceeded()
            ? QStringLiteral("Suppression annulée · %1 élément(s) restauré(s).").arg(result.removed.size())
            : QStringLiteral("Restauration partielle : %1 en échec.").arg(result.failures.size());
    return message + stoppedText(notBegun);
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
