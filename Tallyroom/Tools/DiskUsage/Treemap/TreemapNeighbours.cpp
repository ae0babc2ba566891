#include "Tools/DiskUsage/Treemap/TreemapNeighbours.h"

#include <algorithm>
#include <tuple>

namespace tallyroom::TreemapNeighbours {

namespace {

/// A stretch of one axis, its end not included.
struct Stretch {
    int start = 0;
    int end = 0;

    [[nodiscard]] int distanceTo(int place) const { return std::max({0, start - place, place - (end - 1)}); }

    [[nodiscard]] bool touches(const Stretch& other) const { return start < other.end && other.start < end; }
};

Stretch horizontal(const QRect& rect)
{
    return {rect.x(), rect.x() + rect.width()};
}

Stretch vertical(const QRect& rect)
{
    return {rect.y(), rect.y() + rect.height()};
}

} // namespace

std::optional<std::size_t> neighbour(const TreemapScene& scene, std::size_t from, Direction direction,
                                     const QPoint& anchor)
{
    const bool sideways = direction == Direction::left || direction == Direction::right;
    const bool forwards = direction == Direction::right || direction == Direction::down;
    const auto along = [sideways](const QRect& rect) { return sideways ? horizontal(rect) : vertical(rect); };
    const auto across = [sideways](const QRect& rect) {
        return sideways ? vertical(rect) : horizontal(rect);
    };
    const Stretch start = along(scene.tiles()[from].cell);
    const Stretch level = across(scene.tiles()[from].cell);

    std::optional<std::size_t> nearest;
    std::tuple<int, int> least;
    const auto [first, end] = scene.siblings(from);
    for (std::size_t tile = first; tile < end; ++tile) {
        const QRect& cell = scene.tiles()[tile].cell;
        const int way = forwards ? along(cell).start - start.end : start.start - along(cell).end;
        if (way < 0 || !across(cell).touches(level)) {
            continue;
        }
        const std::tuple cost{way, across(cell).distanceTo(sideways ? anchor.y() : anchor.x())};
        if (!nearest || cost < least) {
            nearest = tile;
            least = cost;
        }
    }
    return nearest;
}

QPoint anchorWithin(const TreemapScene& scene, std::size_t tile, Direction direction, const QPoint& anchor)
{
    const QRect rect = scene.painted(tile);
    const QPoint middle = rect.center();
    return direction == Direction::left || direction == Direction::right
               ? QPoint{middle.x(), std::clamp(anchor.y(), rect.top(), rect.bottom())}
               : QPoint{std::clamp(anchor.x(), rect.left(), rect.right()), middle.y()};
}

} // namespace tallyroom::TreemapNeighbours
