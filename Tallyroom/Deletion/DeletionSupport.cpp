#include "Deletion/DeletionSupport.h"

#include "Deletion/RemovedPlaces.h"
#include "Model/CheckedArithmetic.h"
#include "Text/NumberText.h"
#include "Text/SizeText.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <unordered_map>

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
std::int64_t partlyFreed(const FileRemover::RemovalResult& result)
{
    std::int64_t freed = 0;
    for (const FileRemover::RemovalFailure& failure : result.failures) {
        freed = checkedSum(freed, failure.freedBytes);
    }
    return freed;
}

QString partlyText(const FileRemover::RemovalResult& result)
{
    const auto count = std::ranges::count_if(
        result.failures, [](const FileRemover::RemovalFailure& failure) { return failure.freedBytes > 0; });
    return count == 0 ? QString{}
                      : QStringLiteral(" %1 · %2 libérés.")
                            .arg(NumberText::plural(count, QStringLiteral("supprimé en partie"),
                                                    QStringLiteral("supprimés en partie")),
                                 sizeText(partlyFreed(result)));
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

std::vector<Entry> trashedEntries(const UndoableDeletion& deletion)
{
    std::unordered_map<FileUrl, const Entry*> originals;
    for (const Entry& entry : deletion.entries) {
        originals.emplace(entry.url, &entry);
    }
    std::vector<Entry> entries;
    for (const FileRemover::TrashedItem& item : deletion.trashed) {
        const auto original = originals.find(item.original);
        Entry& entry = entries.emplace_back(original != originals.end() ? *original->second : Entry{});
        entry.url = item.inTrash;
        entry.identity = item.item.value_or(ItemIdentity{});
    }
    return entries;
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

QString gainNote(const FileRemover::RemovalResult& result, std::int64_t freed,
                 std::optional<std::int64_t> gained)
{
    constexpr std::int64_t writtenMeanwhile = 16 * 1024 * 1024;
    const std::int64_t told = saturatedSum(freed, partlyFreed(result));
    const std::int64_t off = std::abs(saturatedSum(gained.value_or(told), -told));
    if (off <= std::max(told / 10, writtenMeanwhile)) {
        return {};
    }
    const QString start =
        *gained > 0
            ? QStringLiteral("L’espace libre a augmenté de %1 pour %2 supprimés.")
                  .arg(sizeText(*gained), sizeText(told))
            : QStringLiteral("L’espace libre n’a pas augmenté, pour %1 supprimés.").arg(sizeText(told));
    return *gained < told
               ? start + QStringLiteral(" Le reste a d’autres noms, est retenu par un instantané ou un "
                                        "programme qui l’utilise, ou a été écrit entre-temps.")
               : start;
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
