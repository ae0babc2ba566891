#include "Treemap/SteadyLayout.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <optional>

namespace tallyroom {

namespace {

using TreemapLayout::Rectangle;
using TreemapLayout::Strip;
using TreemapLayout::Tile;
using Items = std::span<const SteadyLayout::Item>;

constexpr double mostChange = 0.05; // of the area
constexpr double mostOfAnotherShape = 1.3;

double sumOf(Items items)
{
    return std::accumulate(items.begin(), items.end(), 0.0,
                           [](double sum, const SteadyLayout::Item& item) { return sum + item.weight; });
}

/// Where the items of an earlier list are now, then those that it lacked.
struct Order {
    std::vector<std::optional<std::size_t>> places; // nothing: the item is gone
    double change = 0;                              // the part of the area that changed hands
};

Order orderAfter(const std::vector<std::size_t>& keys, const std::vector<double>& shares, Items items)
{
    std::unordered_map<std::size_t, std::size_t> unplaced;
    bool isSameList = keys.size() == items.size();
    for (std::size_t place = 0; isSameList && place < items.size(); ++place) {
        isSameList = keys[place] == items[place].key;
    }
    for (std::size_t place = 0; !isSameList && place < items.size(); ++place) {
        unplaced.emplace(items[place].key, place);
    }
    const double sum = sumOf(items);
    Order order;
    order.places.reserve(items.size());
    for (std::size_t earlier = 0; earlier < keys.size(); ++earlier) {
        std::optional<std::size_t> place;
        if (isSameList) {
            place = earlier;
        } else if (const auto found = unplaced.find(keys[earlier]); found != unplaced.end()) {
            place = found->second;
            unplaced.erase(found);
        }
        order.places.push_back(place);
        order.change += std::abs((place ? items[*place].weight / sum : 0) - shares[earlier]) / 2;
    }
    const auto firstNew = static_cast<std::ptrdiff_t>(order.places.size());
    for (const auto& [key, place] : unplaced) {
        order.places.emplace_back(place);
        order.change += items[place].weight / sum / 2;
    }
    std::sort(order.places.begin() + firstNew, order.places.end());
    return order;
}

} // namespace

std::vector<Tile> SteadyLayout::tiles(std::size_t folder, Items items, const Rectangle& rectangle)
{
    const double shape = rectangle.height > 0 ? rectangle.width / rectangle.height : 1;
    std::vector<double> weights;
    const auto found = m_divisions.find(folder);
    if (found != m_divisions.end() && !found->second.strips.empty() && !items.empty()) {
        Division& division = found->second;
        const double otherShape = std::max(shape / division.shape, division.shape / shape);
        const Order order = orderAfter(division.keys, division.shares, items);
        if (otherShape <= mostOfAnotherShape && order.change <= mostChange) {
            division.lastRound = m_round;
            std::ranges::transform(order.places, std::back_inserter(weights),
                                   [&](const auto& place) { return place ? items[*place].weight : 0; });
            std::vector<Strip> strips = division.strips;
            strips.back().count += order.places.size() - division.keys.size();
            std::vector<Tile> kept = TreemapLayout::tilesInStrips(weights, rectangle, strips);
            std::ranges::for_each(kept, [&](Tile& tile) { tile.index = *order.places[tile.index]; });
            return kept;
        }
    }
    Division division;
    const double sum = sumOf(items);
    for (const Item& item : items) {
        weights.push_back(item.weight);
        division.keys.push_back(item.key);
        division.shares.push_back(item.weight / sum);
    }
    division.shape = shape;
    division.lastRound = m_round;
    std::vector<Tile> fresh = TreemapLayout::tiles(weights, rectangle, division.strips);
    m_divisions.insert_or_assign(folder, std::move(division));
    return fresh;
}

void SteadyLayout::forgetUnused()
{
    std::erase_if(m_divisions, [this](const auto& division) { return division.second.lastRound != m_round; });
    ++m_round;
}

} // namespace tallyroom
