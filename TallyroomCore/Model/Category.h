#pragma once

#include "Model/Entry.h"

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace tallyroom {

/// Sorts entries into categories, each known by a key. Any thread.
using CategoryOf = std::function<std::string_view(const Entry&)>;

/// How many entries there are of each category.
using CategoryCounts = std::map<std::string, std::size_t, std::less<>>;

/// Counts a list. Linear in it.
template <class Entries>
[[nodiscard]] CategoryCounts countCategories(const Entries& entries, const CategoryOf& categoryOf)
{
    CategoryCounts counts;
    for (const Entry& entry : entries) {
        const std::string_view category = categoryOf(entry);
        const auto found = counts.find(category);
        (found == counts.end() ? counts.emplace(category, 0).first : found)->second += 1;
    }
    return counts;
}

} // namespace tallyroom
