#pragma once

#include "Model/FileUrl.h"

#include <functional>
#include <ranges>
#include <unordered_set>

namespace tallyroom {

/// Locations in no order, each once.
using UrlSet = std::unordered_set<FileUrl>;

/// The locations of `items`, such as `urlsOf(entries, &Entry::url)`.
template <std::ranges::input_range Items, class Member>
[[nodiscard]] UrlSet urlsOf(const Items& items, Member url)
{
    UrlSet urls;
    for (const auto& item : items) {
        urls.insert(std::invoke(url, item));
    }
    return urls;
}

} // namespace tallyroom
