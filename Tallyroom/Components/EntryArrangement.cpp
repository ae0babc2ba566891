#include "Components/EntryArrangement.h"

#include "Text/Utf8.h"

#include <QString>

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

namespace tallyroom {

namespace {

constexpr std::uint32_t stopInterval = 256; // rows between two looks at the stop

bool isDigit(char byte)
{
    return byte >= '0' && byte <= '9';
}

/// Accents and letter case taken off; what is no text stays as it is.
std::string folded(std::string_view name)
{
    std::string result{name};
    if (Utf8::isAscii(name)) {
        std::ranges::transform(result, result.begin(), [](char byte) {
            return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte - 'A' + 'a') : byte;
        });
        return result;
    }
    QString text = QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size()))
                       .normalized(QString::NormalizationForm_KD)
                       .toCaseFolded();
    text.removeIf([](QChar letter) { return letter.category() == QChar::Mark_NonSpacing; });
    return text.toStdString();
}

/// A row on its way to its place: the first bytes of its key spare most of the looks at the whole one.
struct NamedRow {
    std::uint64_t head = 0;
    std::size_t keyStart = 0;
    std::uint32_t keyLength = 0;
    std::uint32_t index = 0;
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
    const std::string plain = folded(name);
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

Rows filteredRows(const Request& request, const std::stop_token& stop)
{
    Rows rows;
    const auto count = static_cast<std::uint32_t>(request.entries.size());
    rows.reserve(request.filter ? 0 : count);
    for (std::uint32_t index = 0; index < count; ++index) {
        if (index % stopInterval == 0 && stop.stop_requested()) {
            return {};
        }
        if (!request.filter || request.filter(request.entries[index])) {
            rows.push_back(index);
        }
    }
    return rows;
}

void sortByName(Rows& rows, const Request& request, const std::stop_token& stop)
{
    std::string keys;
    std::vector<NamedRow> named;
    named.reserve(rows.size());
    for (const std::uint32_t index : rows) {
        if (named.size() % stopInterval == 0 && stop.stop_requested()) {
            return;
        }
        const Entry& entry = request.entries[index];
        const std::string key = nameSortKey(request.name ? request.name(entry) : entry.name);
        named.push_back({headOf(key), keys.size(), static_cast<std::uint32_t>(key.size()), index});
        keys += key;
    }
    const auto keyOf = [&keys](const NamedRow& row) {
        return std::string_view{keys}.substr(row.keyStart, row.keyLength);
    };
    const bool isAscending = request.order.isAscending;
    std::ranges::sort(named, [&](const NamedRow& left, const NamedRow& right) {
        if (left.head != right.head) {
            return (left.head < right.head) == isAscending;
        }
        if (const int order = keyOf(left).compare(keyOf(right)); order != 0) {
            return (order < 0) == isAscending;
        }
        return request.entries[left.index].url < request.entries[right.index].url;
    });
    std::ranges::transform(named, rows.begin(), &NamedRow::index);
}

void sortByOwnKey(Rows& rows, const Request& request, const std::stop_token& stop)
{
    std::vector<std::pair<double, std::uint32_t>> keyed;
    keyed.reserve(rows.size());
    for (const std::uint32_t index : rows) {
        if (keyed.size() % stopInterval == 0 && stop.stop_requested()) {
            return;
        }
        keyed.emplace_back(request.sortKey(request.entries[index]), index);
    }
    // Equal keys keep the list's order, larger first, in both directions.
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
        sortByName(rows, request, stop);
        break;
    case EntrySortOrder::Key::column:
        if (request.sortKey) {
            sortByOwnKey(rows, request, stop);
        }
        break;
    case EntrySortOrder::Key::size:
        if (request.order.isAscending) {
            std::ranges::reverse(rows);
        }
        break;
    }
}

} // namespace

bool EntryArrangement::Request::isTheList() const
{
    return !filter && order.key == EntrySortOrder::Key::size && !order.isAscending;
}

EntryArrangement::EntryArrangement(const Request& request, const std::stop_token& stop)
    : m_entries(request.entries)
{
    if (request.isTheList()) {
        m_largestSize = m_entries.empty() ? 0 : m_entries.front().sizeBytes;
        return;
    }
    Rows rows = filteredRows(request, stop);
    if (!rows.empty()) {
        m_largestSize = m_entries[rows.front()].sizeBytes; // the list is ranked
        sort(rows, request, stop);
    }
    m_rows = std::make_shared<const Rows>(std::move(rows));
}

template <class Condition>
std::optional<std::size_t> EntryArrangement::findRow(std::size_t likelyRow, const Condition& fits) const
{
    const std::size_t count = rowCount();
    std::size_t above = std::min(likelyRow, count);
    std::size_t below = above;
    while (above > 0 || below < count) {
        if (below < count && fits(entry(below++))) {
            return below - 1;
        }
        if (above > 0 && fits(entry(--above))) {
            return above;
        }
    }
    return std::nullopt;
}

std::optional<std::size_t> EntryArrangement::rowOf(const FileUrl& url, std::size_t likelyRow) const
{
    return findRow(likelyRow, [&url](const Entry& entry) { return entry.url == url; });
}

std::optional<std::size_t> EntryArrangement::rowOf(const EntryArrangement& earlier, std::size_t row) const
{
    const Entry& wanted = earlier.entry(row);
    const auto same = findRow(row, [&wanted](const Entry& entry) { return &entry == &wanted; });
    return same ? same : rowOf(wanted.url, row);
}

} // namespace tallyroom
