#pragma once

#include "Model/Entry.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <ranges>
#include <unordered_map>

namespace tallyroom {

/// Fractions of the largest size, for bars. Any thread.
namespace SizeProportion {

/// size / max within [0, 1]; 0 when max is below 1.
[[nodiscard]] inline double fraction(std::int64_t size, std::int64_t max) noexcept
{
    if (max < 1) {
        return 0;
    }
    return std::clamp(static_cast<double>(size) / static_cast<double>(max), 0.0, 1.0);
}

/// The reference of the bars of a list: its largest size, 0 for an empty one.
template <std::ranges::input_range Entries>
[[nodiscard]] std::int64_t reference(const Entries& entries)
{
    std::int64_t largest = entries.empty() ? 0 : std::numeric_limits<std::int64_t>::min();
    for (const Entry& entry : entries) {
        largest = std::max(largest, entry.sizeBytes);
    }
    return largest;
}

/// Every entry's fraction of the list's largest, by location; of two entries with one location the later
/// counts.
template <std::ranges::input_range Entries>
[[nodiscard]] std::unordered_map<FileUrl, double> fractions(const Entries& entries)
{
    const std::int64_t max = reference(entries);
    std::unordered_map<FileUrl, double> result;
    for (const Entry& entry : entries) {
        result.insert_or_assign(entry.url, fraction(entry.sizeBytes, max));
    }
    return result;
}

} // namespace SizeProportion

} // namespace tallyroom
