#include "Deletion/DeletionSupport.h"

#include "Bridge/SizeText.h"

#include <algorithm>
#include <iterator>

namespace tallyroom {

namespace {

UrlSet setOf(const std::vector<FileUrl>& urls)
{
    return {urls.begin(), urls.end()};
}

std::vector<Entry> namedBy(const UrlSet& urls, const std::vector<Entry>& entries)
{
    std::vector<Entry> named;
    std::ranges::copy_if(entries, std::back_inserter(named),
                         [&urls](const Entry& entry) { return urls.contains(entry.url); });
    return named;
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

std::vector<Entry> deletionTargets(const EntryList& entries, const UrlSet& urls)
{
    std::vector<Entry> targets;
    std::ranges::copy_if(entries, std::back_inserter(targets),
                         [&urls](const Entry& entry) { return urls.contains(entry.url); });
    return targets;
}

DeletionOutcome applyDeletion(const FileRemover::RemovalResult& result, const std::vector<Entry>& targets,
                              const EntryList& entries, bool permanently)
{
    const UrlSet removed = setOf(result.removed);
    std::vector<Entry> removedEntries = namedBy(removed, targets);
    DeletionOutcome outcome{.entries = withoutUrls(entries, removed),
                            .message = removalMessage(result, totalSize(removedEntries), permanently),
                            .undoable = std::nullopt};
    if (result.canUndo()) {
        outcome.undoable = UndoableDeletion{std::move(removedEntries), result.trashed};
    }
    return outcome;
}

RestoreOutcome applyRestore(const FileRemover::RemovalResult& result, const UndoableDeletion& undoable,
                            const EntryList& entries)
{
    const std::vector<Entry> restored = namedBy(setOf(result.removed), undoable.entries);
    UrlSet listed;
    std::ranges::transform(entries, std::inserter(listed, listed.end()), &Entry::url);
    std::vector<Entry> all = entries.toVector();
    std::ranges::copy_if(restored, std::back_inserter(all),
                         [&listed](const Entry& entry) { return !listed.contains(entry.url); });
    std::ranges::stable_sort(all, isLarger);
    const QString message =
        result.allSucceeded()
            ? QStringLiteral("Suppression annulée · %1 élément(s) restauré(s).").arg(restored.size())
            : QStringLiteral("Restauration partielle : %1 en échec.").arg(result.failures.size());
    return {EntryList{std::move(all)}, message};
}

QString removalMessage(const FileRemover::RemovalResult& result, std::int64_t freed, bool permanently)
{
    const QString verb =
        permanently ? QStringLiteral("supprimé(s) définitivement") : QStringLiteral("mis à la corbeille");
    if (result.allSucceeded()) {
        return QStringLiteral("%1 élément(s) · %2 %3.")
            .arg(QString::number(result.removed.size()), sizeText(freed), verb);
    }
    return QStringLiteral("%1 %2, %3 en échec.")
        .arg(QString::number(result.removed.size()), verb, QString::number(result.failures.size()));
}

std::int64_t totalSize(const std::vector<Entry>& entries)
{
    std::int64_t total = 0;
    for (const Entry& entry : entries) {
        total = checkedSum(total, entry.sizeBytes);
    }
    return total;
}

EntryList withoutUrls(const EntryList& entries, const UrlSet& urls)
{
    const auto isNamed = [&urls](const Entry& entry) { return urls.contains(entry.url); };
    if (urls.empty() || std::ranges::none_of(entries, isNamed)) {
        return entries;
    }
    std::vector<Entry> others;
    std::ranges::remove_copy_if(entries, std::back_inserter(others), isNamed);
    return EntryList{std::move(others)};
}

} // namespace tallyroom
