#include "Kinds/FolderAnalyzer.h"
#include "Scanning/FileScanner.h"
#include "Support/AllRecords.h"
#include "Support/Isolation.h"
#include "Support/TemporaryTree.h"

#include <cerrno>
#include <future>
#include <gmock/gmock.h>

namespace tallyroom {

namespace {

TEST(SilentShare, CountsAsUnreadInEveryScanAndHoldsUpNothingBesideIt)
{
    TemporaryTree tree{file("a", 4096), file("in/b", 8192), folder("in/share"), folder("share")};
    const TemporaryMount inner = TemporaryMount::silent(tree.path("in/share"));
    const TemporaryMount silent = TemporaryMount::silent(tree.path("share"));
    SKIP_UNLESS_MOUNTED(silent);
    SKIP_UNLESS_MOUNTED(inner);
    FileScanner::clearCache();
    const UnreadPlace innerPlace{tree.url("in/share"), {ETIMEDOUT}};
    const UnreadPlace place{tree.url("share"), {ETIMEDOUT}};
    // All at once: each waits as long as a share is given.
    auto listing = FileScanner::directEntriesStream(tree.url(), false);
    auto ownListing = FileScanner::directEntriesStream(tree.url("share"), false);
    auto kinds = std::async([&tree] { return allRecords(FolderAnalyzer::stream(tree.url())).back(); });
    auto size = std::async([&tree] { return FileScanner::measure(tree.url("in")); });

    const auto first = listing.next();
    ASSERT_TRUE(first);
    EXPECT_THAT(first->entries, testing::ElementsAre(testing::Field(&Entry::name, "a"))) << "no row waits";
    const ScanProgress whole = allRecords(std::move(listing)).back();
    ASSERT_EQ(whole.entries.size(), 3U);
    EXPECT_EQ(whole.entries[0].sizeBytes, 8192);
    EXPECT_EQ(whole.entries[0].unread, 1);
    EXPECT_TRUE(whole.entries[2].isDirectory && whole.entries[2].has(EntryMark::unreadable));
    ASSERT_TRUE(whole.unreadPlaces);
    EXPECT_THAT(whole.unreadPlaces->places, testing::ElementsAre(innerPlace, place));
    EXPECT_EQ(allRecords(std::move(ownListing)).back().unread, SystemError{ETIMEDOUT});
    const FolderAnalyzer::Progress last = kinds.get();
    EXPECT_EQ(last.summary->totalBytes, 12'288);
    ASSERT_TRUE(last.unreadPlaces);
    EXPECT_THAT(last.unreadPlaces->places, testing::ElementsAre(innerPlace, place));
    EXPECT_EQ(size.get().unread, 1);
}

} // namespace

} // namespace tallyroom
