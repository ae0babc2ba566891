#include "Scanning/AgeThreshold.h"
#include "Scanning/Ecosystem.h"
#include "Scanning/FileScanner.h"
#include "Support/AllRecords.h"
#include "Support/TemporaryTree.h"

#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tallyroom {

namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class DirectorySearchTest : public testing::Test {
protected:
    void SetUp() override { FileScanner::clearCache(); }
};

/// Paths below the tree, in the order of the list.
std::vector<std::string> below(const TemporaryTree& tree, const EntryList& entries)
{
    std::vector<std::string> paths;
    for (const Entry& entry : entries) {
        paths.push_back(entry.url.path().substr(tree.path().size() + 1));
    }
    return paths;
}

std::vector<std::string> found(const TemporaryTree& tree, FolderNames names, const std::string& root = {})
{
    return below(tree, FileScanner::findDirectories(std::move(names), tree.url(root)).get());
}

TEST_F(DirectorySearchTest, FindsFoldersByTheirWholeNameAndNothingInsideAMatch)
{
    const TemporaryTree tree{file("app/node_modules/a/node_modules/b", 90'000),
                             file("lib/deep/er/node_modules/x", 30'000),
                             file("same/node_modules/x", 30'000),
                             folder("empty/node_modules"),
                             file("files/node_modules", 50'000),
                             folder("links"),
                             link("links/node_modules", "../app/node_modules"),
                             link("links/app", "../app"),
                             folder("app/.git/node_modules"),
                             folder("app/.hg/node_modules"),
                             folder("app/dist/node_modules"),
                             folder("case/Node_modules"),
                             folder("case/node_modules2"),
                             folder("odd\n\xff/node_modules")};
    EXPECT_THAT(found(tree, {"node_modules"}),
                ElementsAre("app/node_modules", "lib/deep/er/node_modules", "same/node_modules",
                            "app/dist/node_modules", "empty/node_modules", "odd\n\xff/node_modules"));
    EXPECT_THAT(found(tree, {"node_modules", "dist"}, "app/../app/"),
                ElementsAre("app/node_modules", "app/dist"));
    EXPECT_THAT(found(tree, {"\xff", "odd\n\xff"}), ElementsAre("odd\n\xff"));
    EXPECT_THAT(found(tree, {".git", "node_modules"}, "app"),
                UnorderedElementsAre("app/node_modules", "app/.git", "app/dist/node_modules"))
        << "a name that is wanted is found before it is passed by";
    EXPECT_THAT(found(tree, {}), IsEmpty());

    const auto located = FileScanner::locateNodeModules(tree.url("app")).get();
    EXPECT_THAT(located, ElementsAre(tree.url("app/dist/node_modules"), tree.url("app/node_modules")));
}

TEST_F(DirectorySearchTest, ARootThatBearsTheNameIsTheOnlyMatchUnlessItIsALink)
{
    const TemporaryTree tree{file("node_modules/a/node_modules/b", 30'000), folder("l"), folder("f"),
                             link("l/node_modules", "../node_modules"), file("f/node_modules", 10)};
    const auto records = allRecords(FileScanner::findNodeModulesStream(tree.url("node_modules/")));
    ASSERT_EQ(records.size(), 2U);
    EXPECT_EQ(records[0], (ScanProgress{{}, 0, 1, true}));
    EXPECT_EQ(records[1].entries[0].url, tree.url("node_modules"));
    EXPECT_EQ(records[1].entries[0].sizeBytes, FileScanner::directorySize(tree.url("node_modules")));
    EXPECT_THAT(found(tree, {"node_modules"}, "l/node_modules"), ElementsAre("l/node_modules/a/node_modules"))
        << "what the link leads to is searched";
    EXPECT_THAT(found(tree, {"node_modules"}, "f/node_modules"), IsEmpty());
    EXPECT_THAT(FileScanner::locateNodeModules(tree.url("node_modules")).get(),
                ElementsAre(tree.url("node_modules/a/node_modules")));
}

TEST_F(DirectorySearchTest, TheStreamTellsEveryMatchThenEverySize)
{
    constexpr std::int64_t count = 60;
    TemporaryTree tree;
    for (int i = 0; i < count; ++i) {
        tree.add(file("p" + std::to_string(i % 7) + "/q" + std::to_string(i) + "/target/o", 3000 * i));
        tree.add(folder("p" + std::to_string(i % 7) + "/q" + std::to_string(i) + "/target")
                     .modifiedAt(1'000'000 + i));
    }
    const auto records = allRecords(FileScanner::findDirectoriesStream({"target"}, tree.url()));
    ASSERT_EQ(records.size(), 2U * count);
    for (std::int64_t i = 0; i < count; ++i) {
        EXPECT_EQ(records[static_cast<std::size_t>(i)], (ScanProgress{{}, 0, i + 1, true}));
        const ScanProgress& sized = records[static_cast<std::size_t>(count + i)];
        EXPECT_EQ(sized.completed, i + 1);
        EXPECT_EQ(sized.total, count);
        EXPECT_FALSE(sized.isDiscovering);
        EXPECT_EQ(sized.entries.size(), static_cast<std::size_t>(i) + 1);
        EXPECT_TRUE(std::ranges::is_sorted(sized.entries, std::greater{}, &Entry::sizeBytes));
    }
    for (const Entry& entry : records.back().entries) {
        EXPECT_EQ(entry.name, "target");
        EXPECT_TRUE(entry.isDirectory);
        EXPECT_EQ(entry.sizeBytes, FileScanner::directorySize(entry.url));
        EXPECT_GE(entry.modifiedAt, Timestamp{1'000'000s});
        EXPECT_LT(entry.modifiedAt, Timestamp{1'000'060s});
    }
    EXPECT_THAT(records.back().entries.toVector(),
                testing::UnorderedElementsAreArray(
                    FileScanner::findDirectories({"target"}, tree.url()).get().toVector()));
}

TEST_F(DirectorySearchTest, NoMatchGivesOneEmptyRecord)
{
    const TemporaryTree tree{file("a/b/c", 10)};
    for (const std::string root : {"", "a/b/c", "missing"}) {
        EXPECT_THAT(allRecords(FileScanner::findNodeModulesStream(tree.url(root))),
                    ElementsAre(ScanProgress{}));
    }
    EXPECT_THAT(allRecords(FileScanner::findDirectoriesStream({}, tree.url())), ElementsAre(ScanProgress{}));
    EXPECT_THAT(FileScanner::locateNodeModules(tree.url()).get(), IsEmpty());
}

TEST_F(DirectorySearchTest, AMatchThatWasMeasuredIsNotWalkedAgain)
{
    TemporaryTree tree{file("a/node_modules/x/y", 40'000), file("b/node_modules/x", 10'000)};
    const std::int64_t known = FileScanner::directorySize(tree.url("a/node_modules"));
    tree.add(file("a/node_modules/x/z", 500'000));
    const auto records = allRecords(FileScanner::findNodeModulesStream(tree.url()));
    ASSERT_EQ(records.size(), 4U);
    EXPECT_THAT(below(tree, records[2].entries), ElementsAre("a/node_modules"))
        << "what is known comes first";
    EXPECT_EQ(records.back().entries[0].sizeBytes, known);
    FileScanner::clearCache();
    EXPECT_GE(FileScanner::findNodeModules(tree.url()).get()[0].sizeBytes, known + 500'000);
}

TEST_F(DirectorySearchTest, ACancelledSearchDeliversNothingMore)
{
    TemporaryTree tree;
    for (int i = 0; i < 300; ++i) {
        tree.add(file("p" + std::to_string(i) + "/node_modules/a/b/c", 4096));
    }
    for (const std::size_t taken : {0U, 1U, 150U, 299U, 301U, 450U}) { // in both phases
        FileScanner::clearCache();
        auto stream = FileScanner::findNodeModulesStream(tree.url());
        for (std::size_t i = 0; i < taken; ++i) {
            ASSERT_TRUE(stream.next().has_value());
        }
        stream.cancel();
        const auto late = stream.takeArrived().records.size(); // sent before
        std::size_t later = 0;
        while (stream.next()) {
            ++later;
        }
        EXPECT_EQ(later, 0U) << "after " << taken + late << " records";
        // What a stopped sizing left behind is right.
        EXPECT_EQ(FileScanner::directorySize(tree.url("p7")), FileScanner::directorySize(tree.url("p8")));
        EXPECT_EQ(FileScanner::findNodeModules(tree.url()).get().size(), 300U);
    }
}

TEST_F(DirectorySearchTest, TwoSearchesAtOnceFindTheSame)
{
    TemporaryTree tree;
    for (int i = 0; i < 100; ++i) {
        tree.add(file("p" + std::to_string(i) + "/node_modules/a/f", 100 * i));
        tree.add(file("p" + std::to_string(i) + "/target/a/f", 100 * i));
    }
    const EntryList expected = FileScanner::findNodeModules(tree.url()).get();
    for (int round = 0; round < 5; ++round) {
        FileScanner::clearCache();
        auto first = FileScanner::findNodeModules(tree.url());
        auto both = FileScanner::findDirectories({"node_modules", "target"}, tree.url());
        auto second = FileScanner::findNodeModules(tree.url());
        EXPECT_EQ(first.get(), expected);
        EXPECT_EQ(second.get(), expected);
        EXPECT_EQ(both.get().size(), 200U);
    }
}

TEST(Ecosystem, AFolderBelongsToTheFirstThatMakesIt)
{
    EXPECT_EQ(Ecosystem::first("build"), Ecosystem::javascript);
    EXPECT_EQ(Ecosystem::first("DerivedData"), Ecosystem::xcode);
    EXPECT_EQ(Ecosystem::first("deriveddata"), std::nullopt);
    EXPECT_EQ(Ecosystem::first(""), std::nullopt) << "rows are not all of one length";
    EXPECT_THAT(Ecosystem::ruleNames({Ecosystem::python, Ecosystem::rust}),
                ElementsAre(".venv", "__pycache__", "target"));
    EXPECT_THAT(Ecosystem::ruleNames({}), IsEmpty());
    for (const Ecosystem ecosystem : Ecosystem::all) {
        EXPECT_EQ(Ecosystem::fromRawValue(ecosystem.rawValue()), ecosystem);
    }
}

TEST(AgeThreshold, ExactlyTheAgeIsNotOldAndNeitherIsWhatHasNoDate)
{
    const Timestamp now = std::chrono::sys_days{std::chrono::year{2024} / 3 / 1};
    for (const auto& [raw, days] : std::vector<std::pair<std::string, int>>{
             {"oneWeek", 7}, {"oneMonth", 30}, {"threeMonths", 90}, {"sixMonths", 180}, {"oneYear", 365}}) {
        const AgeThreshold threshold = AgeThreshold::fromRawValue(raw).value();
        const Timestamp limit = now - std::chrono::days{days};
        EXPECT_FALSE(threshold.isOld(limit, now)) << raw;
        EXPECT_TRUE(threshold.isOld(limit - 1ns, now)) << raw;
        EXPECT_FALSE(threshold.isOld(std::nullopt, now)) << raw;
    }
    EXPECT_TRUE(AgeThreshold{AgeThreshold::oneYear}.isOld(Timestamp::min(), now)) << "no overflow";
    EXPECT_FALSE(AgeThreshold::fromRawValue("1 mois").has_value());
}

} // namespace

} // namespace tallyroom
