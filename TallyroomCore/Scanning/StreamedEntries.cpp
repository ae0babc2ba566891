#include "Scanning/StreamedEntries.h"

namespace tallyroom {

void StreamedEntries::expect(std::size_t total)
{
    m_total = static_cast<std::int64_t>(total);
    if (total == 0) {
        m_sender->send({{}, 0, 0, false, m_unread, m_unreadPlaces()});
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
            records.push_back({m_entries.snapshot(), completed, m_total, false});
        }
        if (!records.empty() && records.back().completed == m_total) {
            last = std::move(records.back());
            records.pop_back();
        }
        wake = m_sender->enqueue(std::move(records));
    }
    if (last) { // nobody appends any more
        m_told = m_unreadPlaces();
        last->unread = m_unread;
        last->unreadPlaces = m_told;
        m_sender->send(std::move(*last));
    }
}

} // namespace tallyroom
