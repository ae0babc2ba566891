#pragma once

#include <cstddef>

namespace tallyroom {

/// What a table's rows are sorted by. Size descending is the list's own order.
struct EntrySortOrder {
    enum class Key { name, column, size };

    Key key = Key::size;
    /// Which of the style's columns, for `Key::column`.
    std::size_t column = 0;
    bool isAscending = false;

    friend bool operator==(const EntrySortOrder&, const EntrySortOrder&) = default;
};

} // namespace tallyroom
