#include "Scanning/FileScanner.h"

#include "Scanning/BoundedTopHeap.h"
#include "Scanning/ScanCache.h"
#include "Scanning/SizeCache.h"
#include "Support/AllRecords.h"
#include "Support/Interception.h"
#include "Support/ListWords.h"

#include <gmock/gmock.h>
#include <limits>
#include <map>
#include <random>

namespace tallyroom {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class FileScannerTest : public testing::Test {
protected:
    void SetUp() override { FileScanner::clearCache(); }
};

TEST_F(FileScannerTest, AFolderWeighsWhatIsInItAndNotWhatItsLinksPointTo)
{
    // A link whose text takes room of its own on most file systems.
    const TemporaryTree tree{file("docs/a.bin", 5000),
                             file("docs/deep/er/b.bin", 100'000),
                             link("docs/deep/far", chain("../docs", 90) + "/../big"),
                             sparseFile("docs/sparse", 1'000'000'000),
                             fifo("docs/pipe"),
                             file("big/c.bin", 1'000'000)};
    const auto onDisk = [&tree](const std::string& path) { return allocated(tree.path(path)); };
    const std::int64_t docs = onDisk("docs/a.bin") + onDisk("docs/deep/er/b.bin") + onDisk("docs/deep/far");
    EXPECT_EQ(FileScanner::directorySize(tree.url("docs")), docs);
    EXPECT_EQ(FileScanner::directorySize(tree.url("docs/a.bin")), onDisk("docs/a.bin"));
    EXPECT_EQ(FileScanner::directorySize(tree.url("docs/deep/far")), onDisk("docs/deep/far"));
    EXPECT_EQ(FileScanner::directorySize(tree.url("nothing here")), 0);
    EXPECT_THAT(sized(tree, FileScanner::directEntries(tree.url(), false).get()),
                ElementsAre("big " + std::to_string(onDisk("big/c.bin")), "docs " + std::to_string(docs)));
}

TEST_F(FileScannerTest, LinksAndSpecialFilesAreToldFromFiles)
{
    const TemporaryTree tree{folder("folder"),        file("file", 1), link("link", "folder"),
                             link("lost", "nowhere"), fifo("fifo"),    socket("socket")};
    using enum EntryForm;
    const std::map<std::string, EntryForm> wanted{
        {"folder", ordinary}, {"file", ordinary},        {"link", link},
        {"lost", link},       {"fifo", EntryForm::fifo}, {"socket", EntryForm::socket}};
    std::map<std::string, EntryForm> listed;
    for (const Entry& entry : FileScanner::directEntries(tree.url(), false).get()) {
        listed[entry.name] = entry.form;
    }
    EXPECT_EQ(listed, wanted);
    for (const Entry& entry : FileScanner::findLargestFiles(tree.url(), 10).get()) {
        EXPECT_EQ(entry.form, wanted.at(entry.name)) << entry.name;
    }
    const EntryList devices = FileScanner::directEntries(FileUrl{"/dev"}, false).get();
    const auto null = std::ranges::find(devices, "null", &Entry::name);
    EXPECT_TRUE(null != devices.end() && null->form == device);
    EXPECT_LE(sizeof(Entry), 112U) << "a listing of a million entries is kept whole";
}

TEST_F(FileScannerTest, ACachedListingIsGivenAgainUntilItIsRefreshedOrInvalidated)
{
    TemporaryTree tree{folder("a"), file("a/one", 4096)};
    const auto listed = [&tree](const std::string& path, bool useCache) {
        const auto records = allRecords(FileScanner::directEntriesStream(tree.url(path), useCache));
        return below(tree, records.back().entries);
    };
    const auto first = allRecords(FileScanner::directEntriesStream(tree.url(), true));
    tree.add({file("a/two", 8192), folder("b")});
    EXPECT_THAT(allRecords(FileScanner::directEntriesStream(tree.url("./a/.."), true)),
                ElementsAre(first.back()));
    EXPECT_EQ(FileScanner::directEntries(tree.url(), true).get(), first.back().entries);
    EXPECT_THAT(listed("", false), ElementsAre("a", "b")) << "refreshed";
    EXPECT_THAT(listed("", true), ElementsAre("a", "b")) << "and kept";
    tree.add(folder("c"));
    EXPECT_EQ(FileScanner::directEntries(tree.url(), false).get().size(), 3U);
    EXPECT_EQ(FileScanner::directEntries(tree.url(), true).get().size(), 3U);

    // The totals are still the known ones, under any spelling, until they are emptied.
    EXPECT_EQ(FileScanner::directEntries(tree.url(), false).get()[0].sizeBytes,
              first.back().entries[0].sizeBytes);
    EXPECT_EQ(FileScanner::directorySize(tree.url("b/.././a//")), first.back().entries[0].sizeBytes);
    FileScanner::invalidateCache(tree.url());
    const std::int64_t now = allocated(tree.path("a/one")) + allocated(tree.path("a/two"));
    EXPECT_EQ(FileScanner::directEntries(tree.url(), true).get()[0].sizeBytes, now);
}

TEST_F(FileScannerTest, ARefreshedFolderIsNewInAllListingsThatShowItAndTheOthersStay)
{
    TemporaryTree tree{file("a/b/c/f", 4096), file("other/f", 4096)};
    const auto size = [&tree](const char* path) {
        const EntryList entries = FileScanner::directEntries(tree.url(path), true).get();
        return entries.empty() ? -1 : entries[0].sizeBytes;
    };
    for (const char* const path : {"", "a", "a/b", "a/b/c", "other"}) {
        EXPECT_EQ(size(path), 4096) << path;
    }
    tree.add({file("a/b/c/f", 8192), file("other/f", 8192)});
    FileScanner::invalidateAround(tree.url("a/b"));
    for (const char* const path : {"", "a", "a/b", "a/b/c"}) {
        EXPECT_EQ(size(path), 8192) << path;
    }
    EXPECT_EQ(size("other"), 4096) << "nobody asked for it";
}

TEST_F(FileScannerTest, TheTotalOfAListedFolderHoldsWhatWasKnownBefore)
{
    TemporaryTree tree{file("list/known/f", 40'000), file("list/new/f", 8192), file("list/f", 4096)};
    const std::int64_t known = FileScanner::directorySize(tree.url("list/known"));
    tree.add(file("list/known/more", 4096)); // only another walk sees it
    static_cast<void>(FileScanner::directEntries(tree.url("list"), false).get());
    const std::int64_t all = known + allocated(tree.path("list/new/f")) + allocated(tree.path("list/f"));
    EXPECT_EQ(FileScanner::directEntries(tree.url(), false).get()[0].sizeBytes, all);
}

TEST_F(FileScannerTest, AnEmptyListingIsKeptByTheOneShotFormAlone)
{
    const TemporaryTree tree{folder("empty")};
    static_cast<void>(allRecords(FileScanner::directEntriesStream(tree.url("empty"), true)));
    EXPECT_EQ(ScanCache::shared().find(tree.url("empty")), std::nullopt);
    static_cast<void>(FileScanner::directEntries(tree.url("empty"), true).get());
    EXPECT_NE(ScanCache::shared().find(tree.url("empty")), std::nullopt);

    EXPECT_TRUE(FileScanner::directEntries(FileUrl{}, true).get().empty());
    EXPECT_EQ(ScanCache::shared().find(FileUrl{"/"}), std::nullopt) << "nowhere is not the root";
    EXPECT_EQ(SizeCache::shared().find(FileUrl{"/"}), std::nullopt);
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
    cache.store(url(3), {{Entry{}}}, cache.epoch());
    EXPECT_EQ(cache.find(url(3))->entries.size(), 1U) << "what was listed last";
}

TEST(Caches, WhatWasMeasuredBeforeAnInvalidationIsNotKeptAfterIt)
{
    SizeCache sizes;
    const auto place = sizes.place(FileUrl{"/a/b"});
    sizes.clear();
    const auto newPlace = sizes.place(FileUrl{"/x/y"});
    EXPECT_EQ(newPlace.record, place.record) << "numbers are given again";
    std::array<SizeCache::Child, 1> children{{{"c", {}, {}}}};
    sizes.lookUp(place, children);
    sizes.store(children[0].place, {5});
    sizes.store(place, {10});
    EXPECT_EQ(sizes.find(FileUrl{"/a/b"}), std::nullopt);
    EXPECT_EQ(sizes.find(FileUrl{"/x/y"}), std::nullopt);
    sizes.set({20}, FileUrl{"/a/b/"});
    EXPECT_EQ(sizes.find(FileUrl{"/a//b"})->bytes, 20);
    EXPECT_EQ(sizes.find(FileUrl{"/a"}), std::nullopt) << "an ancestor's total is not known by its child's";
    sizes.set({.bytes = 20, .unread = 3}, FileUrl{"/a/b"});
    sizes.set({.bytes = 20}, FileUrl{"/a/b"});
    EXPECT_EQ(sizes.find(FileUrl{"/a/b"})->unread, 0) << "readable by now";

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
        cache.set({i}, FileUrl{"/r/" + std::to_string(i % 100) + "/" + std::to_string(i)});
    }
    for (int i = 0; i < 20'000; ++i) {
        ASSERT_EQ(cache.find(FileUrl{"/r/" + std::to_string(i % 100) + "/" + std::to_string(i)})->bytes, i);
    }
    EXPECT_LT(cache.memory() / 20'000, 150U);
    EXPECT_EQ(cache.find(FileUrl{"/r/0/1"}), std::nullopt);
}

/// A map leaves out what these say is too small to be told: too little would hide it.
TEST(SizeCache, LargestSizesAreNeverTooSmallAndHardlyTooLarge)
{
    SizeCache cache;
    std::vector<std::int64_t> sizes{0, 1};
    for (int bit = 1; bit <= 53; ++bit) {
        for (const std::int64_t step : {-1, 0, 1}) {
            sizes.push_back((std::int64_t{1} << bit) + step);
        }
        sizes.push_back((std::int64_t{1} << bit) / 1000 * 1999);
    }
    for (const std::int64_t size : sizes) {
        cache.set({.bytes = size, .largestFile = size, .largestFolder = size}, FileUrl{"/r"});
        const auto known = cache.find(FileUrl{"/r"});
        ASSERT_TRUE(known);
        EXPECT_EQ(known->largestFolder, known->largestFile);
        EXPECT_GE(known->largestFile, size);
        EXPECT_LE(known->largestFile - size, size / 1000);
    }
    cache.set({.largestFile = std::numeric_limits<std::int64_t>::max()}, FileUrl{"/r"});
    EXPECT_GT(cache.find(FileUrl{"/r"})->largestFile, std::int64_t{1} << 61);
}

TEST(BoundedTopHeap, KeepsTheBestWhateverTheOrderOfTheOffers)
{
    std::vector<Entry> offered;
    for (int i = 0; i < 400; ++i) {
        // "a" comes before "a.", "a." before "a/f", and bytes compare as unsigned.
        const FileUrl url{std::array{"/a", "/a.", "/a/b", "/a\xff", "/"}[static_cast<std::size_t>(i % 5)]};
        const std::string name = "f" + std::to_string(i / 5);
        offered.push_back({url.appending(name), name, i % 13, false, {}});
    }
    std::vector<Entry> best = offered;
    std::ranges::sort(best, {}, [](const Entry& entry) {
        return std::pair{-entry.sizeBytes, entry.url.path()};
    });
    std::mt19937 random{4};
    for (const std::int64_t limit :
         std::vector<std::int64_t>{-1, 0, 1, 31, 399, 400, std::numeric_limits<std::int64_t>::max()}) {
        std::ranges::shuffle(offered, random);
        BoundedTopHeap single{limit};
        BoundedTopHeap batched{limit};
        for (const Entry& entry : offered) {
            const bool mayBeTaken = single.mayTake(entry.sizeBytes);
            EXPECT_TRUE(!single.offer(entry) || mayBeTaken) << "never too seldom";
            const std::vector<BoundedTopHeap::Candidate> files{{entry.name, entry.sizeBytes}};
            batched.offer(entry.url.parent(), files);
        }
        const auto kept = std::clamp<std::int64_t>(limit, 0, 400);
        const std::vector<Entry> expected(best.begin(), best.begin() + kept);
        EXPECT_EQ(single.sortedSnapshot().toVector(), expected) << limit;
        EXPECT_EQ(batched.sortedSnapshot().toVector(), expected) << limit;
    }
    BoundedTopHeap one{1};
    EXPECT_TRUE(one.offer(offered[0]));
    EXPECT_FALSE(one.offer(offered[0])) << "offered twice";
    EXPECT_FALSE(one.mayTake(offered[0].sizeBytes - 1)) << "nor need it be asked";
}

class DirectorySearchTest : public FileScannerTest {};

std::vector<std::string> found(const TemporaryTree& tree, FolderNames names, const std::string& root = {})
{
    return below(tree, FileScanner::findDirectories(std::move(names), tree.url(root)).get());
}

TEST_F(DirectorySearchTest, FindsTheNamesAskedForAndLocatesWithoutMeasuring)
{
    const TemporaryTree tree{folder("app/node_modules/a/node_modules"), folder("app/.git/node_modules"),
                             folder("app/dist/node_modules"), folder("odd\n\xff/node_modules")};
    EXPECT_THAT(found(tree, {".git", "node_modules"}, "app/../app/"),
                ElementsAre("app/.git", "app/dist/node_modules", "app/node_modules"));
    EXPECT_THAT(found(tree, {"\xff", "odd\n\xff"}), ElementsAre("odd\n\xff"));
    EXPECT_THAT(found(tree, {}), IsEmpty());
    EXPECT_THAT(allRecords(FileScanner::findDirectoriesStream({}, tree.url())), ElementsAre(ScanProgress{}));
    EXPECT_THAT(FileScanner::locateNodeModules(tree.url("app")).get(),
                ElementsAre(tree.url("app/dist/node_modules"), tree.url("app/node_modules")));
    EXPECT_THAT(FileScanner::locateNodeModules(tree.url("app/node_modules")).get(),
                ElementsAre(tree.url("app/node_modules/a/node_modules")));
}

TEST_F(DirectorySearchTest, ALinkThatTakesAFoldersPlaceIsNotFollowed)
{
    const TemporaryTree tree{file("p/file", 4096), folder("p/m"), file("mine/large", 100'000),
                             link("lure", "../mine")};
    using enum InterceptedCall::Kind;
    const auto swap = [&tree] { tree.exchange("p/m", "lure"); };
    {
        const auto intruder = Interception::at(statx, "m", swap); // found, and not yet measured
        const EntryList matches = FileScanner::findDirectories({"m"}, tree.url()).get();
        EXPECT_THAT(sized(tree, matches), ElementsAre("p/m 0"));
    }
    tree.exchange("p/m", "lure");
    FileScanner::clearCache();
    const auto intruder = Interception::at(statx, "file", swap); // listed, and not yet opened
    EXPECT_EQ(FileScanner::directorySize(tree.url("p")), allocated(tree.path("p/file")));
    EXPECT_EQ(tree.content("p/m"), "../mine");
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

} // namespace

} // namespace tallyroom
