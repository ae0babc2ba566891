#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace tallyroom {

/// Divides a rectangle into tiles whose areas are proportional to weights, each as near to a square as the
/// order allows: squarified treemaps, Bruls, Huizing and van Wijk, 2000. No state. Any thread.
namespace TreemapLayout {

/// Origin and extent in whatever unit the caller draws in; y grows with the coordinate space.
struct Rectangle {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    friend bool operator==(const Rectangle&, const Rectangle&) = default;
};

struct Tile {
    /// The position of the tile's weight in the list given.
    std::size_t index = 0;
    /// Fractional; in the coordinate space of the rectangle divided.
    Rectangle rect;

    friend bool operator==(const Tile&, const Tile&) = default;
};

/// One tile a positive weight, in the order of the weights: pass them descending for the squarest tiles.
/// Zero, negative and not-a-number weights have none, nor has a share too small for a double to hold; an
/// infinite weight counts as the largest double. No tiles in a rectangle without a finite, positive area.
/// O(n).
[[nodiscard]] std::vector<Tile> tiles(std::span<const double> weights, const Rectangle& rectangle);

/// Tiles that share one side of what was left of the rectangle.
struct Strip {
    std::size_t count = 0;
    bool isHorizontal = false; ///< the tiles stand side by side

    friend bool operator==(const Strip&, const Strip&) = default;
};

/// The same, and which strips they make.
[[nodiscard]] std::vector<Tile> tiles(std::span<const double> weights, const Rectangle& rectangle,
                                      std::vector<Strip>& strips);

/// The tiles of weights that are divided into strips already, the way a similar list was: as proportional,
/// but not as square. The strips' counts add up to the number of weights. O(n).
[[nodiscard]] std::vector<Tile> tilesInStrips(std::span<const double> weights, const Rectangle& rectangle,
                                              std::span<const Strip> strips);

} // namespace TreemapLayout

} // namespace tallyroom
