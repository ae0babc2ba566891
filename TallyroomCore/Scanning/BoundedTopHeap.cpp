#include "Scanning/BoundedTopHeap.h"

#include <algorithm>
#include <limits>

namespace tallyroom {

namespace {

/// Room made in advance; a limit may be a number that no list ever reaches.
constexpr std::size_t reservedAtMost = 1024;

/// The ranking. As the order of a std heap it keeps the worst entry on top.
bool ranksBefore(const Entry& left, const Entry& right)
{
    return left.sizeBytes != right.sizeBytes ? left.sizeBytes > right.sizeBytes
                                             : left.url.path() < right.url.path();
}

/// Compares `folder` + `name` with `path`, without putting the two together.
bool isBefore(std::string_view folder, std::string_view name, std::string_view path)
{
    const int order = folder.compare(path.substr(0, folder.size()));
    return order != 0 ? order < 0 : name < path.substr(folder.size());
}

} // namespace

BoundedTopHeap::BoundedTopHeap(std::int64_t capacity)
    : m_capacity(static_cast<std::size_t>(std::max<std::int64_t>(capacity, 0))),
      m_leastSize(m_capacity == 0 ? std::numeric_limits<std::int64_t>::max()
                                  : std::numeric_limits<std::int64_t>::min())
{
    m_heap.reserve(std::min(m_capacity, reservedAtMost));
}

bool BoundedTopHeap::offer(Entry entry)
{
    const std::scoped_lock lock{m_mutex};
    if (!takes({}, entry.url.path(), entry.sizeBytes)) {
        return false;
    }
    take(std::move(entry));
    return true;
}

void BoundedTopHeap::offer(const FileUrl& folder, std::span<const Candidate> files)
{
    std::string start = folder.path();
    if (!start.ends_with('/')) {
        start.push_back('/');
    }
    const std::scoped_lock lock{m_mutex};
    for (const Candidate& file : files) {
        if (takes(start, file.name, file.sizeBytes)) {
            take({.url = FileUrl{start + std::string{file.name}},
                  .name = std::string{file.name},
                  .sizeBytes = file.sizeBytes,
                  .form = file.form,
                  .modifiedAt = file.modifiedAt,
                  .identity = file.identity});
        }
    }
}

EntryList BoundedTopHeap::sortedSnapshot() const
{
    std::vector<Entry> entries;
    {
        const std::scoped_lock lock{m_mutex};
        entries = m_heap;
    }
    std::ranges::sort(entries, ranksBefore);
    return EntryList{std::move(entries)};
}

bool BoundedTopHeap::takes(std::string_view folder, std::string_view name, std::int64_t sizeBytes) const
{
    if (m_heap.size() < m_capacity) {
        return true;
    }
    if (m_heap.empty()) {
        return false;
    }
    const Entry& worst = m_heap.front();
    return sizeBytes != worst.sizeBytes ? sizeBytes > worst.sizeBytes
                                        : isBefore(folder, name, worst.url.path());
}

void BoundedTopHeap::take(Entry entry)
{
    if (m_heap.size() == m_capacity) {
        std::ranges::pop_heap(m_heap, ranksBefore);
        m_heap.back() = std::move(entry);
    } else {
        m_heap.push_back(std::move(entry));
    }
    std::ranges::push_heap(m_heap, ranksBefore);
    if (m_heap.size() == m_capacity) {
        m_leastSize.store(m_heap.front().sizeBytes, std::memory_order_relaxed);
    }
}

} // namespace tallyroom
