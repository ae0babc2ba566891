#pragma once

#include "Tools/Frame/ListToolViewModel.h"

#include <span>

namespace tallyroom {

/// A tool that lists only the largest of what it finds. A list that the limit has cut need not hold the
/// largest of what the user narrows it down to: the tool then searches for these. Main thread.
class TopListViewModel : public ListToolViewModel {
    Q_OBJECT
    Q_PROPERTY(std::int64_t limit READ limit WRITE setLimit NOTIFY remarksChanged)

public:
    /// How many entries are kept; survives a restart.
    [[nodiscard]] std::int64_t limit() const { return m_limit.value(); }

    /// Stores a new limit and scans again with it.
    void setLimit(std::int64_t limit) { m_limit.set(limit); }

    /// Categories that the scan left out keep the counts from before it.
    [[nodiscard]] CategoryCounts categoryCounts() const override;

    [[nodiscard]] bool hasNarrowedScan() const override { return m_scanned != Narrowing{}; }

    [[nodiscard]] ScanLine scanLine() const override;

protected:
    /// `offered` are the limits that the screen offers.
    TopListViewModel(DeletionRunner& deletions, CategoryOf categoryOf, StoredChoice<std::int64_t> limit,
                     std::span<const std::int64_t> offered);

    /// Starts the search for the `limit` largest that `narrowing` lets through.
    [[nodiscard]] virtual FileScanner::ScanStream startSearch(const Narrowing& narrowing) = 0;

    [[nodiscard]] FileScanner::ScanStream startStream() override;
    void rootChosen(PropertyUpdate& update) override;

    void narrowed() override { scanWhereNeeded(); }

private:
    void scanWhereNeeded();

    ToolOption<std::int64_t> m_limit;
    Narrowing m_scanned;         // what the list was searched for
    Narrowing m_toScan;          // what the next search is for
    bool m_isCut = false;        // the list reached the limit: there may be more
    CategoryCounts m_wideCounts; // of the last list of all categories
};

} // namespace tallyroom
