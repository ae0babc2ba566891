#include "Scanning/FileScanner.h"

#include "Concurrency/WorkerPool.h"
#include "FileSystem/FolderReader.h"
#include "Scanning/ScanCache.h"
#include "Scanning/SizeCache.h"
#include "Support/AllRecords.h"
#include "Support/Isolation.h"
#include "Support/TemporaryTree.h"

#include <algorithm>
#include <chrono>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace tallyroom {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class FileScannerTest : public testing::Test {
protected:
    void SetUp() override { FileScanner::clearCache(); }
};

/// What the kernel says of one item, asked without any of the code under test.
std::vector<std::string> names(const EntryList& entries)
{
    std::vector<std::string> result;
    std::ranges::transform(entries, std::back_inserter(result), &Entry::name);
    return result;
}

TEST_F(FileScannerTest, AFolderWeighsWhatIsInItAndNotWhatItsLinksPointTo)
{
    const TemporaryTree tree{folder("docs"),
                             file("docs/a.bin", 5000),
                             folder("docs/deep/er"),
                             file("docs/deep/er/b.bin", 100'000),
                             file(".hidden", 3000),
                             folder("big"),
                             file("big/c.bin", 1'000'000),
                             link("docs/to-big", "../big"),
                             fifo("docs/pipe"),
                             folder("empty")};
    const std::int64_t docs = allocated(tree.path("docs/a.bin")) +
                              allocated(tree.path("docs/deep/er/b.bin")) +
                              allocated(tree.path("docs/to-big"));
    EXPECT_EQ(FileScanner::directorySize(tree.url("docs")), docs);
    EXPECT_EQ(FileScanner::directorySize(tree.url("empty")), 0);
    EXPECT_EQ(FileScanner::directorySize(tree.url("docs/a.bin")), allocated(tree.path("docs/a.bin")));
    EXPECT_EQ(FileScanner::directorySize(tree.url("docs/to-big")), allocated(tree.path("docs/to-big")));
    EXPECT_EQ(FileScanner::directorySize(tree.url("nothing here")), 0);

    const EntryList entries = FileScanner::directEntries(tree.url(), false).get();
    EXPECT_THAT(names(entries), ElementsAre("big", "docs", ".hidden", "empty"));
    EXPECT_EQ(entries[1].sizeBytes, docs);
    EXPECT_TRUE(entries[1].isDirectory);
    EXPECT_EQ(entries[1].url, tree.url("docs"));
    ASSERT_TRUE(entries[1].modifiedAt.has_value());
    EXPECT_LT(std::chrono::system_clock::now() - *entries[1].modifiedAt, std::chrono::minutes{10});
}

TEST_F(FileScannerTest, ALinkToAFolderIsListedAsAnItemOfItsOwn)
{
    const TemporaryTree tree{folder("target"), file("target/big", 500'000), folder("list"),
                             link("list/shortcut", "../target")};
    const EntryList entries = FileScanner::directEntries(tree.url("list"), false).get();
    ASSERT_EQ(entries.size(), 1U);
    EXPECT_FALSE(entries[0].isDirectory);
    EXPECT_EQ(entries[0].sizeBytes, allocated(tree.path("list/shortcut")));
}

TEST_F(FileScannerTest, EveryRecordIsCompleteAndRankedAndTheLastOneIsTheWholeListing)
{
    TemporaryTree tree;
    for (int i = 0; i < 40; ++i) {
        const std::string name = "item" + std::to_string(i);
        if (i % 3 == 0) {
            tree.add(folder(name));
            tree.add(file(name + "/content", i * 5000));
        } else {
            tree.add(file(name, i * 1000));
        }
    }
    const auto records = allRecords(FileScanner::directEntriesStream(tree.url(), false));
    ASSERT_EQ(records.size(), 40U);
    for (std::size_t i = 0; i < records.size(); ++i) {
        EXPECT_EQ(records[i].completed, static_cast<std::int64_t>(i) + 1);
        EXPECT_EQ(records[i].total, 40);
        EXPECT_FALSE(records[i].isDiscovering);
        EXPECT_EQ(records[i].entries.size(), i + 1);
        EXPECT_TRUE(std::ranges::is_sorted(records[i].entries, std::greater{}, &Entry::sizeBytes));
    }
    const EntryList whole = FileScanner::directEntries(tree.url(), false).get();
    EXPECT_THAT(records.back().entries.toVector(), testing::UnorderedElementsAreArray(whole.toVector()));
}

TEST_F(FileScannerTest, AnEmptyAnUnlistableAndAMissingFolderGiveOneEmptyRecord)
{
    const TemporaryTree tree{folder("empty"), file("a file", 10)};
    for (const std::string name : {"empty", "a file", "missing"}) {
        const auto records = allRecords(FileScanner::directEntriesStream(tree.url(name), true));
        EXPECT_THAT(records, ElementsAre(ScanProgress{})) << name;
        EXPECT_EQ(ScanCache::shared().find(tree.url(name)), std::nullopt) << name << " must not be kept";
        EXPECT_THAT(FileScanner::directEntries(tree.url(name), true).get(), IsEmpty()) << name;
        EXPECT_NE(ScanCache::shared().find(tree.url(name)), std::nullopt) << "the one-shot form keeps it";
    }
}

TEST_F(FileScannerTest, ACachedListingIsGivenAgainUntilItIsInvalidated)
{
    TemporaryTree tree{folder("a"), file("a/one", 4096)};
    const auto first = allRecords(FileScanner::directEntriesStream(tree.url(), true));
    tree.add(file("a/two", 8192));
    const auto again = allRecords(FileScanner::directEntriesStream(tree.url("./a/.."), true));
    ASSERT_EQ(again.size(), 1U);
    EXPECT_EQ(again[0], first.back());

    // Without the listing cache the totals are still the known ones, until they are emptied.
    EXPECT_EQ(FileScanner::directEntries(tree.url(), false).get()[0].sizeBytes,
              first.back().entries[0].sizeBytes);
    FileScanner::invalidateCache(tree.url());
    const std::int64_t now = allocated(tree.path("a/one")) + allocated(tree.path("a/two"));
    EXPECT_EQ(FileScanner::directEntries(tree.url(), true).get()[0].sizeBytes, now);
}

TEST_F(FileScannerTest, TwoSpellingsOfAFolderShareOneTotal)
{
    TemporaryTree tree{folder("a/b"), file("a/b/f", 4096)};
    const std::int64_t total = FileScanner::directorySize(tree.url("a"));
    tree.add(file("a/b/g", 4096));
    EXPECT_EQ(FileScanner::directorySize(tree.url("a/./b/../")), total);
    EXPECT_EQ(FileScanner::directorySize(tree.url("a//b/")), total) << "folders below are known too";
}

TEST_F(FileScannerTest, ADroppedStreamStopsItsWorkersAndKeepsNothing)
{
    TemporaryTree tree;
    for (int i = 0; i < 200; ++i) {
        tree.add(folder("f" + std::to_string(i) + "/g/h"));
        tree.add(file("f" + std::to_string(i) + "/g/h/x", 4096));
    }
    for (int round = 0; round < 50; ++round) {
        FileScanner::clearCache();
        auto stream = FileScanner::directEntriesStream(tree.url(), false);
        for (int taken = 0; taken < round; ++taken) {
            ASSERT_TRUE(stream.next().has_value());
        }
        stream.cancel();
        std::size_t late = 0;
        while (auto record = stream.next()) {
            late = record->entries.size();
        }
        if (late < 200) {
            EXPECT_EQ(ScanCache::shared().find(tree.url()), std::nullopt);
        }
        // What a stopped walk left in the cache of totals must be right.
        EXPECT_EQ(FileScanner::directorySize(tree.url("f7")), allocated(tree.path("f7/g/h/x")));
        EXPECT_EQ(FileScanner::directorySize(tree.url()), 200 * allocated(tree.path("f7/g/h/x")));
    }
}

TEST_F(FileScannerTest, NamesThatAreNoTextAndPathsBeyondPathMaxAreMeasured)
{
    const std::string longName(255, 'n');
    TemporaryTree tree{file("line\nfeed", 5000), file("\xff\xfe", 5000), file("-rf", 5000),
                       file(longName, 5000)};
    std::string deep = "deep";
    for (int i = 0; i < 40; ++i) {
        deep += "/" + longName;
    }
    tree.add(folder(deep)); // some 10 000 bytes
    tree.add(file(deep + "/bottom", 100'000));
    const EntryList entries = FileScanner::directEntries(tree.url(), false).get();
    EXPECT_THAT(names(entries), UnorderedElementsAre("deep", "line\nfeed", "\xff\xfe", "-rf", longName));
    EXPECT_EQ(entries[0].name, "deep");
    EXPECT_GE(entries[0].sizeBytes, 100'000);
    // The bottom can be listed and measured by its own path.
    EXPECT_EQ(FileScanner::directEntries(tree.url(deep), false).get()[0].name, "bottom");
    FileScanner::clearCache();
    EXPECT_EQ(FileScanner::directorySize(tree.url(deep + "/bottom")), entries[0].sizeBytes);
}

TEST_F(FileScannerTest, ATreeOfTenThousandLevelsWithSiblingsIsMeasured)
{
    TemporaryTree tree;
    FileDescriptor level = std::move(*openFolder(tree.url(), FolderAccess::listing));
    for (int depth = 0; depth < 10'000; ++depth) {
        ASSERT_EQ(::mkdirat(level.get(), "d", 0755), 0);
        ASSERT_EQ(::mkdirat(level.get(), "sibling", 0755), 0);
        level = std::move(*openChildFolder(level.get(), "d"));
    }
    FileDescriptor bottom{::openat(level.get(), "f", O_CREAT | O_WRONLY | O_CLOEXEC, 0644)};
    ASSERT_EQ(::write(bottom.get(), "x", 1), 1);
    const auto blocks = fileAttributes(bottom.get())->allocatedBytes;
    EXPECT_EQ(FileScanner::directorySize(tree.url()), blocks);
}

TEST_F(FileScannerTest, ATreeThatChangesWhileItIsReadNeitherHangsNorCrashes)
{
    TemporaryTree tree{folder("stable"), file("stable/f", 4096)};
    std::jthread restless{[&tree](const std::stop_token& done) {
        for (int i = 0; !done.stop_requested(); ++i) {
            const std::string path = tree.path("moving" + std::to_string(i % 5));
            ::mkdir(path.c_str(), 0755);
            ::mkdir((path + "/in").c_str(), 0755);
            ::rmdir((path + "/in").c_str());
            ::symlink("/", (path + "/in").c_str()); // must never be entered
            ::unlink((path + "/in").c_str());
            ::rmdir(path.c_str());
        }
    }};
    for (int round = 0; round < 300; ++round) {
        FileScanner::clearCache();
        const EntryList entries = FileScanner::directEntries(tree.url(), false).get();
        ASSERT_FALSE(entries.empty());
        EXPECT_EQ(entries[0].name, "stable");
        EXPECT_EQ(entries[0].sizeBytes, allocated(tree.path("stable/f")));
    }
}

TEST_F(FileScannerTest, ALargeFolderIsSplitAndLosesNothing)
{
    TemporaryTree tree{folder("wide")};
    constexpr int count = 12'000; // several buffers of names
    const FileDescriptor wide = std::move(*openFolder(tree.url("wide"), FolderAccess::listing));
    for (int i = 0; i < count; ++i) {
        const std::string name = "file with a name of usual length " + std::to_string(i);
        ASSERT_EQ(::mknodat(wide.get(), name.c_str(), S_IFREG | 0644, 0), 0);
    }
    ASSERT_EQ(::truncate(tree.path("wide/file with a name of usual length 7777").c_str(), 1), 0);
    const auto records = allRecords(FileScanner::directEntriesStream(tree.url("wide"), false));
    ASSERT_EQ(records.size(), static_cast<std::size_t>(count));
    auto found = names(records.back().entries);
    std::ranges::sort(found);
    EXPECT_EQ(std::ranges::adjacent_find(found), found.end());
    // Equal sizes keep the order of the listing in the one-shot form: two calls agree.
    EXPECT_EQ(FileScanner::directEntries(tree.url("wide"), false).get(),
              FileScanner::directEntries(tree.url("wide"), false).get());
}

TEST(ScanCache, ForgetsTheFolderThatWasUsedLeastRecently)
{
    ScanCache cache;
    const auto url = [](int number) { return FileUrl{"/folder/" + std::to_string(number)}; };
    for (int number = 0; number < 48; ++number) {
        cache.store(url(number), {}, cache.epoch());
    }
    EXPECT_TRUE(cache.find(url(0)).has_value()); // now the most recent one
    cache.store(FileUrl{"/folder/x/../48/"}, {}, cache.epoch());
    EXPECT_TRUE(cache.find(url(0)).has_value());
    EXPECT_FALSE(cache.find(url(1)).has_value());
    EXPECT_TRUE(cache.find(url(48)).has_value());
    cache.remove(url(2));
    EXPECT_FALSE(cache.find(url(2)).has_value());
    EXPECT_TRUE(cache.find(url(3)).has_value());
}

TEST(Caches, WhatWasMeasuredBeforeAnInvalidationIsNotKeptAfterIt)
{
    SizeCache sizes;
    const auto place = sizes.place(FileUrl{"/a/b"});
    sizes.clear();
    std::array<SizeCache::Child, 1> children{{{"c", {}, {}}}};
    sizes.lookUp(place, children);
    sizes.store(children[0].place, 5);
    sizes.store(place, 10);
    EXPECT_EQ(sizes.find(FileUrl{"/a/b"}), std::nullopt);
    sizes.set(20, FileUrl{"/a/b/"});
    EXPECT_EQ(sizes.find(FileUrl{"/a//b"}), 20);
    EXPECT_EQ(sizes.find(FileUrl{"/a"}), std::nullopt) << "an ancestor's total is not known by its child's";

    ScanCache listings;
    const std::uint64_t before = listings.epoch();
    listings.remove(FileUrl{"/elsewhere"});
    listings.store(FileUrl{"/a"}, {}, before);
    EXPECT_FALSE(listings.find(FileUrl{"/a"}).has_value());
}

TEST(SizeCache, TellsManyFoldersApart)
{
    SizeCache cache;
    for (int i = 0; i < 20'000; ++i) {
        cache.set(i, FileUrl{"/r/" + std::to_string(i % 100) + "/" + std::to_string(i)});
    }
    for (int i = 0; i < 20'000; ++i) {
        ASSERT_EQ(cache.find(FileUrl{"/r/" + std::to_string(i % 100) + "/" + std::to_string(i)}), i);
    }
    EXPECT_LT(cache.memory() / 20'000, 150U);
    EXPECT_EQ(cache.find(FileUrl{"/r/0/1"}), std::nullopt);
}

TEST_F(FileScannerTest, AVolumeThatDoesNotAnswerKeepsNoOtherScanWaiting)
{
    const TemporaryTree tree{folder("silent"), file("local/a"), file("local/b"), file("local/c")};
    const auto volume = TemporaryMount::silent(tree.path("silent"));
    if (!volume.isMounted()) {
        GTEST_SKIP() << volume.refusal();
    }
    std::vector<FileScanner::ScanStream> hanging;
    for (unsigned scan = 0; scan < 2 * WorkerPool::shared().width(); ++scan) {
        hanging.push_back(FileScanner::findLargestFilesStream(tree.url("silent"), 10));
    }
    EXPECT_EQ(allRecords(FileScanner::directEntriesStream(tree.url("local"), false)).size(), 3U);
    hanging.clear(); // cancelled, and still in the kernel
    EXPECT_EQ(allRecords(FileScanner::directEntriesStream(tree.url("local"), false)).size(), 3U);
}

} // namespace

} // namespace tallyroom
