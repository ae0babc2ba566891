#include "Duplicates/DuplicateFinder.h"
#include "Kinds/FolderAnalyzer.h"
#include "Scanning/FileScanner.h"
#include "Support/AllRecords.h"
#include "Support/Cases.h"
#include "Support/Interception.h"
#include "Support/Isolation.h"
#include "Support/ListWords.h"

#include <cerrno>
#include <gmock/gmock.h>
#include <map>
#include <sys/stat.h>

namespace tallyroom {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Lines = std::vector<std::string>;

/// "path code", those of items after an "item ".
Lines told(const TemporaryTree& tree, const SharedUnreadPlaces& unread)
{
    Lines lines;
    if (unread != nullptr) {
        EXPECT_EQ(unread->count, std::ssize(unread->places));
        for (const UnreadPlace& place : unread->places) {
            const std::string path = place.url == tree.url() ? "." : below(tree, std::vector{place})[0];
            lines.push_back((place.isFolder ? "" : "item ") + path + " " + std::to_string(place.error.code));
        }
    }
    return lines;
}

/// "path unread" of those entries that have something unread, with a "!" for those that are so themselves.
Lines counted(const TemporaryTree& tree, const EntryList& entries)
{
    Lines lines;
    for (const Entry& entry : entries) {
        if (entry.unread > 0) {
            lines.push_back(below(tree, std::vector{entry})[0] + " " + std::to_string(entry.unread) +
                            (entry.has(EntryMark::unreadable) ? "!" : ""));
        }
    }
    std::ranges::sort(lines);
    return lines;
}

const std::string denied = " " + std::to_string(EACCES);
const Lines refused{"a/b/shut" + denied, "item a/names/one" + denied,      "item a/names/two" + denied,
                    "a/shut" + denied,   "m/node_modules/x/shut" + denied, "z" + denied};

class ListedFolderTest : public testing::Test {
protected:
    void SetUp() override { FileScanner::clearCache(); }

    /// Checks a tree with closed folders, and one whose files can be named and not examined.
    static void asPerson(void (*check)(const TemporaryTree& tree))
    {
        TemporaryTree tree;
        addCases(tree, "folders closed to others");
        ::chmod(tree.path().c_str(), 0755);
        const int outcome = asUnprivilegedUser([&] {
            check(tree);
            return 0;
        });
        if (outcome == -1) {
            GTEST_SKIP() << "privileges cannot be given up here";
        }
    }
};

TEST_F(ListedFolderTest, AClosedFolderIsCountedInEachFolderAboveItFromTheCacheToo)
{
    asPerson([](const TemporaryTree& tree) {
        const Lines rows{"a 4", "m 1", "z 1!"};
        const auto last = [&tree](const std::string& path, bool useCache) {
            return allRecords(FileScanner::directEntriesStream(tree.url(path), useCache)).back();
        };
        for (const bool useCache : {false, true, false}) { // walked, listed before, summed before
            const ScanProgress record = last("", useCache);
            EXPECT_EQ(counted(tree, record.entries), rows);
            EXPECT_EQ(told(tree, record.unreadPlaces), refused);
        }
        const ScanProgress inner = last("a", true);
        EXPECT_THAT(counted(tree, inner.entries), ElementsAre("a/b 1", "a/names 2", "a/shut 1!"));
        EXPECT_EQ(told(tree, inner.unreadPlaces), Lines(refused.begin(), refused.begin() + 4));
        EXPECT_THAT(told(tree, last("z", true).unreadPlaces), ElementsAre("z" + denied));
        EXPECT_THAT(told(tree, last("whole", true).unreadPlaces), IsEmpty());
        EXPECT_EQ(counted(tree, FileScanner::directEntries(tree.url(), false).get()), rows);
        const FolderSize size = FileScanner::measure(tree.url("a"));
        EXPECT_EQ(size.unread, 4);
        EXPECT_TRUE(size.hasUnreadItems);
    });
}

TEST_F(ListedFolderTest, EverySearchTellsWhatItPassedBy)
{
    asPerson([](const TemporaryTree& tree) {
        const auto last = [](auto stream) { return allRecords(std::move(stream)).back(); };
        EXPECT_EQ(told(tree, last(FileScanner::findLargestFilesStream(tree.url(), 3)).unreadPlaces), refused);
        EXPECT_EQ(told(tree, last(FolderAnalyzer::stream(tree.url())).unreadPlaces), refused);
        EXPECT_EQ(told(tree, last(DuplicateFinder::stream(tree.url(), 1)).unreadPlaces), refused);
        const ScanProgress found = last(FileScanner::findNodeModulesStream(tree.url()));
        EXPECT_THAT(counted(tree, found.entries), ElementsAre("m/node_modules 1"));
        EXPECT_THAT(told(tree, found.unreadPlaces),
                    testing::ElementsAre(refused[0], refused[3], refused[4], refused[5]))
            << "files are not looked at";
        const ScanProgress none = last(FileScanner::findNodeModulesStream(tree.url("z")));
        EXPECT_THAT(told(tree, none.unreadPlaces), ElementsAre("z" + denied));
        EXPECT_EQ(none.unread, SystemError{EACCES});
    });
}

TEST_F(ListedFolderTest, WhatIsGoneWasNotRefused)
{
    const TemporaryTree tree{file("a/going", 4096), file("a/stays", 4096), file("a/broken", 4096)};
    const Interception watch{[](const InterceptedCall& call) {
        const std::string name = call.kind == InterceptedCall::Kind::statx ? call.name : "";
        return name == "going" ? ENOENT : name == "broken" ? EIO : 0;
    }};
    const ScanProgress record = allRecords(FileScanner::directEntriesStream(tree.url(), false)).back();
    EXPECT_THAT(counted(tree, record.entries), ElementsAre("a 1"));
    EXPECT_THAT(told(tree, record.unreadPlaces), ElementsAre("item a/broken " + std::to_string(EIO)));
    EXPECT_EQ(record.entries[0].sizeBytes, allocated(tree.path("a/stays")));
}

TEST_F(ListedFolderTest, TheListIsBoundedAndTheCountIsNot)
{
    UnreadLedger ledger;
    constexpr int many = 5000;
    for (int number = many; number > 0; --number) {
        ledger.add({FileUrl{"/" + std::to_string(10'000 + number)}, {EACCES}});
    }
    const SharedUnreadPlaces places = ledger.places();
    EXPECT_EQ(places->count, many);
    ASSERT_EQ(places->places.size(), UnreadPlaces::limit);
    EXPECT_EQ(places->places.front().url, FileUrl{"/10001"});
    EXPECT_EQ(places->places.back().url, FileUrl{"/11000"});
}

TEST_F(ListedFolderTest, WhatFurtherNamesAddIsTheSameFromTheCache)
{
    TemporaryTree tree;
    addCases(tree, "further names");
    const std::int64_t one = allocated(tree.path("a/one"));
    const std::int64_t x = allocated(tree.path("a/in/x"));
    const std::int64_t three = allocated(tree.path("d/three"));
    const std::map<std::string, std::int64_t> truth{
        {"", one + 3 * x + 2 * three}, {"a", one}, {"b", x}, {"d", three}, {"f/g", 0}};
    const std::map<FileUrl, std::int64_t> children{{tree.url("a"), one},
                                                   {tree.url("b"), 2 * x},
                                                   {tree.url("c"), x},
                                                   {tree.url("d"), three},
                                                   {tree.url("f"), three}};
    const std::map<FileUrl, std::int64_t> ownNames{
        {tree.url("a"), one}, {tree.url("b"), x}, {tree.url("d"), three}};
    for (const auto& [path, bytes] : truth) {
        for (const int reading : {0, 1, 2}) { // walked, listed before, summed before
            const auto last =
                allRecords(FileScanner::directEntriesStream(tree.url(path), reading == 1)).back();
            const CountedAgain again = last.countedAgain == nullptr ? CountedAgain{} : *last.countedAgain;
            EXPECT_EQ(again.bytes, bytes) << path;
            if (path.empty()) { // a folder's sum tells what its own names add
                EXPECT_EQ(again.children, reading < 2 ? children : ownNames);
            }
        }
    }
}

} // namespace

} // namespace tallyroom
