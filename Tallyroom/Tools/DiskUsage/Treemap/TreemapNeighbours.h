#pragma once

#include "Tools/DiskUsage/Treemap/TreemapScene.h"

#include <optional>

namespace tallyroom {

/// Which tile is beside which, for the arrow keys. Main thread.
namespace TreemapNeighbours {

enum class Direction { left, right, up, down };

/// The nearest sibling beyond that edge of `from`, among those that touch the level of `anchor`, or else lie
/// closest to it; nothing at the border of what holds them. O(siblings).
[[nodiscard]] std::optional<std::size_t> neighbour(const TreemapScene& scene, std::size_t from,
                                                   Direction direction, const QPoint& anchor);

/// Where to go on from in `tile` after a move there: its middle, but on the level of `anchor` across the
/// direction, so that the way back leads back.
[[nodiscard]] QPoint anchorWithin(const TreemapScene& scene, std::size_t tile, Direction direction,
                                  const QPoint& anchor);

} // namespace TreemapNeighbours

} // namespace tallyroom
