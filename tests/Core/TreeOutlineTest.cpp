#include "Scanning/TreeOutline.h"

#include "FileSystem/ScanScope.h"
#include "Scanning/FileScanner.h"
#include "Scanning/SizeCache.h"
#include "Support/AllRecords.h"
#include "Support/Cases.h"
#include "Support/Interception.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <numeric>
#include <sstream>

namespace tallyroom {

namespace {

using testing::ElementsAre;
using TreeOutline::Unknown;
using Lines = std::vector<std::string>;

/// Whether the nodes hang together and no byte is lost or told twice.
void expectSound(const Outline& outline)
{
    std::uint32_t next = 1;
    for (std::uint32_t i = 0; i < outline.nodes.size(); ++i) {
        const Outline::Node& node = outline.nodes[i];
        const auto children = std::span{outline.nodes}.subspan(node.firstChild, node.childCount);
        if (!children.empty()) {
            EXPECT_EQ(std::exchange(next, next + node.childCount), node.firstChild);
        }
        EXPECT_TRUE(std::ranges::all_of(children, [i](const auto& child) { return child.parent == i; }));
        EXPECT_TRUE(std::ranges::is_sorted(children, [](const auto& left, const auto& right) {
            return std::tuple{-left.entry.sizeBytes, left.entry.name} <
                   std::tuple{-right.entry.sizeBytes, right.entry.name};
        }));
        const std::int64_t told =
            std::accumulate(children.begin(), children.end(), std::int64_t{0},
                            [](std::int64_t sum, const auto& child) { return sum + child.entry.sizeBytes; });
        EXPECT_GE(node.restBytes, 0);
        EXPECT_EQ(node.isExpanded ? told + node.restBytes : node.entry.sizeBytes, node.entry.sizeBytes);
    }
    EXPECT_EQ(next, outline.nodes.size());
}

/// In pages of 4 KiB: "a/b 12", "?" for what is pending, "+2 3" for a rest of two items, "…" for a folder
/// whose children are not told.
Lines linesOf(const Outline& outline, const TemporaryTree& tree)
{
    expectSound(outline);
    Lines lines;
    for (const Outline::Node& node : outline.nodes) {
        const std::string path = node.entry.url.path().substr(tree.path().size());
        lines.push_back(
            (path.empty() ? "." : path.substr(1)) + " " + std::to_string(node.entry.sizeBytes / 4096) +
            (node.isPending ? "?" : "") + (node.entry.isDirectory && !node.isExpanded ? "…" : "") +
            (node.restCount > 0
                 ? " +" + std::to_string(node.restCount) + " " + std::to_string(node.restBytes / 4096)
                 : ""));
    }
    return lines;
}

/// The last record of a reading.
Lines outlineOf(const TemporaryTree& tree, const TreeOutline::Detail& detail, bool isComplete = true)
{
    const auto records = allRecords(TreeOutline::read(tree.url(), detail));
    for (const auto& record : records) {
        EXPECT_EQ(record.isComplete, isComplete && &record == &records.back());
        expectSound(*record.outline);
    }
    return linesOf(*records.back().outline, tree);
}

class TreeOutlineTest : public testing::Test {
protected:
    void SetUp() override
    {
        FileScanner::clearCache();
        addCases(tree, "the tree of an outline");
        ASSERT_EQ(allocated(tree.path("big/film")), 40 * 4096);
    }

    TemporaryTree tree;
};

TEST_F(TreeOutlineTest, TheRestAndThePartsAreTheWholeHoweverMuchIsTold)
{
    for (const auto& row : cases("outlines")) {
        TreeOutline::Detail detail{.leastShare = std::stod(row[0])};
        if (!row[1].empty()) {
            detail.mostNodes = std::stoul(row[1]);
        }
        Lines expected;
        std::istringstream lines{row[2]};
        for (std::string line; std::getline(lines >> std::ws, line, ',');) {
            expected.push_back(line);
        }
        EXPECT_EQ(outlineOf(tree, detail), expected) << row[0] << " " << row[1];
    }
}

TEST_F(TreeOutlineTest, WhatIsExcludedCountsForNothingThoughItWasMeasuredBefore)
{
    EXPECT_EQ(FileScanner::directorySize(tree.url()), 88 * 4096);
    ScanScope::use({{}, {tree.url("big/deep")}, false});
    FileScanner::clearCache();
    const auto records = allRecords(TreeOutline::read(tree.url(), {.leastShare = 0.01}));
    ScanScope::use({});
    const Outline& outline = *records.back().outline;
    EXPECT_THAT(linesOf(outline, tree), ElementsAre(". 66 +1 0", "big 40 +1 0", "equal 20", "small 5",
                                                    "least 1", "big/film 40", "small/a 3", "small/b 2"));
    EXPECT_TRUE(outline.nodes[0].entry.unread == 1 && outline.nodes[1].entry.has(EntryMark::excluded));
}

TEST_F(TreeOutlineTest, WhatSomebodyElseMeasuresIsPendingAndNotMeasuredAgain)
{
    const TreeOutline::Detail detail{.leastShare = 0.01, .unknown = Unknown::pending};
    EXPECT_THAT(outlineOf(tree, detail, false), testing::Contains(". 21?"));
    EXPECT_EQ(FileScanner::directorySize(tree.url("big/deep")), 22 * 4096);
    EXPECT_THAT(outlineOf(tree, detail, false),
                ElementsAre(". 83? +2 0", "big 62?", "equal 20", "least 1", "big/film 40", "big/deep 22",
                            "big/deep/photo 20", "big/deep/list 1", "big/deep/note 1"));
    EXPECT_FALSE(SizeCache::shared().find(tree.url()));
    EXPECT_FALSE(SizeCache::shared().find(tree.url("small")));
    const Lines whole = outlineOf(tree, {});
    EXPECT_EQ(SizeCache::shared().find(tree.url())->bytes, 88 * 4096);
    EXPECT_EQ(outlineOf(tree, detail), whole);
}

TEST_F(TreeOutlineTest, TheDiskThatChangedSinceItWasMeasuredIsToldAsItIs)
{
    EXPECT_EQ(FileScanner::directorySize(tree.url()), 88 * 4096);
    tree.remove("equal");
    tree.add({file("new/folder/file", 10 * 4096), file("big/more", 4096)});
    // A folder that goes while its parent is being read.
    const auto vanishing = Interception::at(InterceptedCall::Kind::statx, "deep", [this] {
        std::filesystem::rename(tree.path("big/deep"), tree.path("none/deep"));
    });
    EXPECT_THAT(outlineOf(tree, {.leastShare = 2.0 / 88}),
                ElementsAre(". 57 +2 1", "big 41 +1 1", "new 10", "small 5", "big/film 40", "new/folder 10",
                            "small/a 3", "small/b 2", "new/folder/file 10"));
}

} // namespace

} // namespace tallyroom
