#include "Model/SnapshotList.h"

#include <gmock/gmock.h>

namespace tallyroom {

namespace {

struct Item {
    std::int64_t size;
    int serial;
    friend bool operator==(const Item&, const Item&) = default;
};

struct ItemSize {
    std::int64_t operator()(const Item& item) const { return item.size; }
};

using Items = SnapshotList<Item, ItemSize>;

TEST(SnapshotList, EveryPrefixReadsRankedAndStableInWhateverOrderTheyAreRead)
{
    Items::Builder builder;
    std::vector<Items> prefixes;
    std::vector<Item> appended;
    for (int serial = 0; serial < 500; ++serial) {
        const Item item{(serial * 37) % 11, serial};
        appended.push_back(item);
        builder.append(item);
        prefixes.push_back(builder.snapshot());
    }
    // Read out of order, so that some readings start from a longer order, some from a shorter one.
    for (const std::size_t index : {499U, 0U, 100U, 99U, 250U, 101U, 498U}) {
        std::vector<Item> expected(appended.begin(),
                                   appended.begin() + static_cast<std::ptrdiff_t>(index) + 1);
        std::ranges::stable_sort(expected, std::greater{}, &Item::size);
        EXPECT_EQ(prefixes[index].toVector(), expected) << "prefix of " << index + 1;
        EXPECT_TRUE(prefixes[index].isSameSnapshot(Items{prefixes[index]}));
        EXPECT_FALSE(prefixes[index].isSameSnapshot(prefixes[(index + 1) % 500]));
    }
}

TEST(SnapshotList, AListOfItsOwnKeepsTheOrderGiven)
{
    const Items list{{1, 0}, {3, 1}, {2, 2}};
    EXPECT_THAT(list.toVector(), testing::ElementsAre(Item{1, 0}, Item{3, 1}, Item{2, 2}));
    Items moved = list;
    const Items taken = std::move(moved);
    EXPECT_EQ(taken, list);
    EXPECT_TRUE(moved.empty()); // NOLINT: an emptied list must read as empty
}

TEST(SnapshotList, PartedAndMergedListsAreOtherListsOfTheSameItems)
{
    Items::Builder builder;
    for (int serial = 0; serial < 300; ++serial) {
        builder.append({serial % 7, serial});
    }
    const Items all = builder.snapshot();
    builder.append({9, 300}); // a growing store may be parted
    const auto [odd, even] = all.parted([](const Item& item) { return item.serial % 2 == 1; });
    EXPECT_EQ(odd.size(), 150U);
    EXPECT_FALSE(odd.isSameSnapshot(even)) << "as long, but another list";
    EXPECT_TRUE(odd.parted([](const Item&) { return false; }).second.isSameSnapshot(odd));
    EXPECT_TRUE(odd.parted([](const Item&) { return true; }).second.empty());

    const Item sixth{6, -1};
    const Items merged = even.merged(odd).merged(Items{{6, -1}});
    std::vector<Item> expected = even.toVector();
    std::ranges::copy(odd, std::back_inserter(expected));
    expected.push_back(sixth);
    std::ranges::stable_sort(expected, std::greater{}, &Item::size);
    EXPECT_EQ(merged.toVector(), expected);
    EXPECT_EQ(&merged.front(), &even.front()) << "no item is copied";
    EXPECT_TRUE(merged.sharesItems(all));
    EXPECT_FALSE(merged.sharesItems(Items{{6, -1}}));

    const Items given = Items{{1, 0}, {3, 1}}.merged(Items{{2, 2}}); // of one that was not ranked
    EXPECT_THAT(given.toVector(), testing::ElementsAre(Item{3, 1}, Item{2, 2}, Item{1, 0}));
}

} // namespace

} // namespace tallyroom
