#include "Model/AgeThreshold.h"
#include "Model/CheckedArithmetic.h"
#include "Model/Ecosystem.h"
#include "Model/FileKind.h"
#include "Model/SnapshotList.h"
#include "Support/Cases.h"
#include "Text/CSVExport.h"
#include "Text/SizeFormatter.h"
#include "Text/SizeProportion.h"
#include "Text/Utf8.h"

#include <gmock/gmock.h>
#include <limits>

namespace tallyroom {

namespace {

using namespace std::chrono_literals;

TEST(FileUrl, TakesPathsApartByTheirBytes)
{
    for (const auto& row : cases("paths")) {
        const FileUrl url{row[0]};
        EXPECT_THAT(row, testing::ElementsAre(url.path(), url.standardized().path(), url.lastPathComponent(),
                                              url.pathExtension(), url.parent().path()));
    }
    for (const auto& row : cases("paths inside others")) {
        EXPECT_EQ(FileUrl{row[0]}.isInside(FileUrl{row[1]}), row[2] == "yes") << row[0];
    }
}

TEST(FileUrl, PercentEncodingLosesNoByte)
{
    std::string everyByte = "/";
    for (int byte = 1; byte < 256; ++byte) {
        everyByte.push_back(static_cast<char>(byte));
    }
    const std::string encoded = FileUrl{everyByte}.percentEncoded();
    EXPECT_TRUE(std::ranges::all_of(encoded, [](char c) { return c > 0x20 && c < 0x7F; }));
    EXPECT_EQ(percentDecodedPath(std::string_view{encoded}.substr(7)), everyByte);
    for (const auto& row : cases("percent signs")) {
        EXPECT_EQ(percentDecodedPath(row[0]), row[1]);
    }
}

TEST(FileKind, GoesByTheLastExtensionInAnyCaseAndByNothingElse)
{
    for (const auto& row : cases("kinds")) {
        const Entry entry{.url = FileUrl{row[0]}, .isDirectory = row[0].ends_with('/')};
        EXPECT_EQ(FileKind::of(entry), FileKind::fromRawValue(row[1])) << row[0];
    }
    EXPECT_EQ(FileKind::of(".png"), FileKind::other);
    EXPECT_EQ(FileKind::fromRawValue("DiskImage"), std::nullopt);
}

TEST(SizeFormatter, RoundsAfterItHasChosenTheUnit)
{
    for (const auto& row : cases("sizes")) {
        const std::size_t comma = std::min(row[1].find(','), row[1].size());
        const std::string expected = row[1].substr(0, comma) +
                                     (comma < row[1].size() ? SizeFormatter::decimalSeparator() : "") +
                                     row[1].substr(std::min(comma + 1, row[1].size()));
        EXPECT_EQ(SizeFormatter::string(std::stoll(row[0])), expected);
    }
}

TEST(SizeProportion, IsRelativeToTheLargestAndNeverLeavesZeroToOne)
{
    const auto entry = [](const std::string& path, std::int64_t size) {
        return Entry{FileUrl{path}, path, size, false, {}};
    };
    const std::vector entries{entry("/a", 10), entry("/b", 5), entry("/c", 0), entry("/d", -3),
                              entry("/b", 1)};
    const auto fractions = SizeProportion::fractions(entries);
    EXPECT_EQ(fractions.at(FileUrl{"/a"}), 1.0);
    EXPECT_EQ(fractions.at(FileUrl{"/b"}), 0.1) << "the later entry of one location counts";
    EXPECT_EQ(fractions.at(FileUrl{"/c"}), 0.0);
    EXPECT_EQ(fractions.at(FileUrl{"/d"}), 0.0);
    EXPECT_THAT(SizeProportion::fractions(std::vector<Entry>{}), testing::IsEmpty());
    EXPECT_EQ(SizeProportion::fractions(std::vector{entry("/z", 0)}).at(FileUrl{"/z"}), 0.0);
    EXPECT_EQ(SizeProportion::fraction(5, 0), 0.0);
    EXPECT_EQ(SizeProportion::fraction(20, 10), 1.0);
}

TEST(Entry, ASumThatLeavesTheRangeEndsTheProcess)
{
    EXPECT_DEATH({ std::ignore = checkedSum(std::numeric_limits<std::int64_t>::max(), 1); }, "64 bits");
}

TEST(CSVExport, QuotesExactlyWhatNeedsItAndKeepsEveryByte)
{
    for (const auto& row : cases("CSV fields")) {
        EXPECT_EQ(CSVExport::escape(row[0]), row[1]);
    }
    const Timestamp moment = std::chrono::sys_days{std::chrono::May / 1 / 2024} + 12h + 34min + 56s + 999ms;
    const std::vector entries{
        Entry{.url = FileUrl{"/p/a,b.txt"}, .name = "a,b.txt", .sizeBytes = 1500, .modifiedAt = moment},
        Entry{FileUrl{"/p/d"}, "d", -1, true, {}}};
    const std::string& comma = SizeFormatter::decimalSeparator();
    const std::string size = comma == "," ? "\"1,5 Ko\"" : "1" + comma + "5 Ko";
    EXPECT_EQ(CSVExport::string(entries), "Nom,Chemin,Taille (octets),Taille,Type,Modifié\n"
                                          "\"a,b.txt\",\"/p/a,b.txt\",1500," +
                                              size +
                                              ",Fichier,2024-05-01T12:34:56Z\n"
                                              "d,/p/d,-1,-1 o,Dossier,");
    EXPECT_EQ(CSVExport::string(std::vector<Entry>{}), CSVExport::header);
    EXPECT_EQ(CSVExport::internetDateTime(Timestamp{-1ns}), "1969-12-31T23:59:59Z");
}

TEST(Utf8, AcceptsTheWellFormedFormsOnlyAndReadsThem)
{
    for (const auto& row : cases("UTF-8")) {
        EXPECT_EQ(Utf8::isValid(row[0]), row[1] == "yes") << row[0];
        EXPECT_TRUE(row.size() < 3 || Utf8::codePoint(row[0]) == std::stoul(row[2], nullptr, 16)) << row[0];
    }
}

TEST(Ecosystem, AFolderBelongsToTheFirstThatMakesIt)
{
    EXPECT_EQ(Ecosystem::first("build"), Ecosystem::javascript);
    EXPECT_EQ(Ecosystem::first("DerivedData"), Ecosystem::xcode);
    EXPECT_EQ(Ecosystem::first("deriveddata"), std::nullopt);
    EXPECT_EQ(Ecosystem::first(""), std::nullopt) << "rows are not all of one length";
    EXPECT_THAT(Ecosystem::ruleNames({Ecosystem::python, Ecosystem::rust}),
                testing::ElementsAre(".venv", "__pycache__", "target"));
    EXPECT_THAT(Ecosystem::ruleNames({}), testing::IsEmpty());
    for (const Ecosystem ecosystem : Ecosystem::all) {
        EXPECT_EQ(Ecosystem::fromRawValue(ecosystem.rawValue()), ecosystem);
    }
}

TEST(AgeThreshold, ExactlyTheAgeIsNotOldAndNeitherIsWhatHasNoDate)
{
    const Timestamp now = std::chrono::sys_days{std::chrono::year{2024} / 3 / 1};
    for (const auto& row : cases("ages")) {
        const AgeThreshold threshold = AgeThreshold::fromRawValue(row[0]).value();
        const Timestamp limit = now - std::chrono::days{std::stoi(row[1])};
        EXPECT_FALSE(threshold.isOld(limit, now)) << row[0];
        EXPECT_TRUE(threshold.isOld(limit - 1ns, now)) << row[0];
        EXPECT_FALSE(threshold.isOld(std::nullopt, now)) << row[0];
    }
    EXPECT_TRUE(AgeThreshold{AgeThreshold::oneYear}.isOld(Timestamp::min(), now)) << "no overflow";
    EXPECT_FALSE(AgeThreshold::fromRawValue("1 mois").has_value());
}

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
