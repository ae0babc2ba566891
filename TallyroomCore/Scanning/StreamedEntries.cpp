#include "Scanning/StreamedEntries.h"

namespace tallyroom {

void StreamedEntries::expect(std::size_t total)
{
    m_total = static_cast<std::int64_t>(total);
    if (total == 0) {
        ScanProgress none;
        none.unread = m_unread;
        m_remark(none);
        m_sender->send(std::move(none));
    }
}

void StreamedEntries::append(std::vector<IndexedEntry> entries)
{
    std::vector<ScanProgress> records;
    records.reserve(entries.size());
    std::optional<ScanProgress> last;
    {
        StreamWake wake; // outlives the lock
        const std::scoped_lock lock{m_mutex};
        for (IndexedEntry& done : entries) {
            m_entries.append(std::move(done.entry));
            const auto completed = static_cast<std::int64_t>(m_entries.size());
            if (done.running != nullptr) {
                done.running->completed = completed;
            }
            records.push_back({m_entries.snapshot(), completed, m_total, false});
        }
        if (!records.empty() && records.back().completed == m_total) {
            last = std::move(records.back());
            records.pop_back();
        }
        wake = m_sender->enqueue(std::move(records));
    }
    if (last) { // nobody appends any more
        last->unread = m_unread;
        m_remark(*last);
        m_last.unreadPlaces = last->unreadPlaces;
        m_last.countedAgain = last->countedAgain;
        m_sender->send(std::move(*last));
    }
}

} // namespace tallyroom
