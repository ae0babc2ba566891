#include "Tools/DiskUsage/Treemap/TreemapScene.h"

#include "Theme/FileKindPresentation.h"
#include "Treemap/TreemapLayout.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <tuple>

namespace tallyroom {

namespace {

// Device-independent pixels.
constexpr double gap = 2;
constexpr double narrowGap = 1;
constexpr double wideEnoughForTheGap = 9;
constexpr double smallestTile = 3;

double weightOf(const Entry& entry)
{
    return static_cast<double>(std::max<std::int64_t>(entry.sizeBytes, 0));
}

std::vector<double> weightsOf(const EntryList& entries, const std::vector<std::uint32_t>& visible)
{
    std::vector<double> weights(visible.size());
    std::ranges::transform(visible, weights.begin(),
                           [&entries](std::uint32_t index) { return weightOf(entries[index]); });
    return weights;
}

/// Edges, not extents, are rounded: neighbours then share them, and areas stay true over any distance.
QRect rounded(const TreemapLayout::Rectangle& rect)
{
    const auto pixel = [](double edge) { return static_cast<int>(std::lround(edge)); };
    const QPoint start{pixel(rect.x), pixel(rect.y)};
    return {start, QSize{pixel(rect.x + rect.width) - start.x(), pixel(rect.y + rect.height) - start.y()}};
}

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

TreemapScene::TreemapScene(EntryList entries, std::vector<std::uint32_t> visible, const QRect& area,
                           double scale)
    : m_entries(std::move(entries)), m_area(area), m_scale(scale)
{
    std::vector<double> weights = weightsOf(m_entries, visible);
    if (!std::ranges::is_sorted(weights, std::greater{})) {
        std::ranges::stable_sort(visible, std::greater{},
                                 [this](std::uint32_t index) { return weightOf(m_entries[index]); });
        weights = weightsOf(m_entries, visible);
    }
    if (visible.size() == m_entries.size()) {
        std::ranges::for_each(weights, [this](double weight) { m_folderBytes += weight; });
    } else {
        std::ranges::for_each(m_entries, [this](const Entry& entry) { m_folderBytes += weightOf(entry); });
    }
    place(visible, weights);
    findKinds();
}

void TreemapScene::place(const std::vector<std::uint32_t>& visible, const std::vector<double>& weights)
{
    // Every cell ends with a gap; the last ones end theirs beyond the area.
    const double around = gap * m_scale;
    const TreemapLayout::Rectangle whole{double(m_area.x()), double(m_area.y()), m_area.width() + around,
                                         m_area.height() + around};
    const double least = smallestTile * m_scale;
    for (const auto& [index, rect] : TreemapLayout::tiles(weights, whole)) {
        const QRect cell = rounded(rect);
        if (std::min(rect.width, rect.height) >= least) {
            m_tiles.push_back({cell, visible[index]});
            continue;
        }
        ++m_crumbs.count;
        m_crumbs.sizeBytes += weights[index];
        if (const QRect inside = cell & m_area; !inside.isEmpty()) {
            m_crumbs.cells.push_back(inside);
        }
    }
}

void TreemapScene::findKinds()
{
    // A kind is read from the path's last bytes. In the order of rank these lie anywhere in memory, and are
    // asked for some tiles ahead: waiting for each of 100 000 is half of the time that the map takes.
    constexpr std::size_t far = 16;
    constexpr std::size_t near = 8;
    const std::size_t count = m_tiles.size();
    for (std::size_t tile = 0; tile < count; ++tile) {
        __builtin_prefetch(&entry(std::min(tile + far, count - 1)));
        const std::string& path = entry(std::min(tile + near, count - 1)).url.path();
        __builtin_prefetch(path.data() + path.size());
        m_tiles[tile].kind = drawnKind(entry(tile));
    }
}

QRect TreemapScene::painted(std::size_t tile) const
{
    const QRect& cell = m_tiles[tile].cell;
    const bool wide = std::min(cell.width(), cell.height()) >= wideEnoughForTheGap * m_scale;
    const int around = static_cast<int>(std::lround(gap * m_scale));
    const int taken = wide ? around : static_cast<int>(std::lround(narrowGap * m_scale));
    return cell.adjusted(0, 0, -taken, -taken) & m_area;
}

double TreemapScene::share(std::size_t tile) const
{
    return m_folderBytes > 0 ? weightOf(entry(tile)) / m_folderBytes : 0;
}

std::optional<std::size_t> TreemapScene::tileAt(const QPoint& pixel) const
{
    const auto found =
        std::ranges::find_if(m_tiles, [&pixel](const Tile& tile) { return tile.cell.contains(pixel); });
    return found == m_tiles.end() ? std::nullopt
                                  : std::optional{static_cast<std::size_t>(found - m_tiles.begin())};
}

std::optional<std::size_t> TreemapScene::find(const FileUrl& url) const
{
    const auto found = std::ranges::find_if(
        m_tiles, [this, &url](const Tile& tile) { return m_entries[tile.entry].url == url; });
    return found == m_tiles.end() ? std::nullopt
                                  : std::optional{static_cast<std::size_t>(found - m_tiles.begin())};
}

std::optional<std::size_t> TreemapScene::neighbour(std::size_t from, Direction direction,
                                                   const QPoint& anchor) const
{
    const bool sideways = direction == Direction::left || direction == Direction::right;
    const bool forwards = direction == Direction::right || direction == Direction::down;
    const auto along = [sideways](const QRect& rect) { return sideways ? horizontal(rect) : vertical(rect); };
    const auto across = [sideways](const QRect& rect) {
        return sideways ? vertical(rect) : horizontal(rect);
    };
    const Stretch start = along(m_tiles[from].cell);
    const Stretch level = across(m_tiles[from].cell);

    std::optional<std::size_t> nearest;
    std::tuple<int, int> least;
    for (std::size_t tile = 0; tile < m_tiles.size(); ++tile) {
        const QRect& cell = m_tiles[tile].cell;
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

QPoint TreemapScene::anchorWithin(std::size_t tile, Direction direction, const QPoint& anchor) const
{
    const QRect rect = painted(tile);
    const QPoint middle = rect.center();
    return direction == Direction::left || direction == Direction::right
               ? QPoint{middle.x(), std::clamp(anchor.y(), rect.top(), rect.bottom())}
               : QPoint{std::clamp(anchor.x(), rect.left(), rect.right()), middle.y()};
}

} // namespace tallyroom
