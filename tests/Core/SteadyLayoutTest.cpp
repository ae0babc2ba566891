#include "Treemap/SteadyLayout.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

namespace tallyroom {

namespace {

using TreemapLayout::Rectangle;
using Items = std::vector<SteadyLayout::Item>;

constexpr Rectangle whole{0, 0, 600, 400};

/// Larger first, as a folder is given.
Items ranked(Items items)
{
    std::ranges::stable_sort(items, std::greater{}, &SteadyLayout::Item::weight);
    return items;
}

Items eightItems()
{
    return {{1, 400}, {2, 300}, {3, 105}, {4, 100}, {5, 60}, {6, 58}, {7, 20}, {8, 1}};
}

std::vector<TreemapLayout::Tile> fresh(const Items& items, const Rectangle& rectangle)
{
    std::vector<double> weights;
    std::ranges::transform(items, std::back_inserter(weights), &SteadyLayout::Item::weight);
    return TreemapLayout::tiles(weights, rectangle);
}

TEST(SteadyLayout, TilesKeepTheirPlacesWhileTheirSharesChangeLittle)
{
    struct Case {
        const char* what;
        Items then;
        Rectangle rectangle = whole;
        bool isKept = true;
    };

    const std::vector<Case> cases{
        {"two change their ranks",
         {{1, 400}, {2, 300}, {3, 99}, {4, 106}, {5, 58}, {6, 60}, {7, 20}, {8, 1}}},
        {"a small one comes, and one goes",
         {{1, 400}, {2, 300}, {3, 105}, {4, 100}, {5, 60}, {6, 58}, {9, 15}}},
        {"all grow alike", {{1, 800}, {2, 600}, {3, 210}, {4, 200}, {5, 120}, {6, 116}, {7, 40}, {8, 2}}},
        {"the window becomes a little wider", eightItems(), {5, 7, 660, 400}},
        {"another one is the largest", {{2, 700}, {1, 400}, {3, 105}, {4, 100}, {5, 60}}, whole, false},
        {"a large one comes", {{1, 400}, {9, 350}, {2, 300}, {3, 105}, {4, 100}}, whole, false},
        {"the window becomes tall", eightItems(), {0, 0, 300, 800}, false}};
    for (const Case& one : cases) {
        SCOPED_TRACE(one.what);
        SteadyLayout layout;
        const Items before = eightItems();
        const auto first = layout.tiles(7, before, whole);
        ASSERT_EQ(first, fresh(before, whole)) << "the first time it is squarified as ever";
        const Items after = ranked(one.then);
        const auto second = layout.tiles(7, after, one.rectangle);
        ASSERT_EQ(second.size(), after.size());
        EXPECT_TRUE(one.isKept || second == fresh(after, one.rectangle));
        double sum = 0;
        std::ranges::for_each(after, [&](const SteadyLayout::Item& item) { sum += item.weight; });
        for (const auto& [index, rect] : second) {
            const double area = one.rectangle.width * one.rectangle.height;
            EXPECT_NEAR(rect.width * rect.height, area * after[index].weight / sum, 1e-6)
                << "areas are true all the same";
            const auto known = std::ranges::find_if(first, [&](const TreemapLayout::Tile& tile) {
                return before[tile.index].key == after[index].key;
            });
            if (one.isKept && known != first.end()) {
                const double right = one.rectangle.width / whole.width;
                EXPECT_NEAR((rect.x - one.rectangle.x) / right, known->rect.x, 20) << after[index].key;
                EXPECT_NEAR(rect.y - one.rectangle.y, known->rect.y, 20) << after[index].key;
            }
        }
    }
}

TEST(SteadyLayout, SmallChangesAddUpUntilItIsLaidOutAnew)
{
    SteadyLayout layout;
    Items items = eightItems();
    EXPECT_FALSE(layout.tiles(7, items, whole).empty());
    layout.forgetUnused();
    int kept = 0;
    Items changed = items;
    do {
        items[3].weight += 8; // ranks above its neighbour from the first time on
        changed = ranked(items);
        ++kept;
    } while (layout.tiles(7, changed, whole) != fresh(changed, whole) && kept < 100);
    EXPECT_GT(kept, 2);
    EXPECT_LT(kept, 12);

    layout.forgetUnused();
    layout.forgetUnused(); // nobody asked for it in between
    items[3].weight -= 8;
    changed = ranked(items);
    EXPECT_EQ(layout.tiles(7, changed, whole), fresh(changed, whole));
}

} // namespace

} // namespace tallyroom
