#include "Concurrency/WorkerPool.h"
#include "Kinds/FolderAnalyzer.h"
#include "Scanning/FileScanner.h"
#include "Support/AllRecords.h"
#include "Support/Interception.h"
#include "Support/ListWords.h"
#include "Support/TemporaryTree.h"

#include <functional>
#include <gmock/gmock.h>
#include <latch>
#include <mutex>
#include <set>
#include <span>
#include <sys/stat.h>
#include <thread>

namespace tallyroom {

namespace {

using testing::Each;
using testing::ElementsAre;
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

TEST(ScanRecords, OfAFlatFolderOnASlowDiskComeWhileManyWorkersLook)
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

TEST(ScanRecords, TheLargestFilesAreToldByTheClock)
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

TEST(ScanRecords, DatesFarOffAndBlockCountsThatLieAreTakenForTheNearestThatCanBe)
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

TEST(ScanRecords, TheRecordsOfAListingAndOfASearchGrowByOne)
{
    TemporaryTree tree;
    for (int i = 0; i < 200; ++i) {
        tree.add(file("f" + std::to_string(i) + "/m/deep/er", 4096 * (i % 10)));
    }
    const auto expectsToGrow = [](std::span<const ScanProgress> records) {
        for (std::size_t i = 0; i < records.size(); ++i) {
            EXPECT_EQ(records[i].entries.size(), i + 1);
            EXPECT_EQ(records[i].completed, static_cast<std::int64_t>(i) + 1);
            EXPECT_EQ(records[i].total, static_cast<std::int64_t>(records.size()));
            EXPECT_FALSE(records[i].isDiscovering);
            EXPECT_TRUE(std::ranges::is_sorted(records[i].entries, std::greater{}, &Entry::sizeBytes));
        }
    };
    const auto listing = allRecords(FileScanner::directEntriesStream(tree.url(), false));
    ASSERT_EQ(listing.size(), 200U);
    expectsToGrow(listing);

    // Of several matches in one folder each is told too.
    tree.add({folder("f0/n"), folder("f0/o"), folder("f1/n")});
    const auto search = allRecords(FileScanner::findDirectoriesStream({"m", "n", "o"}, tree.url()));
    ASSERT_EQ(search.size(), 406U);
    for (std::int64_t i = 0; i < 203; ++i) {
        EXPECT_EQ(search[static_cast<std::size_t>(i)], (ScanProgress{{}, 0, i + 1, true}));
    }
    expectsToGrow(std::span{search}.subspan(203));
}

TEST(ScanRecords, ARankingIsToldNowAndThenAndABreakdownEveryFourThousandFiles)
{
    TemporaryTree tree;
    tree.addEmptyFiles("wide", "w", 9000); // passes several multiples at once
    for (int i = 0; i < 100; ++i) {
        tree.addEmptyFiles("small" + std::to_string(i), "s", 10); // many pass one together
    }
    const auto start = std::chrono::steady_clock::now();
    const auto rankings = allRecords(FileScanner::findLargestFilesStream(tree.url(), 5));
    const auto intervals = (std::chrono::steady_clock::now() - start) / std::chrono::milliseconds{120};
    EXPECT_LE(static_cast<std::int64_t>(rankings.size()), intervals + 2) << "the first, the last";
    EXPECT_TRUE(std::ranges::is_sorted(rankings, {}, &ScanProgress::completed));
    EXPECT_EQ(rankings.back().total, 10'000);

    const auto breakdown = allRecords(FolderAnalyzer::stream(tree.url()));
    std::vector<std::int64_t> counts;
    std::ranges::transform(breakdown, std::back_inserter(counts), &FolderAnalyzer::Progress::scanned);
    EXPECT_THAT(counts, ElementsAre(4096, 8192, 10'000));
}

TEST(FolderAnalyzer, AStoppedAnalysisGivesWhatItHad)
{
    TemporaryTree tree;
    tree.addEmptyFiles("some", "file", 100);
    std::stop_source stop;
    EXPECT_EQ(FolderAnalyzer::summarize(tree.url(), stop.get_token()).get().totalFiles, 100);
    stop.request_stop();
    EXPECT_EQ(FolderAnalyzer::summarize(tree.url(), stop.get_token()).get(), FolderSummary{});
}

} // namespace

} // namespace tallyroom
