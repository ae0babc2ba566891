#pragma once

#include <cstddef>
#include <iterator>

namespace tallyroom {

/// Reads a list by its `operator[]`, in any order. As good as the list it points to.
template <class List>
class IndexIterator {
public:
    using iterator_category = std::random_access_iterator_tag;
    using iterator_concept = std::random_access_iterator_tag;
    using value_type = typename List::value_type;
    using difference_type = std::ptrdiff_t;
    using pointer = const value_type*;
    using reference = const value_type&;

    IndexIterator() = default;

    IndexIterator(const List* list, std::size_t index) : m_list(list), m_index(index) {}

    reference operator*() const { return (*m_list)[m_index]; }

    pointer operator->() const { return &(*m_list)[m_index]; }

    reference operator[](difference_type step) const { return *(*this + step); }

    IndexIterator& operator++()
    {
        ++m_index;
        return *this;
    }

    IndexIterator operator++(int)
    {
        auto old = *this;
        ++m_index;
        return old;
    }

    IndexIterator& operator--()
    {
        --m_index;
        return *this;
    }

    IndexIterator operator--(int)
    {
        auto old = *this;
        --m_index;
        return old;
    }

    IndexIterator& operator+=(difference_type step)
    {
        m_index = static_cast<std::size_t>(static_cast<difference_type>(m_index) + step);
        return *this;
    }

    IndexIterator& operator-=(difference_type step) { return *this += -step; }

    friend IndexIterator operator+(IndexIterator it, difference_type step) { return it += step; }

    friend IndexIterator operator+(difference_type step, IndexIterator it) { return it += step; }

    friend IndexIterator operator-(IndexIterator it, difference_type step) { return it -= step; }

    friend difference_type operator-(const IndexIterator& left, const IndexIterator& right)
    {
        return static_cast<difference_type>(left.m_index) - static_cast<difference_type>(right.m_index);
    }

    friend bool operator==(const IndexIterator& left, const IndexIterator& right)
    {
        return left.m_index == right.m_index;
    }

    friend auto operator<=>(const IndexIterator& left, const IndexIterator& right)
    {
        return left.m_index <=> right.m_index;
    }

private:
    const List* m_list = nullptr;
    std::size_t m_index = 0;
};

} // namespace tallyroom
