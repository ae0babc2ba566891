#pragma once

#include "Treemap/Outline.h"

#include <queue>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <span>
#include <vector>

namespace tallyroom {

/// The larger items of a tree while workers find them. Any thread.
class OutlineTree {
public:
    /// A folder that was told, by the order in which folders and files were found; the root is 0.
    using Place = std::uint32_t;

    struct Item {
        Entry entry;
        bool isPending = false;
    };

    /// The items of a folder that are too small to be told.
    struct Rest {
        std::int64_t bytes = 0;
        std::uint32_t count = 0;
    };

    /// Items of less than `leastBytes` are not told one by one, and `most` of them at most.
    OutlineTree(Item root, double leastBytes, std::size_t most);

    /// Whether an item of so many bytes may be among those that are told. Once false, always false.
    [[nodiscard]] bool mayTell(std::int64_t bytes) const noexcept;

    /// Adds some of a folder's items, and returns the place of the first one; the others follow it.
    Place add(Place folder, std::vector<Item> items, const Rest& rest);

    /// All that lies in a folder was added, but for bytes of its rest.
    void complete(Place folder, std::int64_t restBytes);

    /// The outline so far.
    [[nodiscard]] Outline outline() const;

private:
    struct Found {
        Item item;
        Place folder = 0;
        std::uint32_t depth = 0;
        Place firstChild = 0;  ///< 0 for none, as the root is nobody's child
        Place nextSibling = 0; ///< likewise
        std::uint32_t childCount = 0;
        Rest rest;
        bool isListed = false;
        bool isComplete = false;
    };

    using Sizes = std::vector<std::int64_t>;

    void note(std::int64_t bytes);
    [[nodiscard]] Sizes sums() const;
    [[nodiscard]] std::vector<bool> told(const Sizes& sizes) const;

    [[nodiscard]] std::vector<Place> toldChildren(Place folder, const Sizes& sizes,
                                                  const std::vector<bool>& isTold) const;

    const double m_leastBytes;
    const std::size_t m_most;
    std::atomic<std::int64_t> m_least = 0; ///< of the largest ones so far, once there are enough of them
    mutable std::mutex m_mutex;
    std::vector<Found> m_found; // guarded by m_mutex
    std::priority_queue<std::int64_t, std::vector<std::int64_t>, std::greater<>>
        m_largest; ///< as many sizes as may be told; guarded by m_mutex
};

} // namespace tallyroom
