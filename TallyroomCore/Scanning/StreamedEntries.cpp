#include "Scanning/StreamedEntries.h"

namespace tallyroom {

void StreamedEntries::expect(std::size_t total)
{
    m_total = static_cast<std::int64_t>(total);
    if (total == 0) {
        m_sender->send({{}, 0, 0, false, m_unread});
    }
}

void StreamedEntries::append(std::vector<IndexedEntry> entries)
{
    std::vector<ScanProgress> records;
    records.reserve(entries.size());
    StreamWake wake; // outlives the lock
    const std::scoped_lock lock{m_mutex};
    for (IndexedEntry& done : entries) {
        m_entries.append(std::move(done.entry));
        const auto completed = static_cast<std::int64_t>(m_entries.size());
        records.push_back({m_entries.snapshot(), completed, m_total, false});
    }
    wake = m_sender->enqueue(std::move(records));
}

} // namespace tallyroom
