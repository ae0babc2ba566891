#include "Concurrency/WorkerPool.h"
#include "Scanning/FileScanner.h"
#include "Support/AllRecords.h"
#include "Support/Interception.h"
#include "Support/TemporaryTree.h"

#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <latch>
#include <mutex>
#include <set>
#include <sys/stat.h>
#include <thread>

namespace tallyroom {

namespace {

using testing::Each;
using testing::Field;
using testing::Optional;

/// For its life something happens at each look at a file, before the answer counts.
Interception atEachLook(std::function<void(struct statx& answer)> action)
{
    return Interception{[action = std::move(action)](const InterceptedCall& call) {
        action(*call.told);
        return 0;
    }};
}

TEST(SlowDisk, AFlatFolderIsSharedAndToldAsItGoes)
{
    constexpr int count = 800; // in one buffer of names
    TemporaryTree tree;
    tree.addEmptyFiles("flat", "", count);
    using Start = FileScanner::ScanStream (*)(const FileUrl&);
    for (const Start start :
         {Start{[](const FileUrl& url) { return FileScanner::directEntriesStream(url, false); }},
          Start{[](const FileUrl& url) { return FileScanner::findLargestFilesStream(url, count); }}}) {
        std::mutex mutex;
        std::set<std::thread::id> workers;
        int looks = 0;
        const auto slowness = atEachLook([&](struct statx&) {
            std::this_thread::sleep_for(std::chrono::milliseconds{2});
            const std::scoped_lock lock{mutex};
            workers.insert(std::this_thread::get_id());
            ++looks;
        });
        auto stream = start(tree.url("flat"));
        int looksBefore = count;
        ScanProgress last;
        while (auto record = stream.next()) {
            last = *std::move(record);
            const std::scoped_lock lock{mutex};
            looksBefore = last.completed > 0 ? std::min(looksBefore, looks) : count;
        }
        EXPECT_EQ(last.completed, count);
        EXPECT_EQ(last.entries.size(), std::size_t{count});
        EXPECT_LT(looksBefore, count) << "files were shown before all were looked at";
        EXPECT_GE(workers.size(), WorkerPool::shared().width() / 2);
    }
}

TEST(SlowDisk, TheLargestFilesAreToldByTheClock)
{
    const TemporaryTree tree{file("1"), file("2"), file("3")};
    std::latch mayAnswer{1};
    const auto slowness = atEachLook([&](struct statx&) { mayAnswer.wait(); });
    auto stream = FileScanner::findLargestFilesStream(tree.url(), 3);
    for (int record = 0; record < 3; ++record) {
        EXPECT_EQ(stream.next(), (ScanProgress{{}, 0, 0, true})); // hangs when only files make a record
    }
    mayAnswer.count_down();
    EXPECT_EQ(allRecords(std::move(stream)).back().completed, 3);
}

TEST(OddDisk, DatesFarOffAndBlockCountsThatLieAreTakenForTheNearestThatCanBe)
{
    const TemporaryTree tree{file("1", "12345"), file("2", "12345")};
    for (const auto& [year, expected] : {std::pair{2300, Timestamp::max()}, {1500, Timestamp::min()}}) {
        const std::chrono::sys_days day{std::chrono::year{year} / 7 / 1};
        const auto lies = atEachLook([seconds = std::chrono::sys_seconds{day}](struct statx& answer) {
            answer.stx_mtime.tv_sec = seconds.time_since_epoch().count();
            answer.stx_blocks = ~std::uint64_t{0} / 512;
        });
        EXPECT_THAT(
            FileScanner::directEntries(tree.url(), false).get(),
            Each(testing::AllOf(Field(&Entry::modifiedAt, Optional(expected)), Field(&Entry::sizeBytes, 5))));
    }
}

} // namespace

} // namespace tallyroom
