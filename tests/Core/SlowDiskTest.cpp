#include "Concurrency/WorkerPool.h"
#include "Scanning/FileScanner.h"
#include "Support/AllRecords.h"
#include "Support/TemporaryTree.h"

#include <fcntl.h>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <latch>
#include <mutex>
#include <set>
#include <sys/stat.h>
#include <thread>

namespace {

/// What happens at each look at a file, before its answer counts. Set while no scan runs.
std::function<void(struct statx& answer)> atEachLook; // NOLINT(*-avoid-non-const-global-variables)

} // namespace

// The linker puts the second one in the place of the first.
extern "C" {
// NOLINTBEGIN(bugprone-reserved-identifier)
int __real_statx(int folder, const char* name, int flags, unsigned mask, struct statx* answer);

int __wrap_statx(int folder, const char* name, int flags, unsigned mask, struct statx* answer)
{
    const int result = __real_statx(folder, name, flags, mask, answer);
    if (result == 0 && atEachLook) {
        atEachLook(*answer);
    }
    return result;
}

// NOLINTEND(bugprone-reserved-identifier)
}

namespace tallyroom {

namespace {

using testing::Each;
using testing::Field;
using testing::Optional;

/// A disk that does something of its own at each look at a file.
class SlowDisk : public testing::Test {
protected:
    void TearDown() override { atEachLook = nullptr; }

    void addFiles(int count)
    {
        const FileDescriptor folder{::open(m_tree.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)};
        for (int number = 0; number < count; ++number) {
            ASSERT_EQ(::mknodat(folder.get(), std::to_string(number).c_str(), S_IFREG | 0644, 0), 0);
        }
    }

    TemporaryTree m_tree;
};

TEST_F(SlowDisk, AFlatFolderIsSharedAndToldAsItGoes)
{
    constexpr int count = 800; // in one buffer of names
    addFiles(count);
    using Start = FileScanner::ScanStream (*)(const FileUrl&);
    for (const Start start :
         {Start{[](const FileUrl& url) { return FileScanner::directEntriesStream(url, false); }},
          Start{[](const FileUrl& url) { return FileScanner::findLargestFilesStream(url, count); }}}) {
        std::mutex mutex;
        std::set<std::thread::id> workers;
        int looks = 0;
        atEachLook = [&](struct statx&) {
            std::this_thread::sleep_for(std::chrono::milliseconds{2});
            const std::scoped_lock lock{mutex};
            workers.insert(std::this_thread::get_id());
            ++looks;
        };
        auto stream = start(m_tree.url());
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

TEST_F(SlowDisk, TheLargestFilesAreToldByTheClock)
{
    addFiles(3);
    std::latch mayAnswer{1};
    atEachLook = [&](struct statx&) { mayAnswer.wait(); };
    auto stream = FileScanner::findLargestFilesStream(m_tree.url(), 3);
    for (int record = 0; record < 3; ++record) {
        EXPECT_EQ(stream.next(), (ScanProgress{{}, 0, 0, true})); // hangs when only files make a record
    }
    mayAnswer.count_down();
    EXPECT_EQ(allRecords(std::move(stream)).back().completed, 3);
}

TEST_F(SlowDisk, DatesFarOffAreTheFirstOrLastOnesThatCanBeTold)
{
    addFiles(2);
    for (const auto& [year, expected] : {std::pair{2300, Timestamp::max()}, {1500, Timestamp::min()}}) {
        const std::chrono::sys_days day{std::chrono::year{year} / 7 / 1};
        atEachLook = [seconds = std::chrono::sys_seconds{day}](struct statx& answer) {
            answer.stx_mtime.tv_sec = seconds.time_since_epoch().count();
        };
        EXPECT_THAT(FileScanner::directEntries(m_tree.url(), false).get(),
                    Each(Field(&Entry::modifiedAt, Optional(expected))));
    }
}

} // namespace

} // namespace tallyroom
