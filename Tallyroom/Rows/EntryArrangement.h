#pragma once

#include "Model/EntryList.h"
#include "Rows/AbsentChecks.h"
#include "Rows/EntrySortOrder.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

namespace tallyroom {

/// Which entries of a list a table shows, and in which order, without copying them. Cheap to copy. Any
/// thread.
class EntryArrangement {
public:
    /// What the rows are made from. Its functions are called on the thread that makes them.
    struct Request {
        EntryList entries;
        std::function<bool(const Entry&)> filter;
        EntrySortOrder order;
        std::function<std::string(const Entry&)> name;
        std::function<double(const Entry&)> sortKey;
        /// Checks to look for in `entries`; may be none.
        std::shared_ptr<const AbsentChecks> absent{};
    };

    EntryArrangement() = default;

    /// O(n) to filter, O(n log n) to sort. Rows of equal size are in the order of their names. A stop leaves
    /// rows out.
    explicit EntryArrangement(const Request& request, const std::stop_token& stop = {});

    [[nodiscard]] const EntryList& entries() const { return m_entries; }

    [[nodiscard]] std::size_t rowCount() const { return m_rows->size(); }

    [[nodiscard]] const Entry& entry(std::size_t row) const { return m_entries[(*m_rows)[row]]; }

    /// Where the entry of a row lies in the list.
    [[nodiscard]] std::uint32_t position(std::size_t row) const { return (*m_rows)[row]; }

    /// The positions in the list of all rows.
    [[nodiscard]] const PositionSet& shown() const { return m_shown; }

    /// The sum of the sizes of the rows, in bytes, and that of the whole list. An overflow ends the process.
    [[nodiscard]] std::int64_t shownBytes() const { return m_shownBytes; }

    [[nodiscard]] std::int64_t totalBytes() const { return m_totalBytes; }

    /// Which entries of the list the request's absent checks belong to.
    [[nodiscard]] const FoundChecks& found() const { return m_found; }

    /// The row that shows what `row` of `earlier` showed. O(n).
    [[nodiscard]] std::optional<std::size_t> rowOf(const EntryArrangement& earlier, std::size_t row) const;

    /// The largest size among the rows, the reference of their bars.
    [[nodiscard]] std::int64_t largestSize() const { return m_largestSize; }

private:
    using Rows = std::vector<std::uint32_t>; // positions in the list

    EntryList m_entries;
    std::shared_ptr<const Rows> m_rows = std::make_shared<const Rows>();
    PositionSet m_shown;
    FoundChecks m_found;
    std::int64_t m_largestSize = 0;
    std::int64_t m_shownBytes = 0;
    std::int64_t m_totalBytes = 0;
};

/// The first of `count` places for which `fits` holds, looked for from `likely` outwards: what moved little
/// is found at once.
template <class Condition>
[[nodiscard]] std::optional<std::size_t> findOutwards(std::size_t count, std::size_t likely,
                                                      const Condition& fits)
{
    std::size_t above = std::min(likely, count);
    std::size_t below = above;
    while (above > 0 || below < count) {
        if (below < count && fits(below++)) {
            return below - 1;
        }
        if (above > 0 && fits(--above)) {
            return above;
        }
    }
    return std::nullopt;
}

/// The bytes by which names sort: letter case and accents aside, numbers by their value.
[[nodiscard]] std::string nameSortKey(std::string_view name);

} // namespace tallyroom
