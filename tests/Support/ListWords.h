#pragma once

#include "Support/TemporaryTree.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

namespace tallyroom {

/// The paths of a list's entries below a tree, in the list's order.
template <typename Entries>
std::vector<std::string> below(const TemporaryTree& tree, const Entries& entries)
{
    std::vector<std::string> paths;
    std::ranges::transform(entries, std::back_inserter(paths), [&tree](const auto& entry) {
        return entry.url.path().substr(tree.path().size() + 1);
    });
    return paths;
}

/// The same with their sizes: "a/b 4096".
template <typename Entries>
std::vector<std::string> sized(const TemporaryTree& tree, const Entries& entries)
{
    std::vector<std::string> lines = below(tree, entries);
    auto entry = entries.begin();
    for (std::string& line : lines) {
        line += " " + std::to_string((entry++)->sizeBytes);
    }
    return lines;
}

/// Of each failure "a/b: its message".
template <typename Failures>
std::vector<std::string> told(const TemporaryTree& tree, const Failures& failures)
{
    std::vector<std::string> lines;
    std::ranges::transform(failures, std::back_inserter(lines), [&tree](const auto& failure) {
        return failure.url.path().substr(tree.path().size() + 1) + ": " + failure.message;
    });
    return lines;
}

} // namespace tallyroom
