#include "Treemap/TreemapLayout.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace tallyroom::TreemapLayout {

namespace {

constexpr double largest = std::numeric_limits<double>::max();

struct Item {
    std::size_t index = 0;
    double area = 0;
};

/// A run of items that share one strip. Sum and extremes are carried along, so that judging one more item
/// costs the same however long the row is; the sum is added in item order, as a sum from scratch would be.
struct Row {
    std::span<const Item> items;
    double sum = 0;
    double min = largest;
    double max = 0;

    /// This row and the item after it; `ahead` starts with the row.
    [[nodiscard]] Row extended(std::span<const Item> ahead) const
    {
        const double area = ahead[items.size()].area;
        return {ahead.first(items.size() + 1), sum + area, std::min(min, area), std::max(max, area)};
    }
};

/// The kept weights, their shares not yet scaled to the rectangle.
std::vector<Item> positiveWeights(std::span<const double> weights)
{
    std::vector<Item> items;
    items.reserve(weights.size());
    for (std::size_t index = 0; index < weights.size(); ++index) {
        if (weights[index] > 0) { // false for NaN
            items.push_back({index, weights[index]});
        }
    }
    return items;
}

double sumOf(std::span<const Item> items)
{
    double sum = 0;
    for (const Item& item : items) {
        sum += item.area;
    }
    return sum;
}

/// Turns weights into areas that add up to `area`.
void scaleTo(double area, std::vector<Item>& items)
{
    double total = sumOf(items);
    if (!std::isfinite(total)) {
        // Each item takes a part of the range of doubles that leaves room for all the others.
        const auto count = static_cast<double>(items.size());
        std::ranges::for_each(items,
                              [count](Item& item) { item.area = std::min(item.area, largest) / count; });
        total = std::min(sumOf(items), largest);
    }
    std::ranges::for_each(items, [area, total](Item& item) { item.area = area * (item.area / total); });
}

bool hasArea(const Rectangle& rectangle)
{
    return rectangle.width > 0 && rectangle.height > 0 && std::isfinite(rectangle.width * rectangle.height);
}

double worstRatio(const Row& row, double side)
{
    if (row.items.empty() || side <= 0 || row.sum <= 0 || row.min <= 0) {
        return largest;
    }
    const double squaredSide = side * side;
    const double squaredSum = row.sum * row.sum;
    return std::max(squaredSide * row.max / squaredSum, squaredSum / (squaredSide * row.min));
}

/// Lays the row along one side of `remaining` and takes its strip away. The strip never takes more than
/// there is: what rounding leaves of an exhausted rectangle would make it endlessly thick.
void layoutRow(const Row& row, bool isHorizontal, Rectangle& remaining, std::vector<Tile>& tiles)
{
    if (row.sum <= 0) {
        return;
    }
    if (isHorizontal) {
        const double thickness = std::min(row.sum / remaining.width, remaining.height);
        double x = remaining.x;
        for (const Item& item : row.items) {
            const double width = item.area / row.sum * remaining.width;
            tiles.push_back({item.index, {x, remaining.y, width, thickness}});
            x += width;
        }
        remaining.y += thickness;
        remaining.height -= thickness;
    } else {
        const double thickness = std::min(row.sum / remaining.height, remaining.width);
        double y = remaining.y;
        for (const Item& item : row.items) {
            const double height = item.area / row.sum * remaining.height;
            tiles.push_back({item.index, {remaining.x, y, thickness, height}});
            y += height;
        }
        remaining.x += thickness;
        remaining.width -= thickness;
    }
}

} // namespace

std::vector<Tile> tiles(std::span<const double> weights, const Rectangle& rectangle)
{
    std::vector<Strip> strips;
    return tiles(weights, rectangle, strips);
}

std::vector<Tile> tiles(std::span<const double> weights, const Rectangle& rectangle,
                        std::vector<Strip>& strips)
{
    strips.clear();
    if (!hasArea(rectangle)) {
        return {};
    }
    std::vector<Item> items = positiveWeights(weights);
    scaleTo(rectangle.width * rectangle.height, items);

    std::vector<Tile> result;
    result.reserve(items.size());
    Rectangle remaining = rectangle;
    std::span<const Item> ahead = items;
    Row row;
    const auto finishRow = [&] {
        const bool isHorizontal = remaining.width <= remaining.height;
        strips.push_back({row.items.size(), isHorizontal});
        layoutRow(row, isHorizontal, remaining, result);
    };
    while (row.items.size() < ahead.size()) {
        const Row longer = row.extended(ahead);
        const double side = std::min(remaining.width, remaining.height);
        if (row.items.empty() || worstRatio(longer, side) <= worstRatio(row, side)) {
            row = longer;
        } else {
            finishRow();
            ahead = ahead.subspan(row.items.size());
            row = {};
        }
    }
    if (!row.items.empty()) {
        finishRow();
    }
    return result;
}

std::vector<Tile> tilesInStrips(std::span<const double> weights, const Rectangle& rectangle,
                                std::span<const Strip> strips)
{
    if (!hasArea(rectangle)) {
        return {};
    }
    std::vector<Item> items;
    items.reserve(weights.size());
    for (std::size_t index = 0; index < weights.size(); ++index) {
        items.push_back({index, weights[index] > 0 ? weights[index] : 0});
    }
    scaleTo(rectangle.width * rectangle.height, items);

    std::vector<Tile> result;
    result.reserve(items.size());
    Rectangle remaining = rectangle;
    std::span<const Item> ahead = items;
    for (const Strip& strip : strips) {
        const auto taken = ahead.first(std::min(strip.count, ahead.size()));
        layoutRow({taken, sumOf(taken)}, strip.isHorizontal, remaining, result);
        ahead = ahead.subspan(taken.size());
    }
    std::erase_if(result, [&weights](const Tile& tile) { return !(weights[tile.index] > 0); });
    return result;
}

} // namespace tallyroom::TreemapLayout
