#include "Scanning/BoundedTopHeap.h"
#include "Scanning/FileScanner.h"
#include "Support/TemporaryTree.h"

#include <algorithm>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <sys/stat.h>
#include <thread>

namespace tallyroom {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

Entry fileEntry(const std::string& path, std::int64_t size)
{
    const FileUrl url{path};
    return {url, std::string{url.lastPathComponent()}, size, false, {}};
}

/// Paths below the tree, in the order of the list.
std::vector<std::string> below(const TemporaryTree& tree, const EntryList& entries)
{
    std::vector<std::string> paths;
    for (const Entry& entry : entries) {
        paths.push_back(entry.url.path().substr(tree.path().size() + 1));
    }
    return paths;
}

TEST(BoundedTopHeap, KeepsTheBestWhateverTheOrderOfTheOffers)
{
    std::vector<Entry> offered;
    for (int i = 0; i < 400; ++i) {
        offered.push_back(fileEntry("/t/" + std::to_string(i % 7) + "/f" + std::to_string(i), i % 13));
    }
    std::vector<Entry> ranked = offered;
    std::ranges::sort(ranked, {}, [](const Entry& entry) {
        return std::pair{-entry.sizeBytes, entry.url.path()};
    });
    std::mt19937 random{4};
    for (const std::size_t limit : {1U, 2U, 31U, 32U, 399U, 400U, 500U}) {
        std::ranges::shuffle(offered, random);
        BoundedTopHeap single{static_cast<std::int64_t>(limit)};
        BoundedTopHeap batched{static_cast<std::int64_t>(limit)};
        for (const Entry& entry : offered) {
            EXPECT_TRUE(single.mayTake(entry.sizeBytes) || !single.offer(entry)) << "never too seldom";
            single.offer(entry);
            const std::vector<BoundedTopHeap::Candidate> files{{entry.name, entry.sizeBytes}};
            batched.offer(entry.url.parent(), files);
        }
        const std::vector<Entry> best(
            ranked.begin(), ranked.begin() + static_cast<std::ptrdiff_t>(std::min(limit, ranked.size())));
        EXPECT_EQ(batched.sortedSnapshot().toVector(), best) << limit;
    }
}

TEST(BoundedTopHeap, LetsThePathDecideBetweenEqualSizes)
{
    BoundedTopHeap heap{2};
    EXPECT_TRUE(heap.offer(fileEntry("/m", 9)));
    EXPECT_TRUE(heap.offer(fileEntry("/k/x", 5)));
    EXPECT_FALSE(heap.offer(fileEntry("/k/x", 5))) << "offered twice";
    EXPECT_FALSE(heap.offer(fileEntry("/k/y", 5)));
    EXPECT_FALSE(heap.offer(fileEntry("/k/xx", 5)));
    EXPECT_FALSE(heap.offer(fileEntry("/k\xff", 5))) << "bytes compare as unsigned";
    EXPECT_TRUE(heap.offer(fileEntry("/k/w", 5)));
    EXPECT_TRUE(heap.offer(fileEntry("/k.", 5))) << "'.' comes before '/'";

    // The same decisions when folder and name are compared in two pieces.
    const std::vector<BoundedTopHeap::Candidate> names{{"y", 5}, {"xx", 5}};
    heap.offer(FileUrl{"/k"}, names);
    EXPECT_EQ(heap.sortedSnapshot()[1].url.path(), "/k.");
    const std::vector<BoundedTopHeap::Candidate> early{{"a", 5}};
    heap.offer(FileUrl{"/"}, early);
    EXPECT_EQ(heap.sortedSnapshot()[1].url.path(), "/a");
    const std::vector<BoundedTopHeap::Candidate> longer{{"a", 5}};
    heap.offer(FileUrl{"/a"}, longer);
    EXPECT_EQ(heap.sortedSnapshot()[1].url.path(), "/a") << "a path comes before what lies below it";
}

TEST(BoundedTopHeap, TakesNothingWithoutRoomAndAnyLimitIsAllowed)
{
    for (const std::int64_t limit :
         {std::int64_t{0}, std::int64_t{-1}, std::numeric_limits<std::int64_t>::min()}) {
        BoundedTopHeap heap{limit};
        EXPECT_FALSE(heap.offer(fileEntry("/x", std::numeric_limits<std::int64_t>::max())));
        EXPECT_THAT(heap.sortedSnapshot(), IsEmpty());
    }
    BoundedTopHeap heap{std::numeric_limits<std::int64_t>::max()};
    EXPECT_TRUE(heap.offer(fileEntry("/x", 0)));
}

TEST(LargestFiles, RanksFilesAndPassesByLinksAndVersionControl)
{
    const TemporaryTree tree{file("b/tie", 40'000),
                             file("a/tie", 40'000),
                             file("a.tie", 40'000),
                             file("big", 90'000),
                             link("to-big", "big"),
                             link("to-a", "a"),
                             file(".git/pack", 9'000'000),
                             file("a/.hg/x", 9'000'000),
                             file("a/b/.svn/x", 9'000'000),
                             file("a/.github/ci", 8000),
                             file("b/.git", 60'000),
                             sparseFile("sparse", 1'000'000'000),
                             file("odd\nname\xff", 70'000),
                             fifo("pipe"),
                             socket("socket")};
    const std::vector<std::string> all{"big",   "odd\nname\xff", "b/.git", "a.tie",  "a/tie",
                                       "b/tie", "a/.github/ci",  "pipe",   "socket", "sparse"};
    const std::vector<std::string> four(all.begin(), all.begin() + 4);
    const EntryList found = FileScanner::findLargestFiles(tree.url(), 100).get();
    EXPECT_EQ(below(tree, found), all);
    EXPECT_EQ(found[1].name, "odd\nname\xff");
    EXPECT_EQ(found[9].sizeBytes, 0) << "space used, not the length";
    EXPECT_TRUE(std::ranges::none_of(found, &Entry::isDirectory));
    EXPECT_TRUE(std::ranges::none_of(found, [](const Entry& entry) { return entry.modifiedAt.has_value(); }));
    EXPECT_EQ(below(tree, FileScanner::findLargestFiles(tree.url("a/./../"), 4).get()), four);
    EXPECT_THAT(FileScanner::findLargestFiles(tree.url(), 0).get(), IsEmpty());
    EXPECT_THAT(FileScanner::findLargestFiles(tree.url(), -5).get(), IsEmpty());
}

TEST(LargestFiles, TheFolderAskedForIsEnteredWhateverItIs)
{
    const TemporaryTree tree{file("repo/.git/pack", 9000), link("shortcut", "repo/.git"),
                             file("alone", 9000)};
    const auto count = [&tree](const std::string& root) {
        return FileScanner::findLargestFiles(tree.url(root), 10).get().size();
    };
    EXPECT_EQ(count("repo/.git"), 1U) << "only folders below it are passed by";
    EXPECT_EQ(count("shortcut"), 1U);
    EXPECT_EQ(count("alone"), 0U);
    EXPECT_EQ(count("missing"), 0U);
}

TEST(LargestFiles, TheStreamShowsRankingsSoFarAndEndsWithTheWholeOne)
{
    TemporaryTree tree{folder("empty")};
    for (int i = 0; i < 300; ++i) {
        tree.add(file("f" + std::to_string(i % 50) + "/g" + std::to_string(i), 100 * i));
    }
    auto stream = FileScanner::findLargestFilesStream(tree.url(), 20);
    ScanProgress last;
    std::int64_t seen = 0;
    bool isOver = false;
    while (auto record = stream.next()) {
        EXPECT_FALSE(isOver) << "nothing comes after the final record";
        isOver = !record->isDiscovering;
        EXPECT_GE(record->completed, seen);
        EXPECT_EQ(record->completed, record->total);
        EXPECT_TRUE(std::ranges::is_sorted(record->entries, std::greater{}, &Entry::sizeBytes));
        seen = record->completed;
        last = std::move(*record);
    }
    EXPECT_TRUE(isOver);
    EXPECT_EQ(last.total, 300);
    EXPECT_EQ(last.entries, FileScanner::findLargestFiles(tree.url(), 20).get());

    auto empty = FileScanner::findLargestFilesStream(tree.url("empty"), 20);
    std::vector<ScanProgress> records;
    while (auto record = empty.next()) {
        records.push_back(std::move(*record));
    }
    ASSERT_FALSE(records.empty());
    EXPECT_EQ(records.back(), ScanProgress{});
}

TEST(LargestFiles, ACancelledStreamEndsWithoutAFinalRecord)
{
    for (int round = 0; round < 10; ++round) {
        auto stream = FileScanner::findLargestFilesStream(FileUrl{"/"}, 50);
        ASSERT_TRUE(stream.next().has_value());
        stream.cancel();
        while (auto record = stream.next()) {
            EXPECT_TRUE(record->isDiscovering);
        }
    }
}

TEST(LargestFiles, OneFolderThatHoldsEverythingIsSharedAndCounted)
{
    TemporaryTree tree{folder("wide")};
    const std::string longName(230, 'n');
    constexpr int count = 10'000; // more buffers of names than may wait at a time
    const FileDescriptor wide{::open(tree.path("wide").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)};
    for (int i = 0; i < count; ++i) {
        const std::string name = longName + std::to_string(i);
        ASSERT_EQ(::mknodat(wide.get(), name.c_str(), S_IFREG | 0644, 0), 0);
    }
    tree.add(file("wide/the one", 4096));
    auto stream = FileScanner::findLargestFilesStream(tree.url(), 3);
    ScanProgress last;
    while (auto record = stream.next()) {
        last = std::move(*record);
    }
    EXPECT_EQ(last.total, count + 1);
    const std::string first = "wide/" + longName;
    EXPECT_THAT(below(tree, last.entries), ElementsAre("wide/the one", first + "0", first + "1"));
}

TEST(LargestFiles, TwoScansAtOnceDoNotMix)
{
    TemporaryTree tree;
    for (int i = 0; i < 200; ++i) {
        tree.add(file("one/" + std::to_string(i % 20) + "/f" + std::to_string(i), 50 * i));
        tree.add(file("two/" + std::to_string(i % 20) + "/f" + std::to_string(i), 70 * i));
    }
    const EntryList one = FileScanner::findLargestFiles(tree.url("one"), 15).get();
    const EntryList two = FileScanner::findLargestFiles(tree.url("two"), 25).get();
    for (int round = 0; round < 10; ++round) {
        auto first = FileScanner::findLargestFiles(tree.url("one"), 15);
        auto second = FileScanner::findLargestFiles(tree.url("two"), 25);
        EXPECT_EQ(first.get(), one);
        EXPECT_EQ(second.get(), two);
    }
}

} // namespace

} // namespace tallyroom
