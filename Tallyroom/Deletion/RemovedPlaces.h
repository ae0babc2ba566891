#pragma once

#include "Model/EntryList.h"

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_set>
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

    /// Whether an item at `url` is among them or lies below one. Fast for many items of one folder in a row;
    /// one thread at a time.
    [[nodiscard]] bool covers(const FileUrl& url) const;

    /// The same list without what is covered.
    [[nodiscard]] EntryList without(const EntryList& entries) const;

private:
    struct TextHash {
        using is_transparent = void;

        std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>{}(text); }
    };

    using Paths = std::unordered_set<std::string, TextHash, std::equal_to<>>;

    [[nodiscard]] bool isBelowFolder(std::string_view path) const;

    Paths m_items;
    Paths m_folders; // those of the items that are folders
    mutable std::string m_lastParent;
    mutable bool m_isLastParentCovered = false;
};

} // namespace tallyroom
