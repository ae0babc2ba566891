#include "Treemap/SteadyLayout.h"

#include "Support/Cases.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <sstream>

namespace tallyroom {

namespace {

using TreemapLayout::Rectangle;
using WeightedItems = std::vector<SteadyLayout::Item>;

constexpr Rectangle canvas{0, 0, 600, 400};

/// Larger first, as a folder is given.
WeightedItems ranked(WeightedItems items)
{
    std::ranges::stable_sort(items, std::greater{}, &SteadyLayout::Item::weight);
    return items;
}

WeightedItems eightItems()
{
    return {{1, 400}, {2, 300}, {3, 105}, {4, 100}, {5, 60}, {6, 58}, {7, 20}, {8, 1}};
}

std::vector<TreemapLayout::Tile> fresh(const WeightedItems& items, const Rectangle& rectangle)
{
    std::vector<double> weights;
    std::ranges::transform(items, std::back_inserter(weights), &SteadyLayout::Item::weight);
    return TreemapLayout::tiles(weights, rectangle);
}

TEST(SteadyLayout, TilesKeepTheirPlacesWhileTheirSharesChangeLittle)
{
    for (const auto& row : cases("sizes that a treemap is given next")) {
        SCOPED_TRACE(row[0]);
        const bool isKept = row[1] == "kept";
        Rectangle rectangle;
        std::istringstream{row[2]} >> rectangle.x >> rectangle.y >> rectangle.width >> rectangle.height;
        WeightedItems then;
        std::istringstream sizes{row[3]};
        for (SteadyLayout::Item item; sizes >> item.key >> item.weight;) {
            then.push_back(item);
        }
        SteadyLayout layout;
        const WeightedItems before = eightItems();
        const auto first = layout.tiles(7, before, canvas);
        ASSERT_EQ(first, fresh(before, canvas)) << "the first time it is squarified as ever";
        const WeightedItems after = ranked(then);
        const auto second = layout.tiles(7, after, rectangle);
        ASSERT_EQ(second.size(), after.size());
        EXPECT_TRUE(isKept || second == fresh(after, rectangle));
        double sum = 0;
        std::ranges::for_each(after, [&](const SteadyLayout::Item& item) { sum += item.weight; });
        for (const auto& [index, rect] : second) {
            const double area = rectangle.width * rectangle.height;
            EXPECT_NEAR(rect.width * rect.height, area * after[index].weight / sum, 1e-6)
                << "areas are true all the same";
            const auto known = std::ranges::find_if(first, [&](const TreemapLayout::Tile& tile) {
                return before[tile.index].key == after[index].key;
            });
            if (isKept && known != first.end()) {
                const double right = rectangle.width / canvas.width;
                EXPECT_NEAR((rect.x - rectangle.x) / right, known->rect.x, 20) << after[index].key;
                EXPECT_NEAR(rect.y - rectangle.y, known->rect.y, 20) << after[index].key;
            }
        }
    }
}

TEST(SteadyLayout, SmallChangesAddUpUntilItIsLaidOutAnew)
{
    SteadyLayout layout;
    WeightedItems items = eightItems();
    EXPECT_FALSE(layout.tiles(7, items, canvas).empty());
    layout.forgetUnused();
    int kept = 0;
    WeightedItems changed = items;
    do {
        items[3].weight += 8; // ranks above its neighbour from the first time on
        changed = ranked(items);
        ++kept;
    } while (layout.tiles(7, changed, canvas) != fresh(changed, canvas) && kept < 100);
    EXPECT_GT(kept, 2);
    EXPECT_LT(kept, 12);

    layout.forgetUnused();
    layout.forgetUnused(); // nobody asked for it in between
    items[3].weight -= 8;
    changed = ranked(items);
    EXPECT_EQ(layout.tiles(7, changed, canvas), fresh(changed, canvas));
}

} // namespace

} // namespace tallyroom
