#include "Tools/Duplicates/DuplicatesViewModel.h"

#include "Analysis/DuplicateRemovalCheck.h"
#include "Bridge/SizeText.h"
#include "Bridge/TextFilter.h"
#include "Scanning/FileScanner.h"
#include "Settings/PersistedSettings.h"

#include <algorithm>
#include <iterator>
#include <numeric>
#include <utility>

namespace tallyroom {

using DuplicateFinder::DuplicateProgress;

namespace {

/// What removed files leave of the groups: what is left alone is a duplicate no more.
struct Remainder {
    std::vector<DuplicateGroup> groups;
    std::int64_t freed = 0; ///< bytes
};

Remainder remainder(const std::vector<DuplicateGroup>& groups, const UrlSet& gone)
{
    Remainder result;
    std::vector<bool> isGone;
    for (const DuplicateGroup& group : groups) {
        isGone.clear();
        std::ranges::transform(group.entries, std::back_inserter(isGone),
                               [&gone](const Entry& entry) { return gone.contains(entry.url); });
        const auto lost = std::ranges::count(isGone, true);
        if (lost > 0) {
            result.freed = checkedSum(result.freed, group.freedBytes(isGone));
        }
        if (lost + 2 <= std::ssize(group.entries)) {
            result.groups.push_back(lost == 0 ? group : group.without(isGone));
        }
    }
    return result;
}

/// Looks again at what is to be removed and at what is to be kept; runs where the files are removed.
DeletionRunner::Screened screen(const DuplicateGroups& groups, const std::vector<FileUrl>& urls,
                                const std::stop_token& stop)
{
    DuplicateRemovalCheck::Verdict verdict =
        DuplicateRemovalCheck::check(*groups, UrlSet{urls.begin(), urls.end()}, stop);
    DeletionRunner::Screened screened{std::move(verdict.fine), {}};
    std::ranges::transform(verdict.refused, std::back_inserter(screened.refused),
                           [](DuplicateRemovalCheck::Refusal& refusal) -> FileRemover::RemovalFailure {
                               return {std::move(refusal.url), std::move(refusal.reason)};
                           });
    return screened;
}

} // namespace

DuplicatesViewModel::DuplicatesViewModel(DeletionRunner& deletions)
    : ScanToolViewModel(deletions), m_minimumSize(Settings::duplicatesMinSize())
{}

void DuplicatesViewModel::setMinimumSize(std::int64_t size)
{
    if (!assignIfChanged(m_minimumSize, size)) {
        return;
    }
    Settings::write(QStringLiteral("dup.minSize"), QVariant::fromValue<qlonglong>(size));
    Q_EMIT minimumSizeChanged();
    scan();
}

void DuplicatesViewModel::startScan(PropertyUpdate& update)
{
    m_search = std::make_shared<Search>();
    setGroups(update, {});
    m_unread.reset();
    update.assign(m_scanned, 0, &DuplicatesViewModel::progressChanged);
    update.assign(m_truncated, false, &DuplicatesViewModel::truncatedChanged);
    if (std::exchange(m_undoSnapshot, std::nullopt)) {
        update.announce(&DuplicatesViewModel::undoableChanged);
    }
    m_pump = std::make_unique<StreamPump<DuplicateProgress>>(
        DuplicateFinder::stream(*rootURL(), m_minimumSize),
        [this](DuplicateProgress record) { receive(std::move(record)); },
        [this] { endScan(ScanEnd::reached(m_unread)); });
}

void DuplicatesViewModel::dropScan(PropertyUpdate& update)
{
    m_pump.reset();
    update.assign(m_hashing, std::nullopt, &DuplicatesViewModel::progressChanged);
}

void DuplicatesViewModel::receive(DuplicateProgress record)
{
    m_unread = record.unread;
    PropertyUpdate update{this};
    update.assign(m_scanned, record.scanned, &DuplicatesViewModel::progressChanged);
    std::optional<double> hashing;
    if (record.phase == DuplicateFinder::Phase::hashing) {
        hashing = record.bytesToHash < 1
                      ? 0.0
                      : static_cast<double>(record.hashedBytes) / static_cast<double>(record.bytesToHash);
    }
    update.assign(m_hashing, hashing, &DuplicatesViewModel::progressChanged);
    update.assign(m_truncated, record.truncated, &DuplicatesViewModel::truncatedChanged);
    if (!record.groups.empty()) {
        const UrlSet& removed = m_search->removed;
        setGroups(update,
                  removed.empty() ? std::move(record.groups) : remainder(record.groups, removed).groups);
    }
}

void DuplicatesViewModel::setGroups(PropertyUpdate& update, std::vector<DuplicateGroup> groups)
{
    if (groups.empty() && m_groups->empty()) {
        return;
    }
    m_groups = std::make_shared<const std::vector<DuplicateGroup>>(std::move(groups));
    m_totalReclaimable = 0;
    for (const DuplicateGroup& group : *m_groups) {
        m_totalReclaimable = checkedSum(m_totalReclaimable, group.reclaimableBytes());
    }
    filterGroups();
    update.announce(&DuplicatesViewModel::groupsChanged);
}

void DuplicatesViewModel::filterGroups()
{
    m_filtered.resize(m_groups->size());
    std::iota(m_filtered.begin(), m_filtered.end(), 0U);
    if (searchText().isEmpty()) {
        return;
    }
    const TextFilter text{searchText()};
    std::erase_if(m_filtered, [&](std::uint32_t index) {
        return std::ranges::none_of((*m_groups)[index].entries,
                                    [&](const Entry& entry) { return text.matches(entry.url.path()); });
    });
}

UrlSet DuplicatesViewModel::redundantURLs() const
{
    UrlSet urls;
    for (const std::uint32_t index : m_filtered) {
        const DuplicateGroup& group = groups()[index];
        const std::vector<bool> redundant = group.redundantBeside(group.keptCopy());
        for (std::size_t copy = 0; copy < redundant.size(); ++copy) {
            if (redundant[copy]) {
                urls.insert(group.entries[copy].url);
            }
        }
    }
    return urls;
}

std::vector<Entry> DuplicatesViewModel::allEntries() const
{
    std::vector<Entry> entries;
    entries.reserve(entryCount());
    forEachEntry([&entries](const Entry& entry) { entries.push_back(entry); });
    return entries;
}

std::int64_t DuplicatesViewModel::totalWasted() const
{
    std::int64_t total = 0;
    for (const DuplicateGroup& group : groups()) {
        total = checkedSum(total, group.wastedBytes());
    }
    return total;
}

std::size_t DuplicatesViewModel::groupsLosingAllCopies(const UrlSet& urls) const
{
    return static_cast<std::size_t>(std::ranges::count_if(groups(), [&urls](const DuplicateGroup& group) {
        return DuplicateRemovalCheck::losesAllCopies(group, urls);
    }));
}

std::size_t DuplicatesViewModel::entryCount() const
{
    return std::accumulate(
        groups().begin(), groups().end(), std::size_t{0},
        [](std::size_t count, const DuplicateGroup& group) { return count + group.entries.size(); });
}

void DuplicatesViewModel::forEachEntry(const Visitor& visit) const
{
    for (const DuplicateGroup& group : groups()) {
        std::ranges::for_each(group.entries, visit);
    }
}

void DuplicatesViewModel::forEachShown(const Visitor& visit) const
{
    for (const std::uint32_t index : m_filtered) {
        std::ranges::for_each(groups()[index].entries, visit);
    }
}

ScanLine DuplicatesViewModel::scanLine() const
{
    if (m_hashing) {
        return {QStringLiteral("Comparaison des contenus… %1 fichiers examinés").arg(m_scanned), m_hashing};
    }
    return {QStringLiteral("Recherche… %1 fichiers examinés").arg(m_scanned), std::nullopt};
}

QString DuplicatesViewModel::scanReport() const
{
    return QStringLiteral("%1 groupe(s) · %2 récupérables")
        .arg(QString::number(groups().size()), sizeText(totalReclaimable()));
}

void DuplicatesViewModel::deleteSelected(const UrlSet& urls, bool permanently)
{
    std::vector<FileUrl> targets;
    forEachEntry([&](const Entry& entry) {
        if (urls.contains(entry.url)) {
            targets.push_back(entry.url);
        }
    });
    if (targets.empty()) {
        return;
    }
    const auto finished = [this, permanently, groups = m_groups,
                           search = std::weak_ptr{m_search}](const RemovalResult& result) {
        finishDeletion(result, permanently, groups, search);
    };
    remove(std::move(targets), permanently, finished,
           [groups = m_groups](const std::vector<FileUrl>& asked, const std::stop_token& stop) {
               return screen(groups, asked, stop);
           });
}

void DuplicatesViewModel::finishDeletion(const RemovalResult& result, bool permanently,
                                         const DuplicateGroups& before, const std::weak_ptr<Search>& search)
{
    const UrlSet gone{result.removed.begin(), result.removed.end()};
    PropertyUpdate update{this};
    report(update, removalMessage(result, remainder(*before, gone).freed, permanently), result);
    // Undoing puts groups back on screen: once another search has begun, that is over.
    if (!search.expired()) {
        m_undoSnapshot.reset();
        if (result.canUndo()) {
            m_undoSnapshot = UndoSnapshot{m_groups, result.trashed};
        }
        update.announce(&DuplicatesViewModel::undoableChanged);
    }
    if (m_pump != nullptr) {
        m_search->removed.insert(gone.begin(), gone.end());
    }
    if (!gone.empty()) {
        setGroups(update, remainder(groups(), gone).groups);
    }
    if (rootURL()) {
        FileScanner::invalidateCache(*rootURL());
    }
}

void DuplicatesViewModel::undoDeletion()
{
    if (!m_undoSnapshot) {
        return;
    }
    restore(m_undoSnapshot->trashed,
            [this, undone = *m_undoSnapshot, search = std::weak_ptr{m_search}](const RemovalResult& result) {
                finishRestore(result, undone, search);
            });
}

void DuplicatesViewModel::finishRestore(const RemovalResult& result, const UndoSnapshot& undone,
                                        const std::weak_ptr<Search>& search)
{
    PropertyUpdate update{this};
    report(update,
           result.allSucceeded()
               ? QStringLiteral("Suppression annulée.")
               : QStringLiteral("Restauration partielle : %1 en échec.").arg(result.failures.size()),
           result);
    if (!search.expired()) {
        UrlSet missing;
        std::ranges::transform(undone.trashed, std::inserter(missing, missing.end()),
                               &FileRemover::TrashedItem::original);
        std::ranges::for_each(result.removed, [&missing](const FileUrl& url) { missing.erase(url); });
        setGroups(update, remainder(*undone.groups, missing).groups);
        m_undoSnapshot.reset();
        update.announce(&DuplicatesViewModel::undoableChanged);
    }
    if (rootURL()) {
        FileScanner::invalidateCache(*rootURL());
    }
}

} // namespace tallyroom
