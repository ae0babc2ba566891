#pragma once

#include "Model/AppendOnlyStore.h"
#include "Model/IndexIterator.h"

#include <algorithm>
#include <cassert>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace tallyroom {

/// A list that reads as a value and is made in O(1) from a growing store: it shares the store and knows its
/// own length. Ranked lists sort themselves on first reading, on the reader's thread, starting from the
/// order of an earlier reading where there is one. Copies are cheap and share all of that; distinct copies
/// may be read from distinct threads while the store grows, one copy belongs to one thread at a time.
///
/// `RankKey` gives an item's 64-bit key; a larger key ranks first, and items of equal key keep the order in
/// which they were appended. At most 2^32 items.
template <class Item, class RankKey>
class SnapshotList {
    struct Ranked {
        std::int64_t key = 0;
        std::uint32_t index = 0;

        friend bool operator==(const Ranked&, const Ranked&) = default;

        friend std::strong_ordering operator<=>(const Ranked& left, const Ranked& right) noexcept
        {
            return left.key != right.key ? right.key <=> left.key : left.index <=> right.index;
        }
    };

    using Order = std::vector<Ranked>;

    struct Store {
        AppendOnlyStore<Item> items;
        std::mutex orderMutex;
        std::shared_ptr<const Order> newestOrder; // guarded by orderMutex
    };

public:
    using value_type = Item;

    /// Appends items and makes lists of those so far. One thread at a time.
    class Builder {
    public:
        void append(Item item) { m_store->items.append(std::move(item)); }

        [[nodiscard]] std::size_t size() const noexcept { return m_store->items.size(); }

        /// The items so far, ranked when read. O(1).
        [[nodiscard]] SnapshotList snapshot() const { return SnapshotList{m_store, m_store->items.size()}; }

    private:
        std::shared_ptr<Store> m_store = std::make_shared<Store>();
    };

    using const_iterator = IndexIterator<SnapshotList>;
    using iterator = const_iterator;

    SnapshotList() = default;

    /// A list of `items` exactly in the order given, not ranked.
    explicit SnapshotList(std::vector<Item> items)
    {
        if (items.empty()) {
            return;
        }
        auto store = std::make_shared<Store>();
        m_length = items.size();
        for (Item& item : items) {
            store->items.append(std::move(item));
        }
        auto order = std::make_shared<Order>(m_length);
        for (std::size_t index = 0; index < m_length; ++index) {
            (*order)[index].index = static_cast<std::uint32_t>(index);
        }
        m_store = std::move(store);
        m_order = std::move(order);
    }

    SnapshotList(std::initializer_list<Item> items) : SnapshotList(std::vector<Item>{items}) {}

    SnapshotList(const SnapshotList&) = default;
    SnapshotList& operator=(const SnapshotList&) = default;

    SnapshotList(SnapshotList&& other) noexcept
        : m_store(std::move(other.m_store)), m_length(std::exchange(other.m_length, 0)),
          m_order(std::move(other.m_order))
    {}

    SnapshotList& operator=(SnapshotList&& other) noexcept
    {
        m_store = std::move(other.m_store);
        m_length = std::exchange(other.m_length, 0);
        m_order = std::move(other.m_order);
        return *this;
    }

    ~SnapshotList() = default;

    [[nodiscard]] std::size_t size() const noexcept { return m_length; }

    [[nodiscard]] bool empty() const noexcept { return m_length == 0; }

    /// The item at `index` of the ranked list; `index` must be below `size()`.
    [[nodiscard]] const Item& operator[](std::size_t index) const
    {
        assert(index < m_length);
        return m_store->items[order()[index].index];
    }

    [[nodiscard]] const Item& front() const { return (*this)[0]; }

    [[nodiscard]] const_iterator begin() const { return {this, 0}; }

    [[nodiscard]] const_iterator end() const { return {this, m_length}; }

    /// A copy as an ordinary list.
    [[nodiscard]] std::vector<Item> toVector() const { return {begin(), end()}; }

    /// True when both lists are the same prefix of the same store: O(1), and enough to say "nothing changed".
    [[nodiscard]] bool isSameSnapshot(const SnapshotList& other) const noexcept
    {
        return m_length == other.m_length && (m_length == 0 || m_store == other.m_store);
    }

    friend bool operator==(const SnapshotList& left, const SnapshotList& right)
    {
        return left.isSameSnapshot(right) || std::equal(left.begin(), left.end(), right.begin(), right.end());
    }

private:
    SnapshotList(std::shared_ptr<Store> store, std::size_t length)
        : m_store(std::move(store)), m_length(length)
    {}

    /// The ranked order, made on first reading and kept.
    const Order& order() const
    {
        if (m_order == nullptr) {
            m_order = makeOrder();
        }
        return *m_order;
    }

    /// Sorts the items that follow the longest known order of a prefix, and merges the two.
    std::shared_ptr<const Order> makeOrder() const
    {
        std::shared_ptr<const Order> base;
        {
            const std::scoped_lock lock{m_store->orderMutex};
            base = m_store->newestOrder;
        }
        const std::size_t sorted = base != nullptr && base->size() <= m_length ? base->size() : 0;
        if (sorted == m_length) {
            return base;
        }
        Order tail;
        tail.reserve(m_length - sorted);
        for (std::size_t index = sorted; index < m_length; ++index) {
            tail.push_back({RankKey{}(m_store->items[index]), static_cast<std::uint32_t>(index)});
        }
        std::ranges::sort(tail);
        auto order = std::make_shared<Order>();
        if (sorted == 0) {
            *order = std::move(tail);
        } else {
            order->reserve(m_length);
            std::ranges::merge(*base, tail, std::back_inserter(*order));
        }
        const std::scoped_lock lock{m_store->orderMutex};
        if (m_store->newestOrder == nullptr || m_store->newestOrder->size() < m_length) {
            m_store->newestOrder = order;
        }
        return order;
    }

    std::shared_ptr<Store> m_store;
    std::size_t m_length = 0;
    mutable std::shared_ptr<const Order> m_order;
};

} // namespace tallyroom
