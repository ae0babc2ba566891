#pragma once

#include <algorithm>
#include <array>
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

namespace detail {

/// Items that never move: chunks that double in size, the first of 64. One thread at a time appends, under
/// its own lock; any number of threads read the items below a count that the appender has handed them.
template <class Item>
class AppendOnlyStore {
public:
    AppendOnlyStore() = default;
    AppendOnlyStore(const AppendOnlyStore&) = delete;
    AppendOnlyStore& operator=(const AppendOnlyStore&) = delete;

    ~AppendOnlyStore()
    {
        for (std::size_t index = 0; index < m_size; ++index) {
            std::destroy_at(slot(index));
        }
        for (std::size_t chunk = 0; chunk < m_chunks.size(); ++chunk) {
            if (m_chunks[chunk] != nullptr) {
                std::allocator<Item>{}.deallocate(m_chunks[chunk], capacity(chunk));
            }
        }
    }

    void append(Item item)
    {
        const auto [chunk, offset] = place(m_size);
        if (m_chunks[chunk] == nullptr) {
            m_chunks[chunk] = std::allocator<Item>{}.allocate(capacity(chunk));
        }
        std::construct_at(m_chunks[chunk] + offset, std::move(item));
        ++m_size;
    }

    [[nodiscard]] std::size_t size() const noexcept { return m_size; }

    [[nodiscard]] const Item& operator[](std::size_t index) const noexcept { return *slot(index); }

private:
    static constexpr std::size_t firstCapacity = 64;
    static constexpr std::size_t chunkLimit = 40;

    static std::size_t capacity(std::size_t chunk) { return firstCapacity << chunk; }

    /// Chunk c starts at item 64 × (2^c − 1).
    static std::pair<std::size_t, std::size_t> place(std::size_t index)
    {
        const std::size_t shifted = index / firstCapacity + 1;
        const auto chunk = static_cast<std::size_t>(63 - __builtin_clzll(shifted));
        return {chunk, index - firstCapacity * ((std::size_t{1} << chunk) - 1)};
    }

    Item* slot(std::size_t index) const
    {
        const auto [chunk, offset] = place(index);
        return m_chunks[chunk] + offset;
    }

    std::array<Item*, chunkLimit> m_chunks{};
    std::size_t m_size = 0;
};

} // namespace detail

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
        detail::AppendOnlyStore<Item> items;
        std::mutex orderMutex;
        std::shared_ptr<const Order> newestOrder; // guarded by orderMutex
    };

public:
    using value_type = Item;

    /// Appends items and takes lists of what is there. One thread at a time.
    class Builder {
    public:
        void append(Item item) { m_store->items.append(std::move(item)); }

        [[nodiscard]] std::size_t size() const noexcept { return m_store->items.size(); }

        /// The items so far, ranked when read. O(1).
        [[nodiscard]] SnapshotList snapshot() const { return SnapshotList{m_store, m_store->items.size()}; }

    private:
        std::shared_ptr<Store> m_store = std::make_shared<Store>();
    };

    class const_iterator {
    public:
        using iterator_category = std::random_access_iterator_tag;
        using iterator_concept = std::random_access_iterator_tag;
        using value_type = Item;
        using difference_type = std::ptrdiff_t;
        using pointer = const Item*;
        using reference = const Item&;

        const_iterator() = default;

        const_iterator(const SnapshotList* list, std::size_t index) : m_list(list), m_index(index) {}

        reference operator*() const { return (*m_list)[m_index]; }

        pointer operator->() const { return &(*m_list)[m_index]; }

        reference operator[](difference_type step) const { return *(*this + step); }

        const_iterator& operator++()
        {
            ++m_index;
            return *this;
        }

        const_iterator operator++(int)
        {
            auto old = *this;
            ++m_index;
            return old;
        }

        const_iterator& operator--()
        {
            --m_index;
            return *this;
        }

        const_iterator operator--(int)
        {
            auto old = *this;
            --m_index;
            return old;
        }

        const_iterator& operator+=(difference_type step)
        {
            m_index = static_cast<std::size_t>(static_cast<difference_type>(m_index) + step);
            return *this;
        }

        const_iterator& operator-=(difference_type step) { return *this += -step; }

        friend const_iterator operator+(const_iterator it, difference_type step) { return it += step; }

        friend const_iterator operator+(difference_type step, const_iterator it) { return it += step; }

        friend const_iterator operator-(const_iterator it, difference_type step) { return it -= step; }

        friend difference_type operator-(const const_iterator& left, const const_iterator& right)
        {
            return static_cast<difference_type>(left.m_index) - static_cast<difference_type>(right.m_index);
        }

        friend bool operator==(const const_iterator& left, const const_iterator& right)
        {
            return left.m_index == right.m_index;
        }

        friend auto operator<=>(const const_iterator& left, const const_iterator& right)
        {
            return left.m_index <=> right.m_index;
        }

    private:
        const SnapshotList* m_list = nullptr;
        std::size_t m_index = 0;
    };

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

    /// Sorts what has come since the longest order known of a prefix of this list, and merges the two.
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
