#pragma once

#include "Model/EntryList.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace tallyroom {

/// The N best of all files that are offered: larger first, equal sizes by path, byte by byte. Shared by the
/// workers of one scan; any thread. The result depends on what was offered and not on the order.
class BoundedTopHeap {
public:
    /// A file of a folder, before anybody has spelled out its path.
    struct Candidate {
        std::string_view name;
        std::int64_t sizeBytes = 0;
        EntryForm form = EntryForm::ordinary;
        ItemIdentity identity{};
        std::optional<Timestamp> modifiedAt{};
    };

    /// Keeps `capacity` entries at most; none when it is 0 or negative.
    explicit BoundedTopHeap(std::int64_t capacity);

    /// False when a file of this size cannot be taken in, whatever its path. Takes no lock, so the answer may
    /// be an old one; then it is true too often and never too seldom.
    [[nodiscard]] bool mayTake(std::int64_t sizeBytes) const noexcept
    {
        return sizeBytes >= m_leastSize.load(std::memory_order_relaxed);
    }

    /// Offers one entry; true when it was taken in. The worst one kept is not taken in a second time.
    /// O(log N).
    bool offer(Entry entry);

    /// Offers files of one folder under one lock. Makes paths only for those it takes in.
    void offer(const FileUrl& folder, std::span<const Candidate> files);

    /// A ranked copy of the entries.
    [[nodiscard]] EntryList sortedSnapshot() const;

private:
    [[nodiscard]] bool takes(std::string_view folder, std::string_view name, std::int64_t sizeBytes) const;
    void take(Entry entry);

    const std::size_t m_capacity;
    std::atomic<std::int64_t> m_leastSize; ///< written under m_mutex: the root's size once the heap is full
    mutable std::mutex m_mutex;
    std::vector<Entry> m_heap; ///< guarded by m_mutex; the worst entry is the root
};

} // namespace tallyroom
