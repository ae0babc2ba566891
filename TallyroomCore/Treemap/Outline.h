#pragma once

#include "Model/Entry.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace tallyroom {

/// A folder with several levels below it, as a map shows them: the larger items one by one, the others
/// summed. A plain value.
struct Outline {
    struct Node {
        /// Like a listing's entry. Of a folder that is still being measured: what is known to lie below it.
        Entry entry;
        /// The node of the folder that holds it; the root is its own.
        std::uint32_t parent = 0;
        /// A folder's children follow each other in `nodes`, larger first, equal sizes by name.
        std::uint32_t firstChild = 0;
        std::uint32_t childCount = 0;
        /// Of an expanded folder: the children that are too small to be told one by one: how many, and their
        /// sizes' sum. With the children's own sizes it is the folder's size.
        std::int64_t restBytes = 0;
        std::uint32_t restCount = 0;
        /// False for a folder none of whose children is told: all are too small, or it is not listed yet. It
        /// has no rest.
        bool isExpanded = false;
        /// A folder that is still being measured.
        bool isPending = false;
    };

    /// The root first, then level by level; never empty once read.
    std::vector<Node> nodes;
};

using SharedOutline = std::shared_ptr<const Outline>;

} // namespace tallyroom
