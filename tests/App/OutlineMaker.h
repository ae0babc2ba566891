#pragma once

#include "Model/EntryList.h"
#include "Treemap/Outline.h"

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace tallyroom {

/// A tree that exists nowhere, as outlines and listings tell of it. A folder has children.
struct DrawnTree {
    std::string name;
    std::int64_t bytes = 0; ///< of a file
    std::vector<DrawnTree> children{};
    std::int64_t restBytes = 0;
    std::uint32_t restCount = 0;

    [[nodiscard]] std::int64_t sizeBytes() const
    {
        std::int64_t sum = bytes + restBytes;
        for (const DrawnTree& child : children) {
            sum += child.sizeBytes();
        }
        return sum;
    }

    [[nodiscard]] Entry entry(const FileUrl& url) const
    {
        return {url, name, sizeBytes(), !children.empty() || restCount > 0};
    }
};

inline SharedOutline outlineOf(const DrawnTree& tree, const std::string& path)
{
    auto outline = std::make_shared<Outline>();
    std::vector<const DrawnTree*> told{&tree};
    outline->nodes.push_back({.entry = tree.entry(FileUrl{path})});
    for (std::uint32_t place = 0; place < outline->nodes.size(); ++place) {
        const DrawnTree& folder = *told[place];
        std::vector<const DrawnTree*> children;
        for (const DrawnTree& child : folder.children) {
            children.push_back(&child);
        }
        std::ranges::stable_sort(children, std::greater{}, &DrawnTree::sizeBytes);
        Outline::Node& node = outline->nodes[place];
        node.firstChild = static_cast<std::uint32_t>(outline->nodes.size());
        node.childCount = static_cast<std::uint32_t>(children.size());
        node.restBytes = folder.restBytes;
        node.restCount = folder.restCount;
        node.isExpanded = node.entry.isDirectory;
        const FileUrl url = node.entry.url;
        for (const DrawnTree* const child : children) {
            told.push_back(child);
            outline->nodes.push_back({.entry = child->entry(url.appending(child->name)), .parent = place});
        }
    }
    return outline;
}

/// What a listing of the root tells.
inline EntryList listingOf(const SharedOutline& outline)
{
    EntryList::Builder builder;
    const Outline::Node& root = outline->nodes.front();
    for (std::uint32_t place = 0; place < root.childCount; ++place) {
        builder.append(outline->nodes[root.firstChild + place].entry);
    }
    return builder.snapshot();
}

} // namespace tallyroom
