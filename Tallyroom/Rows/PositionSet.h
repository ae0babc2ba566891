#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <numeric>
#include <vector>

namespace tallyroom {

/// Positions in a list, one bit each: all of 300 000 are 37 KB. A plain value.
class PositionSet {
public:
    /// All positions below `count`.
    [[nodiscard]] static PositionSet upTo(std::size_t count)
    {
        PositionSet all;
        all.m_words.assign(count / wordBits, ~std::uint64_t{0});
        if (count % wordBits != 0) {
            all.m_words.push_back(bit(static_cast<std::uint32_t>(count)) - 1);
        }
        return all;
    }

    [[nodiscard]] bool contains(std::uint32_t position) const
    {
        const std::size_t word = position / wordBits;
        return word < m_words.size() && (m_words[word] & bit(position)) != 0;
    }

    void insert(std::uint32_t position)
    {
        reach(position / wordBits + 1);
        m_words[position / wordBits] |= bit(position);
    }

    [[nodiscard]] bool empty() const
    {
        return std::ranges::all_of(m_words, [](std::uint64_t word) { return word == 0; });
    }

    [[nodiscard]] std::size_t count() const
    {
        return std::transform_reduce(
            m_words.begin(), m_words.end(), std::size_t{0}, std::plus{},
            [](std::uint64_t word) { return static_cast<std::size_t>(std::popcount(word)); });
    }

    /// Calls `visit` with every position, ascending.
    template <class Visit>
    void forEach(const Visit& visit) const
    {
        for (std::size_t place = 0; place < m_words.size(); ++place) {
            for (std::uint64_t rest = m_words[place]; rest != 0; rest &= rest - 1) {
                visit(static_cast<std::uint32_t>(place * wordBits) +
                      static_cast<std::uint32_t>(std::countr_zero(rest)));
            }
        }
    }

    PositionSet& operator|=(const PositionSet& other)
    {
        reach(other.m_words.size());
        std::ranges::transform(other.m_words, m_words, m_words.begin(), std::bit_or{});
        return *this;
    }

    PositionSet& operator&=(const PositionSet& other)
    {
        m_words.resize(std::min(m_words.size(), other.m_words.size()));
        std::ranges::transform(m_words, other.m_words, m_words.begin(), std::bit_and{});
        return *this;
    }

    PositionSet& operator-=(const PositionSet& other)
    {
        std::ranges::transform(m_words, other.m_words, m_words.begin(),
                               [](std::uint64_t mine, std::uint64_t theirs) { return mine & ~theirs; });
        return *this;
    }

    friend bool operator==(const PositionSet& left, const PositionSet& right)
    {
        return (left - right).empty() && (right - left).empty();
    }

    friend PositionSet operator&(PositionSet left, const PositionSet& right) { return left &= right; }

    friend PositionSet operator-(PositionSet left, const PositionSet& right) { return left -= right; }

private:
    static constexpr std::uint32_t wordBits = 64;

    static std::uint64_t bit(std::uint32_t position) { return std::uint64_t{1} << (position % wordBits); }

    void reach(std::size_t words) { m_words.resize(std::max(m_words.size(), words)); }

    std::vector<std::uint64_t> m_words;
};

} // namespace tallyroom
