#pragma once

#include "Concurrency/ProgressStream.h"
#include "Scanning/RunningFolders.h"
#include "Scanning/ScanCache.h"
#include "Scanning/ScanProgress.h"

#include <cstddef>
#include <functional>
#include <mutex>
#include <optional>
#include <vector>

namespace tallyroom {

/// An entry that is done, with its place in the order in which a scan found its work.
struct IndexedEntry {
    std::size_t index = 0;
    Entry entry;
    RunningFolders::Folder* running = nullptr; ///< what it was on show as until now
};

/// The entries that a scan has measured so far, with a record on its stream after each of them. `append` may
/// be called by many workers at once, the rest by one thread before the first of them or after the last.
class StreamedEntries {
public:
    explicit StreamedEntries(ProgressSender<ScanProgress> sender) : m_sender(std::move(sender)) {}

    /// Completes the last record, once, when all entries are done.
    void setRemarks(std::function<void(ScanProgress& last)> remark) { m_remark = std::move(remark); }

    /// The scanned folder cannot be read, or not to its end; before `expect`. The last record says so.
    void unreadable(const SystemError& error) { m_unread = error; }

    /// How many there will be. When there are none, one empty record says so.
    void expect(std::size_t total);

    /// Sends a record for each, in this order.
    void append(std::vector<IndexedEntry> entries);

    /// All entries, after the last one.
    [[nodiscard]] Listing listing() const
    {
        return {m_entries.snapshot(), m_last.unreadPlaces, m_last.countedAgain};
    }

    [[nodiscard]] const ProgressSender<ScanProgress>& sender() const { return *m_sender; }

    /// Ends the stream, even while others hold this object.
    void end() { m_sender.reset(); }

private:
    std::optional<ProgressSender<ScanProgress>> m_sender;
    std::int64_t m_total = 0;
    std::optional<SystemError> m_unread;
    std::function<void(ScanProgress&)> m_remark = [](ScanProgress&) {};
    ScanProgress m_last; ///< only its remarks
    std::mutex m_mutex;
    EntryList::Builder m_entries; ///< guarded by m_mutex while workers append
};

} // namespace tallyroom
