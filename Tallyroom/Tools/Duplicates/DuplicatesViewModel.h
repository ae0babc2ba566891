#pragma once

#include "Bridge/StreamPump.h"
#include "Deletion/RemovedPlaces.h"
#include "Duplicates/DuplicateFinder.h"
#include "Duplicates/KeepPolicy.h"
#include "Tools/Frame/ToolOption.h"

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace tallyroom {

/// Groups of identical files, shared by view model, table and export.
using DuplicateGroups = std::shared_ptr<const std::vector<DuplicateGroup>>;

/// Finds files with identical content, and removes the copies that are checked once each of them has been
/// looked at again. Main thread.
class DuplicatesViewModel : public ScanToolViewModel {
    Q_OBJECT
    Q_PROPERTY(std::vector<tallyroom::DuplicateGroup> groups READ groups NOTIFY progressChanged)
    Q_PROPERTY(std::int64_t scanned READ scanned NOTIFY progressChanged)
    Q_PROPERTY(bool isHashing READ isHashing NOTIFY progressChanged)
    Q_PROPERTY(bool truncated READ truncated NOTIFY progressChanged)
    Q_PROPERTY(std::int64_t minimumSize READ minimumSize WRITE setMinimumSize NOTIFY remarksChanged)

public:
    /// The minimum sizes that the screen offers, in bytes.
    static constexpr std::array<std::int64_t, 6> offeredMinimumSizes{0,          100'000,     1'048'576,
                                                                     10'000'000, 100'000'000, 1'000'000'000};

    explicit DuplicatesViewModel(DeletionRunner& deletions);

    /// The groups found, most wasted bytes first.
    [[nodiscard]] const std::vector<DuplicateGroup>& groups() const { return *m_groups; }

    /// The same, to be kept.
    [[nodiscard]] const DuplicateGroups& sharedGroups() const { return m_groups; }

    /// The indices of the groups of which a path contains the search text and, where only that is shown, a
    /// copy is proposed; ascending. Such a group is shown whole.
    [[nodiscard]] const std::vector<std::uint32_t>& filteredGroups() const { return m_filtered; }

    /// The same, those apart at the end of which tools keep all copies.
    [[nodiscard]] std::vector<std::uint32_t> shownGroups() const;

    /// What stays and what may go; its protected folders survive a restart.
    [[nodiscard]] const KeepPolicy& policy() const { return m_policy; }

    /// Chooses a rule; `folder` is for the rule that asks for one.
    void setKeepRule(KeepRule rule, const FileUrl& folder = {});

    /// Proposes nothing below `folder` any more.
    void protect(const FileUrl& folder);

    /// Proposes what is at `url` again: no folder around it is protected any more.
    void unprotect(const FileUrl& url);

    /// What need not stay of each filtered group: every copy but the one that the rule keeps, which is the
    /// first one outside of any trash unless another rule was chosen. What is the same file as that one, what
    /// lies in a trash, what tools keep and what is protected is left out.
    [[nodiscard]] UrlSet redundantURLs() const;

    /// The files of all groups, also of those that the search text hides, group after group.
    [[nodiscard]] std::vector<Entry> allEntries() const;

    /// The bytes of all copies but one of each group, hidden groups and hard links included. An overflow ends
    /// the process.
    [[nodiscard]] std::int64_t totalWasted() const;

    /// The bytes that come free when one copy of each group is kept.
    [[nodiscard]] std::int64_t totalReclaimable() const { return m_totalReclaimable; }

    /// How many groups would keep no copy, the trash aside, if `urls` were removed.
    [[nodiscard]] std::size_t groupsLosingAllCopies(const UrlSet& urls) const;

    [[nodiscard]] RemovalPlan planRemoval(const std::vector<Entry>& entries) const override;

    /// Files visited by the scan.
    [[nodiscard]] std::int64_t scanned() const { return m_scanned; }

    /// Whether the scan reads contents.
    [[nodiscard]] bool isHashing() const { return m_hashing.has_value(); }

    /// Whether a limit ended the scan early: groups may be missing.
    [[nodiscard]] bool truncated() const { return m_truncated; }

    /// The smallest file that is looked at, in bytes; survives a restart.
    [[nodiscard]] std::int64_t minimumSize() const { return m_minimumSize.value(); }

    /// Stores another minimum size and scans again with it.
    void setMinimumSize(std::int64_t size) { m_minimumSize.set(size); }

    [[nodiscard]] std::size_t entryCount() const override;
    void forEachEntry(const Visitor& visit) const override;

    [[nodiscard]] bool hasProgress() const override { return isScanning(); }

    [[nodiscard]] ScanLine scanLine() const override;

    /// What a complete search found; made off the main thread.
    [[nodiscard]] Recovery recovery() const override { return m_recovery; }

    /// What is said before copies go of which others stay.
    [[nodiscard]] static QString copiesStay();

    [[nodiscard]] QString scanReport() const override;

Q_SIGNALS:
    void policyChanged();

protected:
    void startScan(PropertyUpdate& update) override;
    void dropScan(PropertyUpdate& update) override;

    void filterChosen() override { filterGroups(); }

    void takeOut(PropertyUpdate& update, const std::vector<Entry>& gone) override;
    void putBack(PropertyUpdate& update, const std::vector<Entry>& back, bool isOwn) override;
    [[nodiscard]] QString restoreReport(const RemovalOutcome& outcome) const override;

private:
    void receive(DuplicateFinder::DuplicateProgress record);
    void showPresent(PropertyUpdate& update);
    void setGroups(PropertyUpdate& update, DuplicateGroups groups);
    void filterGroups();
    void makeRecovery();
    void setPolicy(KeepPolicy policy);

    KeepPolicy m_policy;
    DuplicateGroups m_found = std::make_shared<const std::vector<DuplicateGroup>>(); // by the search
    RemovedPlaces m_gone;                                                            // since the search began
    DuplicateGroups m_groups = m_found;                                              // as the disk is now
    std::int64_t m_totalReclaimable = 0;
    std::vector<std::uint32_t> m_filtered;
    std::int64_t m_scanned = 0;
    std::optional<double> m_hashing; // 0 to 1, while contents are read
    bool m_truncated = false;
    Recovery m_recovery;
    std::unique_ptr<StreamPump<Recovery>> m_recoveryPump;
    ToolOption<std::int64_t> m_minimumSize;
    std::optional<SystemError> m_unread; // of the running scan, as what follows
    SharedUnreadPlaces m_unreadPlaces;
    std::unique_ptr<StreamPump<DuplicateFinder::DuplicateProgress>> m_pump;
};

} // namespace tallyroom
