#pragma once

#include "Treemap/TreemapLayout.h"

#include <cstddef>
#include <span>
#include <unordered_map>
#include <vector>

namespace tallyroom {

/// Divides rectangles like `TreemapLayout`, again and again, and keeps tiles in their places while their
/// shares change little: a map that is refined every moment can be looked at. One thread.
class SteadyLayout {
public:
    struct Item {
        std::size_t key = 0; ///< knows the item again
        double weight = 0;   ///< positive
    };

    /// The tiles of a folder's items, which are given larger first; tiles name positions in `items`. The
    /// order and the strips of last time are kept while less than a twentieth of the area changes hands and
    /// the rectangle keeps about its shape. O(n).
    [[nodiscard]] std::vector<TreemapLayout::Tile> tiles(std::size_t folder, std::span<const Item> items,
                                                         const TreemapLayout::Rectangle& rectangle);

    /// Forgets the folders that nobody asked for since the last call.
    void forgetUnused();

private:
    struct Division {
        std::vector<std::size_t> keys;
        std::vector<double> shares; // when it was made: small changes add up
        std::vector<TreemapLayout::Strip> strips;
        double shape = 1; // width by height
        std::size_t lastRound = 0;
    };

    std::unordered_map<std::size_t, Division> m_divisions;
    std::size_t m_round = 0; // between two calls of `forgetUnused`
};

} // namespace tallyroom
