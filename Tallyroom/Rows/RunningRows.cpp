#include "Rows/RunningRows.h"

#include <algorithm>
#include <ranges>
#include <utility>

namespace tallyroom {

namespace {

using Request = EntryArrangement::Request;

/// The first row of an arrangement that comes after `entry`.
std::size_t rankOf(const Entry& entry, const Request& request, const EntryArrangement& arrangement)
{
    const bool isAscending = request.order.isAscending;
    const auto rows = std::views::iota(std::size_t{0}, arrangement.rowCount());
    const auto rank = [&](const auto& comesBefore) {
        return static_cast<std::size_t>(std::ranges::partition_point(rows, comesBefore) - rows.begin());
    };
    switch (request.order.key) {
    case EntrySortOrder::Key::name: {
        const auto keyOf = [&](const Entry& one) {
            return nameSortKey(request.name ? request.name(one) : one.name);
        };
        const std::string key = keyOf(entry);
        return rank([&](std::size_t row) {
            const std::string other = keyOf(arrangement.entry(row));
            return isAscending ? other <= key : other >= key;
        });
    }
    case EntrySortOrder::Key::size:
        return rank([&](std::size_t row) {
            const std::int64_t other = arrangement.entry(row).sizeBytes;
            return isAscending ? other <= entry.sizeBytes : other >= entry.sizeBytes;
        });
    case EntrySortOrder::Key::column:
        break;
    }
    if (!request.sortKey) {
        return 0;
    }
    const double key = request.sortKey(entry);
    return rank([&](std::size_t row) {
        const Entry& one = arrangement.entry(row);
        const double other = request.sortKey(one);
        return other == key ? one.sizeBytes >= entry.sizeBytes : (other < key) == isAscending;
    });
}

/// What running entries at the same rank are sorted by, smaller first.
double keyAmongRunning(const Entry& entry, const Request& request)
{
    const double sign = request.order.isAscending ? 1 : -1;
    switch (request.order.key) {
    case EntrySortOrder::Key::name:
        return 0;
    case EntrySortOrder::Key::size:
        return sign * static_cast<double>(entry.sizeBytes);
    case EntrySortOrder::Key::column:
        break;
    }
    return request.sortKey ? sign * request.sortKey(entry) : 0;
}

} // namespace

RunningRows::RunningRows(const std::vector<Entry>& running, const Request& request,
                         const EntryArrangement& arrangement)
{
    for (const Entry& entry : running) {
        if (!request.filter || request.filter(entry)) {
            m_placed.push_back({entry, rankOf(entry, request, arrangement), keyAmongRunning(entry, request)});
            m_largestSize = std::max(m_largestSize, entry.sizeBytes);
        }
    }
    const bool isBackwards = request.order.key == EntrySortOrder::Key::name && !request.order.isAscending;
    std::ranges::stable_sort(m_placed, [&](const Placed& left, const Placed& right) {
        const auto place = [](const Placed& one) { return std::pair{one.next, one.key}; };
        if (place(left) != place(right)) {
            return place(left) < place(right);
        }
        const std::string& first = (isBackwards ? right : left).entry.name;
        return first < (isBackwards ? left : right).entry.name;
    });
}

/// The row of number `i` is `next + i`, which rises with `i`.
std::size_t RunningRows::before(int row) const
{
    const auto numbers = std::views::iota(std::size_t{0}, m_placed.size());
    const auto isBefore = [&](std::size_t i) { return m_placed[i].next + i < static_cast<std::size_t>(row); };
    return static_cast<std::size_t>(std::ranges::partition_point(numbers, isBefore) - numbers.begin());
}

std::optional<std::size_t> RunningRows::find(int row) const
{
    const std::size_t index = before(row);
    const bool isShown =
        index < m_placed.size() && m_placed[index].next + index == static_cast<std::size_t>(row);
    return isShown ? std::optional{index} : std::nullopt;
}

std::size_t RunningRows::arrangedRow(int row) const
{
    return static_cast<std::size_t>(row) - before(row);
}

int RunningRows::rowOf(std::size_t arrangedRow) const
{
    const auto above = std::ranges::upper_bound(m_placed, arrangedRow, {}, &Placed::next);
    return static_cast<int>(arrangedRow + static_cast<std::size_t>(above - m_placed.begin()));
}

} // namespace tallyroom
