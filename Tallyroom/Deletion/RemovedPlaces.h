#pragma once

#include "Deletion/EntryPlaces.h"
#include "Model/EntryList.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

namespace tallyroom {

/// The places of removed items: their own, and for folders all places below.
class RemovedPlaces {
public:
    RemovedPlaces() = default;

    explicit RemovedPlaces(const std::vector<Entry>& items) { add(items); }

    void add(const std::vector<Entry>& items);

    /// Takes items out again that are back.
    void remove(const std::vector<Entry>& items);

    void clear() { *this = {}; }

    [[nodiscard]] bool isEmpty() const { return m_items.empty(); }

    /// Whether `entry` is one of them.
    [[nodiscard]] bool contains(const Entry& entry) const
    {
        return !m_items.empty() && m_marks[markOf(entry.name) & (m_marks.size() - 1)] &&
               m_items.contains(m_places.of(entry));
    }

    /// Whether `entry` is one of them or lies below one. Fast for many entries of one folder in a row; one
    /// thread at a time.
    [[nodiscard]] bool covers(const Entry& entry) const;

    /// The covered entries, and the list without them. Copies none.
    [[nodiscard]] std::pair<EntryList, EntryList> part(const EntryList& entries) const
    {
        return isEmpty() ? std::pair{EntryList{}, entries}
                         : entries.parted([this](const Entry& entry) { return covers(entry); });
    }

private:
    struct TextHash {
        using is_transparent = void;

        std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>{}(text); }
    };

    using Paths = std::unordered_set<std::string, TextHash, std::equal_to<>>;

    /// A hash of the length and the ends of a name: of a long list each name is looked at.
    [[nodiscard]] static std::size_t markOf(std::string_view name) noexcept;

    void markNames();
    [[nodiscard]] bool isBelowFolder(std::string_view path) const;

    Paths m_items;
    std::vector<std::size_t> m_nameMarks; // of their names, and of some that are no longer among them
    std::vector<bool> m_marks; // the same, each a bit: most entries of a long list need not be looked up
    Paths m_folders;           // those of the items that are folders
    mutable EntryPlaces m_places;
    mutable std::string m_lastParent;
    mutable bool m_isLastParentCovered = false;
};

inline std::size_t RemovedPlaces::markOf(std::string_view name) noexcept
{
    std::uint64_t first = 0;
    std::uint64_t last = 0;
    const std::size_t length = std::min(name.size(), sizeof first);
    std::memcpy(&first, name.data(), length);
    std::memcpy(&last, name.data() + name.size() - length, length);
    constexpr std::uint64_t factor = 0x9E37'79B9'7F4A'7C15; // 2^64 by the golden ratio: Knuth's multiplier
    const std::uint64_t product = (first ^ std::rotl(last, 23) ^ name.size()) * factor;
    return product >> 32U;
}

} // namespace tallyroom
