#include "Scanning/FileScanner.h"
#include "Support/AllRecords.h"
#include "Support/Interception.h"
#include "Support/TemporaryTree.h"

#include <future>
#include <gmock/gmock.h>
#include <map>
#include <thread>

namespace tallyroom {

namespace {

TEST(RunningFolders, TellWhatIsFoundSoFarInWhatHangsAndNothingTwice)
{
    FileScanner::clearCache();
    TemporaryTree tree{file("slow/known/a", 8192), file("slow/known/hangs", 4096), file("quick/file", 4096),
                       file("file", 4096)};
    for (int i = 0; i < 50; ++i) {
        tree.add(file("f" + std::to_string(i) + "/deep/file", 4096));
    }
    tree.addEmptyFiles("slow/known", std::string(230, 'n'), 900);   // several buffers of names
    tree.add(file("slow/beside", 12288).modifiedAt(4'000'000'000)); // newer than all others
    tree.add(fifo("slow/known/deep/pipe"));
    tree.add(folder("slow/known/empty"));
    EXPECT_EQ(FileScanner::directorySize(tree.url("quick")), 4096); // known before: never on show
    std::promise<void> gate;
    const std::shared_future<void> isOpen = gate.get_future().share();
    const auto hanging = Interception::at(InterceptedCall::Kind::statx, "hangs", [isOpen] { isOpen.wait(); });
    auto stream = FileScanner::directEntriesStream(tree.url(), false);
    const std::shared_ptr<const RunningFolders> running = stream.running;
    std::vector<ScanProgress> records;
    while (records.size() < 52) {
        records.push_back(*stream.next());
    }
    std::vector<Entry> left = running->after(52);
    ASSERT_EQ(left.size(), 1U);
    EXPECT_EQ(left[0].url, tree.url("slow"));
    while (left.at(0).sizeBytes < 12288) { // until what lies beside the file that hangs is counted
        std::this_thread::yield();
        left = running->after(52);
    }
    EXPECT_LT(left[0].sizeBytes, 12288 + 8192 + 4096);
    EXPECT_TRUE(left[0].isDirectory && left[0].identity.isKnown());
    const SharedFolderContents contents = stream.contents;
    using Content = FolderContents::Content;
    const Content soFar = contents->find("slow").value_or(Content{});
    EXPECT_EQ(soFar.newest, 4'000'000'000);
    EXPECT_TRUE(soFar.files >= 1 && soFar.files < 904) << soFar.files;
    gate.set_value();
    for (auto record = stream.next(); record; record = stream.next()) {
        records.push_back(std::move(*record));
    }
    ASSERT_EQ(records.size(), 53U);
    // All of it: what was met after the wait, what was known before, and what a listing remembers.
    for (const auto& listing : {contents, FileScanner::directEntriesStream(tree.url(), true).contents}) {
        EXPECT_EQ(listing->find("slow"), (Content{904, 4'000'000'000}));
        EXPECT_EQ(listing->find("quick").value_or(Content{}).files, 1);
        EXPECT_FALSE(listing->find("file"));
    }
    for (const ScanProgress& record : records) {
        std::map<FileUrl, int> seen;
        for (const Entry& entry : record.entries) {
            ++seen[entry.url];
        }
        for (const Entry& folder : running->after(record.completed)) {
            ++seen[folder.url];
        }
        seen.erase(tree.url("file")); // what is no folder comes when it comes, and so does what is known
        seen.erase(tree.url("quick"));
        EXPECT_EQ(seen.size(), 51U);
        EXPECT_TRUE(std::ranges::all_of(seen, [](const auto& one) { return one.second == 1; }));
    }
}

TEST(RunningFolders, NoMoreAreToldThanAWindowCanUse)
{
    FileScanner::clearCache();
    TemporaryTree tree;
    for (std::size_t i = 0; i < RunningFolders::limit + 20; ++i) {
        tree.add(folder("f" + std::to_string(i)));
    }
    auto stream = FileScanner::directEntriesStream(tree.url(), false);
    const auto running = stream.running;
    EXPECT_EQ(allRecords(std::move(stream)).size(), RunningFolders::limit + 20);
    EXPECT_EQ(running->after(0).size(), RunningFolders::limit);
    EXPECT_TRUE(running->after(static_cast<std::int64_t>(RunningFolders::limit) + 20).empty());
}

} // namespace

} // namespace tallyroom
