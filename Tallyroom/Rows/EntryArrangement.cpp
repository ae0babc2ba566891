#include "Rows/EntryArrangement.h"

#include "Model/CheckedArithmetic.h"
#include "Text/TextFilter.h"

#include <algorithm>
#include <span>
#include <utility>

namespace tallyroom {

namespace {

constexpr std::uint32_t stopInterval = 256; // rows between two looks at the stop

bool isDigit(char byte)
{
    return byte >= '0' && byte <= '9';
}

/// A row on its way to its place: the first bytes of its key spare most of the looks at the whole one.
struct NamedRow {
    std::uint64_t head = 0;
    std::size_t keyStart = 0;
    std::uint32_t keyLength = 0;
    std::uint32_t position = 0;
};

std::uint64_t headOf(std::string_view key)
{
    std::uint64_t head = 0;
    for (std::size_t place = 0; place < sizeof head; ++place) {
        head = (head << 8) | (place < key.size() ? static_cast<unsigned char>(key[place]) : 0U);
    }
    return head;
}

} // namespace

std::string nameSortKey(std::string_view name)
{
    const std::string plain = TextFilter::folded(name);
    std::string key;
    key.reserve(plain.size() + 2);
    for (std::size_t place = 0; place < plain.size();) {
        if (!isDigit(plain[place])) {
            key += plain[place++];
            continue;
        }
        // A number is its length, then its digits: longer means larger. Leading zeros say nothing.
        while (plain[place] == '0' && place + 1 < plain.size() && isDigit(plain[place + 1])) {
            ++place;
        }
        std::size_t end = place;
        while (end < plain.size() && isDigit(plain[end])) {
            ++end;
        }
        key += '0';
        key += static_cast<char>(std::min<std::size_t>(end - place, 255));
        key.append(plain, place, end - place);
        place = end;
    }
    return key;
}

namespace {

using Rows = std::vector<std::uint32_t>;
using Request = EntryArrangement::Request;

void sortByName(std::span<std::uint32_t> rows, const Request& request, bool isAscending,
                const std::stop_token& stop)
{
    std::string keys;
    std::vector<NamedRow> named;
    named.reserve(rows.size());
    for (const std::uint32_t position : rows) {
        if (named.size() % stopInterval == 0 && stop.stop_requested()) {
            return;
        }
        const Entry& entry = request.entries[position];
        const std::string key = nameSortKey(request.name ? request.name(entry) : entry.name);
        named.push_back({headOf(key), keys.size(), static_cast<std::uint32_t>(key.size()), position});
        keys += key;
    }
    const auto keyOf = [&keys](const NamedRow& row) {
        return std::string_view{keys}.substr(row.keyStart, row.keyLength);
    };
    std::ranges::sort(named, [&](const NamedRow& left, const NamedRow& right) {
        if (left.head != right.head) {
            return (left.head < right.head) == isAscending;
        }
        if (const int order = keyOf(left).compare(keyOf(right)); order != 0) {
            return (order < 0) == isAscending;
        }
        return request.entries[left.position].url < request.entries[right.position].url;
    });
    std::ranges::transform(named, rows.begin(), &NamedRow::position);
}

/// Equal sizes are in the order of their names.
void sortTies(std::span<std::uint32_t> rows, const Request& request, const std::stop_token& stop)
{
    const auto sizeAt = [&](std::size_t row) { return request.entries[rows[row]].sizeBytes; };
    for (std::size_t first = 0; first < rows.size();) {
        const std::int64_t size = sizeAt(first);
        std::size_t end = first + 1;
        while (end < rows.size() && sizeAt(end) == size) {
            ++end;
        }
        if (end - first > 1) {
            sortByName(rows.subspan(first, end - first), request, true, stop);
        }
        first = end;
    }
}

void sortByOwnKey(Rows& rows, const Request& request, const std::stop_token& stop)
{
    std::vector<std::pair<double, std::uint32_t>> keyed;
    keyed.reserve(rows.size());
    for (const std::uint32_t position : rows) {
        if (keyed.size() % stopInterval == 0 && stop.stop_requested()) {
            return;
        }
        keyed.emplace_back(request.sortKey(request.entries[position]), position);
    }
    // Equal keys stay in the order of sizes, larger first, in both directions.
    std::ranges::stable_sort(keyed,
                             [isAscending = request.order.isAscending](const auto& left, const auto& right) {
                                 return isAscending ? left.first < right.first : right.first < left.first;
                             });
    std::ranges::transform(keyed, rows.begin(), &std::pair<double, std::uint32_t>::second);
}

void sort(Rows& rows, const Request& request, const std::stop_token& stop)
{
    switch (request.order.key) {
    case EntrySortOrder::Key::name:
        sortByName(rows, request, request.order.isAscending, stop);
        break;
    case EntrySortOrder::Key::column:
        sortTies(rows, request, stop);
        if (request.sortKey) {
            sortByOwnKey(rows, request, stop);
        }
        break;
    case EntrySortOrder::Key::size:
        if (request.order.isAscending) {
            std::ranges::reverse(rows);
        }
        sortTies(rows, request, stop);
        break;
    }
}

} // namespace

EntryArrangement::EntryArrangement(const Request& request, const std::stop_token& stop)
    : m_entries(request.entries), m_found{request.absent, {}}
{
    Rows rows;
    rows.reserve(request.filter ? 0 : m_entries.size());
    for (std::size_t index = 0; index < m_entries.size(); ++index) {
        if (index % stopInterval == 0 && stop.stop_requested()) {
            return;
        }
        const Entry& entry = m_entries[index];
        m_totalBytes = checkedSum(m_totalBytes, entry.sizeBytes);
        if (request.absent != nullptr && request.absent->contains(entry.url)) {
            m_found.positions.insert(static_cast<std::uint32_t>(index));
        }
        if (!request.filter || request.filter(entry)) {
            m_shownBytes = checkedSum(m_shownBytes, entry.sizeBytes);
            m_largestSize = std::max(m_largestSize, entry.sizeBytes);
            rows.push_back(static_cast<std::uint32_t>(index));
            m_shown.insert(rows.back());
        }
    }
    sort(rows, request, stop);
    m_rows = std::make_shared<const Rows>(std::move(rows));
}

std::optional<std::size_t> EntryArrangement::rowOf(const EntryArrangement& earlier, std::size_t row) const
{
    const Entry& wanted = earlier.entry(row);
    const auto rowWith = [&](const auto& fits) { return findOutwards(rowCount(), row, fits); };
    if (m_entries.isSameSnapshot(earlier.m_entries)) {
        const std::uint32_t wantedPosition = earlier.position(row);
        return m_shown.contains(wantedPosition)
                   ? rowWith([&](std::size_t other) { return position(other) == wantedPosition; })
                   : std::nullopt;
    }
    // Lists that share entries show the same ones, but for folders that were measured again; those of another
    // list are known by their locations.
    const auto same = rowWith([&](std::size_t other) { return &entry(other) == &wanted; });
    const bool isGone = m_entries.sharesItems(earlier.m_entries) && !wanted.isDirectory;
    return same || isGone ? same : rowWith([&](std::size_t other) { return entry(other).url == wanted.url; });
}

} // namespace tallyroom
