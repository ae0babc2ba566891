#pragma once

#include "Rows/EntryArrangement.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace tallyroom {

/// The rows of entries that are still being measured, each at its rank among the rows of an arrangement. Rows
/// are counted with both. A plain value.
class RunningRows {
public:
    RunningRows() = default;

    /// Those of `running` that the filter lets through. By a column without a sort key they cannot be ranked,
    /// and come first.
    RunningRows(const std::vector<Entry>& running, const EntryArrangement::Request& request,
                const EntryArrangement& arrangement);

    [[nodiscard]] std::size_t count() const { return m_placed.size(); }

    [[nodiscard]] std::int64_t largestSize() const { return m_largestSize; }

    /// Which one a row shows. O(log of their number), as what follows.
    [[nodiscard]] std::optional<std::size_t> find(int row) const;

    [[nodiscard]] const Entry& entry(std::size_t index) const { return m_placed[index].entry; }

    /// The row of the arrangement that a row shows; for a row that shows none, the one that follows.
    [[nodiscard]] std::size_t arrangedRow(int row) const;

    /// The row that shows a row of the arrangement.
    [[nodiscard]] int rowOf(std::size_t arrangedRow) const;

private:
    struct Placed {
        Entry entry;
        std::size_t next = 0; ///< the row of the arrangement that follows
        double key = 0;       ///< its place among those with the same one
    };

    /// How many of them lie before a row.
    [[nodiscard]] std::size_t before(int row) const;

    std::vector<Placed> m_placed; // by their rows
    std::int64_t m_largestSize = 0;
};

} // namespace tallyroom
