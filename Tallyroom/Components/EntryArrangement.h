#pragma once

#include "Components/EntryTableStyle.h"
#include "Model/EntryList.h"

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
    };

    EntryArrangement() = default;

    /// O(n) to filter, O(n log n) to sort. Rows of equal size are in the order of their names. A stop leaves
    /// rows out.
    explicit EntryArrangement(const Request& request, const std::stop_token& stop = {});

    [[nodiscard]] const EntryList& entries() const { return m_entries; }

    [[nodiscard]] std::size_t rowCount() const { return m_rows->size(); }

    [[nodiscard]] const Entry& entry(std::size_t row) const { return m_entries[(*m_rows)[row]]; }

    /// The sum of the sizes of the rows, in bytes, and that of the whole list. An overflow ends the process.
    [[nodiscard]] std::int64_t shownBytes() const { return m_shownBytes; }

    [[nodiscard]] std::int64_t totalBytes() const { return m_totalBytes; }

    /// The row that shows `url`. O(n), from `likelyRow` outwards, so that a row that moved little is found
    /// at once.
    [[nodiscard]] std::optional<std::size_t> rowOf(const FileUrl& url, std::size_t likelyRow = 0) const;

    /// The row that shows what `row` of `earlier` showed. Cheap where both come from one growing list, since
    /// its entries never move.
    [[nodiscard]] std::optional<std::size_t> rowOf(const EntryArrangement& earlier, std::size_t row) const;

    /// The largest size among the rows, the reference of their bars.
    [[nodiscard]] std::int64_t largestSize() const { return m_largestSize; }

private:
    template <class Condition>
    [[nodiscard]] std::optional<std::size_t> findRow(std::size_t likelyRow, const Condition& fits) const;

    using Rows = std::vector<std::uint32_t>; // positions in the list

    EntryList m_entries;
    std::shared_ptr<const Rows> m_rows = std::make_shared<const Rows>();
    std::int64_t m_largestSize = 0;
    std::int64_t m_shownBytes = 0;
    std::int64_t m_totalBytes = 0;
};

/// The bytes by which names sort: letter case and accents aside, numbers by their value.
[[nodiscard]] std::string nameSortKey(std::string_view name);

} // namespace tallyroom
