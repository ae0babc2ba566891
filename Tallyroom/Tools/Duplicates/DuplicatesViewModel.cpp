#include "Tools/Duplicates/DuplicatesViewModel.h"

#include "Bridge/AskApart.h"
#include "Duplicates/DuplicateRemovalCheck.h"
#include "Model/CheckedArithmetic.h"
#include "Recovery/SafeRemoval.h"
#include "Settings/Settings.h"
#include "Text/NumberText.h"
#include "Text/RecoveryText.h"
#include "Text/SizeText.h"
#include "Text/TextFilter.h"

#include <algorithm>
#include <iterator>
#include <numeric>
#include <utility>

namespace tallyroom {

using DuplicateFinder::DuplicateProgress;

namespace {

/// The groups without removed files; groups reduced to one file are dropped.
struct Remainder {
    std::vector<DuplicateGroup> groups;
    std::int64_t freed = 0; ///< bytes
};

Remainder remainder(const std::vector<DuplicateGroup>& groups, const RemovedPlaces& gone)
{
    Remainder result;
    std::vector<bool> isGone;
    for (const DuplicateGroup& group : groups) {
        isGone.clear();
        std::ranges::transform(group.entries, std::back_inserter(isGone),
                               [&gone](const Entry& entry) { return gone.covers(entry); });
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

const QString protectedKey = QStringLiteral("dup.protected");

/// Paths are stored percent-encoded: a name need not be a text.
std::set<FileUrl> storedProtectedFolders()
{
    std::set<FileUrl> folders;
    for (const QString& text : Settings::textList(protectedKey).value_or(QStringList{})) {
        if (FileUrl folder{percentDecodedPath(text.toStdString())}; folder.path().starts_with('/')) {
            folders.insert(folder.standardized());
        }
    }
    return folders;
}

void storeProtectedFolders(const std::set<FileUrl>& folders)
{
    QStringList texts;
    for (const FileUrl& folder : folders) {
        texts += QString::fromStdString(percentEncodedPath(folder.path()));
    }
    Settings::write(protectedKey, texts);
}

bool holdsAny(const std::vector<DuplicateGroup>& groups, const RemovedPlaces& places)
{
    return std::ranges::any_of(groups, [&places](const DuplicateGroup& group) {
        return std::ranges::any_of(group.entries,
                                   [&places](const Entry& entry) { return places.covers(entry); });
    });
}

Recovery recoveryOf(const std::vector<DuplicateGroup>& groups, const KeepPolicy& policy)
{
    Recovery recovery;
    std::vector<Entry> copies;
    for (const DuplicateGroup& group : groups) {
        const std::vector<bool> safe = SafeRemoval::safeCopies(group, policy);
        const std::int64_t freed = group.freedBytes(safe);
        for (std::size_t copy = 0; copy < safe.size(); ++copy) {
            if (safe[copy]) {
                copies.push_back(group.entries[copy]);
            }
        }
        recovery.safeBytes = checkedSum(recovery.safeBytes, freed);
        if (const std::int64_t rest = group.reclaimableBytes() - freed; rest > 0) {
            ++recovery.otherCount;
            recovery.otherBytes = checkedSum(recovery.otherBytes, rest);
        }
    }
    recovery.safe = EntryList{std::move(copies)};
    recovery.words = RecoveryText::copies(recovery.safe.size());
    recovery.caution = DuplicatesViewModel::copiesStay();
    return recovery;
}

QString minimumText(std::int64_t size)
{
    return size > 0 ? sizeText(size) : QStringLiteral("aucune");
}

/// Offers the stored size too.
OptionPlan<std::int64_t> minimumPlan()
{
    const auto& offered = DuplicatesViewModel::offeredMinimumSizes;
    std::set<std::int64_t> sizes{offered.begin(), offered.end()};
    sizes.insert(Settings::duplicatesMinSize());
    return {[](std::int64_t size) { return QStringLiteral("Taille minimale : ") + minimumText(size); },
            {sizes.begin(), sizes.end()},
            minimumText};
}

} // namespace

DuplicatesViewModel::DuplicatesViewModel(DeletionRunner& deletions)
    : ScanToolViewModel(deletions),
      m_minimumSize(*this, {QStringLiteral("dup.minSize"), Settings::duplicatesMinSize()}, minimumPlan(),
                    [this] { scan(); })
{
    m_policy.protectedFolders = storedProtectedFolders();
}

std::vector<std::uint32_t> DuplicatesViewModel::shownGroups() const
{
    std::vector<std::uint32_t> shown = m_filtered;
    std::ranges::stable_partition(
        shown, [this](std::uint32_t index) { return !KeepPolicy::isManaged(groups()[index]); });
    return shown;
}

void DuplicatesViewModel::setPolicy(KeepPolicy policy)
{
    if (assignIfChanged(m_policy, std::move(policy))) {
        makeRecovery();
        Q_EMIT policyChanged();
    }
}

QString DuplicatesViewModel::copiesStay()
{
    return QStringLiteral("Au moins une copie de chaque fichier est gardée. Juste avant la suppression, "
                          "Tallyroom vérifie qu’elle est encore là.");
}

/// Only of a search that has ended: its groups change many times before.
void DuplicatesViewModel::makeRecovery()
{
    m_recovery = {};
    m_recovery.isKnown = false;
    m_recoveryPump.reset();
    if (!isScanning()) {
        m_recoveryPump = std::make_unique<StreamPump<Recovery>>(
            askApart<Recovery>(
                [groups = m_groups, policy = m_policy] { return recoveryOf(*groups, policy); }),
            [this](Recovery recovery) {
                m_recovery = std::move(recovery);
                Q_EMIT remarksChanged();
            },
            [] {});
    }
}

void DuplicatesViewModel::setKeepRule(KeepRule rule, const FileUrl& folder)
{
    setPolicy({rule, folder, m_policy.protectedFolders});
}

void DuplicatesViewModel::protect(const FileUrl& folder)
{
    KeepPolicy policy = m_policy;
    policy.protectedFolders.insert(folder);
    storeProtectedFolders(policy.protectedFolders);
    setPolicy(std::move(policy));
}

void DuplicatesViewModel::unprotect(const FileUrl& url)
{
    KeepPolicy policy = m_policy;
    std::erase_if(policy.protectedFolders,
                  [&url](const FileUrl& folder) { return isWithin(url.path(), folder.path()); });
    storeProtectedFolders(policy.protectedFolders);
    setPolicy(std::move(policy));
}

void DuplicatesViewModel::startScan(PropertyUpdate& update)
{
    m_found = std::make_shared<const std::vector<DuplicateGroup>>();
    m_gone.clear();
    setGroups(update, m_found);
    makeRecovery();
    m_unread.reset();
    m_unreadPlaces.reset();
    update.assign(m_scanned, 0, &DuplicatesViewModel::progressChanged);
    update.assign(m_truncated, false, &DuplicatesViewModel::progressChanged);
    m_pump = std::make_unique<StreamPump<DuplicateProgress>>(
        DuplicateFinder::stream(*rootURL(), minimumSize()),
        [this](DuplicateProgress record) { receive(std::move(record)); },
        [this] {
            endScan(ScanEnd::reached(m_unread, m_unreadPlaces));
            makeRecovery();
        });
}

void DuplicatesViewModel::dropScan(PropertyUpdate& update)
{
    m_pump.reset();
    update.assign(m_hashing, std::nullopt, &DuplicatesViewModel::progressChanged);
}

void DuplicatesViewModel::receive(DuplicateProgress record)
{
    m_unread = record.unread;
    m_unreadPlaces = record.unreadPlaces;
    PropertyUpdate update{this};
    update.assign(m_scanned, record.scanned, &DuplicatesViewModel::progressChanged);
    std::optional<double> hashing;
    if (record.phase == DuplicateFinder::Phase::hashing) {
        hashing = record.bytesToHash < 1
                      ? 0.0
                      : static_cast<double>(record.hashedBytes) / static_cast<double>(record.bytesToHash);
    }
    update.assign(m_hashing, hashing, &DuplicatesViewModel::progressChanged);
    update.assign(m_truncated, record.truncated, &DuplicatesViewModel::progressChanged);
    if (!record.groups.empty()) {
        m_found = std::make_shared<const std::vector<DuplicateGroup>>(std::move(record.groups));
        showPresent(update);
    }
}

/// The groups as the disk is now.
void DuplicatesViewModel::showPresent(PropertyUpdate& update)
{
    setGroups(update, m_gone.isEmpty() ? m_found
                                       : std::make_shared<const std::vector<DuplicateGroup>>(
                                             remainder(*m_found, m_gone).groups));
}

void DuplicatesViewModel::setGroups(PropertyUpdate& update, DuplicateGroups groups)
{
    if (groups->empty() && m_groups->empty()) {
        return;
    }
    m_groups = std::move(groups);
    m_totalReclaimable = 0;
    for (const DuplicateGroup& group : *m_groups) {
        m_totalReclaimable = checkedSum(m_totalReclaimable, group.reclaimableBytes());
    }
    filterGroups();
    makeRecovery();
    update.announce(&DuplicatesViewModel::progressChanged);
}

void DuplicatesViewModel::filterGroups()
{
    m_filtered.resize(m_groups->size());
    std::iota(m_filtered.begin(), m_filtered.end(), 0U);
    if (!isFiltering()) {
        return;
    }
    const TextFilter text{searchText()};
    std::erase_if(m_filtered, [&](std::uint32_t index) {
        const std::vector<Entry>& copies = (*m_groups)[index].entries;
        return std::ranges::none_of(copies,
                                    [&](const Entry& entry) { return text.matches(entry.url.path()); }) ||
               (isShowingProposed() && std::ranges::none_of(copies, [&](const Entry& entry) {
                    return proposed()->contains(entry.url);
                }));
    });
}

UrlSet DuplicatesViewModel::redundantURLs() const
{
    UrlSet urls;
    for (const std::uint32_t index : m_filtered) {
        const DuplicateGroup& group = groups()[index];
        const std::vector<bool> redundant = m_policy.redundant(group);
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

ScanLine DuplicatesViewModel::scanLine() const
{
    if (m_hashing) {
        return {QStringLiteral("Comparaison des contenus… ") + NumberText::examinedFiles(m_scanned),
                m_hashing};
    }
    return {QStringLiteral("Recherche… ") + NumberText::examinedFiles(m_scanned), std::nullopt};
}

QString DuplicatesViewModel::scanReport() const
{
    return QStringLiteral("%1 · %2 récupérables")
        .arg(NumberText::plural(groups().size(), QStringLiteral("groupe")), sizeText(totalReclaimable()));
}

ScanToolViewModel::RemovalPlan DuplicatesViewModel::planRemoval(const std::vector<Entry>& entries) const
{
    const auto freed = [groups = m_groups](const std::vector<Entry>& done) {
        return remainder(*groups, RemovedPlaces{done}).freed;
    };
    return {DuplicateRemovalCheck::forGroups(m_groups, urlsOf(entries, &Entry::url)), freed};
}

void DuplicatesViewModel::takeOut(PropertyUpdate& update, const std::vector<Entry>& gone)
{
    m_gone.add(gone);
    if (holdsAny(*m_groups, RemovedPlaces{gone})) {
        showPresent(update);
    }
}

void DuplicatesViewModel::putBack(PropertyUpdate& update, const std::vector<Entry>& back, bool /*isOwn*/)
{
    m_gone.remove(back);
    if (holdsAny(*m_found, RemovedPlaces{back})) {
        showPresent(update);
    }
}

QString DuplicatesViewModel::restoreReport(const RemovalOutcome& outcome) const
{
    return outcome.result.allSucceeded() && outcome.notBegun == 0 ? QStringLiteral("Suppression annulée.")
                                                                  : ScanToolViewModel::restoreReport(outcome);
}

} // namespace tallyroom
