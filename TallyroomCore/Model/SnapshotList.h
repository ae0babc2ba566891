#pragma once

#include "Model/AppendOnlyStore.h"
#include "Model/IndexIterator.h"

#include <algorithm>
#include <cassert>
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
/// may be read from distinct threads while the store grows, one copy belongs to one thread at a time. Items
/// never move: lists that were parted or merged show the same ones.
///
/// `RankKey` gives an item's 64-bit key; a larger key ranks first, and items of equal key keep the order in
/// which they were appended.
template <class Item, class RankKey>
class SnapshotList {
    struct Ranked {
        std::int64_t key = 0;
        const Item* item = nullptr;
    };

    using Order = std::vector<Ranked>;

    struct Store {
        AppendOnlyStore<Item> items;
        std::vector<std::shared_ptr<const Store>> shared; // hold the other items of a list; never change
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
        [[nodiscard]] SnapshotList snapshot() const
        {
            return SnapshotList{m_store, m_store->items.size(), nullptr};
        }

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
        auto order = std::make_shared<Order>();
        order->reserve(items.size());
        for (Item& item : items) {
            store->items.append(std::move(item));
            order->push_back(ranked(store->items[order->size()]));
        }
        *this = SnapshotList{std::move(store), items.size(), std::move(order)};
    }

    SnapshotList(std::initializer_list<Item> items) : SnapshotList(std::vector<Item>{items}) {}

    /// A list that was moved from is empty.
    [[nodiscard]] std::size_t size() const noexcept { return m_store == nullptr ? 0 : m_length; }

    [[nodiscard]] bool empty() const noexcept { return size() == 0; }

    /// The item at `index` of the ranked list; `index` must be below `size()`.
    [[nodiscard]] const Item& operator[](std::size_t index) const
    {
        assert(index < size());
        return *order()[index].item;
    }

    [[nodiscard]] const Item& front() const { return (*this)[0]; }

    [[nodiscard]] const_iterator begin() const { return {this, 0}; }

    [[nodiscard]] const_iterator end() const { return {this, size()}; }

    /// A copy as an ordinary list.
    [[nodiscard]] std::vector<Item> toVector() const { return {begin(), end()}; }

    /// The items for which `leaves` holds, and this list without them, both in this order. O(n), but copies
    /// no item; what loses nothing is the same snapshot.
    template <class Condition>
    [[nodiscard]] std::pair<SnapshotList, SnapshotList> parted(const Condition& leaves) const
    {
        if (empty()) {
            return {};
        }
        Order left;
        auto stayed = std::make_shared<Order>();
        stayed->reserve(m_length);
        for (const Ranked& one : order()) {
            (leaves(*one.item) ? left : *stayed).push_back(one);
        }
        if (left.empty()) {
            return {SnapshotList{}, *this};
        }
        return {sharing(sources(), std::make_shared<Order>(std::move(left))),
                sharing(sources(), std::move(stayed))};
    }

    /// This list with the items of `other`, ranked; of equal keys those of this list come first. O(n + m)
    /// where this list is ranked, but copies no item.
    [[nodiscard]] SnapshotList merged(const SnapshotList& other) const
    {
        if (empty() || other.empty()) {
            return empty() ? other : *this;
        }
        auto order = std::make_shared<Order>(this->order());
        if (!std::ranges::is_sorted(*order, ranksFirst)) {
            std::ranges::stable_sort(*order, ranksFirst);
        }
        append(*order, other.order());
        Stores stores = sources();
        std::ranges::copy_if(other.sources(), std::back_inserter(stores), [&](const auto& store) {
            return std::ranges::find(stores, store) == stores.end();
        });
        return sharing(std::move(stores), std::move(order));
    }

    /// True when both lists are the same prefix of the same store: O(1), and enough to say "nothing changed".
    [[nodiscard]] bool isSameSnapshot(const SnapshotList& other) const noexcept
    {
        return size() == other.size() && (empty() || m_store == other.m_store);
    }

    /// Whether items of both come from one store, so that an item that both show has one address.
    [[nodiscard]] bool sharesItems(const SnapshotList& other) const
    {
        return std::ranges::any_of(sources(), [stores = other.sources()](const auto& store) {
            return std::ranges::find(stores, store) != stores.end();
        });
    }

    friend bool operator==(const SnapshotList& left, const SnapshotList& right)
    {
        return left.isSameSnapshot(right) ||
               std::ranges::equal(left, right, [](const Item& one, const Item& other) {
                   return &one == &other || one == other;
               });
    }

private:
    SnapshotList(std::shared_ptr<Store> store, std::size_t length, std::shared_ptr<const Order> order)
        : m_store(std::move(store)), m_length(length), m_order(std::move(order))
    {}

    static Ranked ranked(const Item& item) { return {RankKey{}(item), &item}; }

    static bool ranksFirst(const Ranked& left, const Ranked& right) noexcept { return left.key > right.key; }

    /// Ranks `tail` and merges it into `order`, which is ranked.
    static void append(Order& order, Order tail)
    {
        std::ranges::stable_sort(tail, ranksFirst);
        const auto middle = static_cast<std::ptrdiff_t>(order.size());
        order.insert(order.end(), tail.begin(), tail.end());
        std::ranges::inplace_merge(order, order.begin() + middle, ranksFirst);
    }

    using Stores = std::vector<std::shared_ptr<const Store>>;

    /// The stores that hold the items; never one that shares them, or each deletion would hold the one
    /// before.
    Stores sources() const
    {
        return m_store == nullptr ? Stores{} : m_store->shared.empty() ? Stores{m_store} : m_store->shared;
    }

    /// A list of items of `stores`, with a store of its own to be known by.
    static SnapshotList sharing(Stores stores, std::shared_ptr<const Order> order)
    {
        auto own = std::make_shared<Store>();
        own->shared = std::move(stores);
        const std::size_t length = order->size();
        return length == 0 ? SnapshotList{} : SnapshotList{std::move(own), length, std::move(order)};
    }

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
            tail.push_back(ranked(m_store->items[index]));
        }
        auto order = std::make_shared<Order>();
        order->reserve(m_length);
        if (sorted > 0) {
            *order = *base;
        }
        append(*order, std::move(tail));
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
