#include "App/NavigatorScene.h"
#include "Deletion/DeletionRunner.h"
#include "Deletion/RemovedPlaces.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <latch>
#include <thread>

namespace tallyroom {

namespace {

using FileRemover::RemovalFailure;
using FileRemover::RemovalResult;
using testing::ElementsAre;

const FileUrl a{"/a"};
const FileUrl b{"/b"};
const FileUrl c{"/c"};

TEST(DeletionSupport, AskingNamesTheAmountInFrench)
{
    const std::vector<Entry> entries{fileEntry("/b", 2), fileEntry("/a", 3)};
    EXPECT_EQ(PendingDeletion::many({}).label, QStringLiteral("0 élément"));
    EXPECT_EQ(PendingDeletion::many({entries.front()}).label, QStringLiteral("1 élément"));
    const PendingDeletion pending = PendingDeletion::many(entries);
    EXPECT_EQ(pending.label, QStringLiteral("2 éléments"));
    EXPECT_EQ(pending.size, 5);
    EXPECT_THAT(pending.urls, ElementsAre(b, a));
    EXPECT_NE(pending.id, PendingDeletion::many(entries).id);
}

TEST(DeletionSupport, ReportsWhatWasRemovedAndWhatFailed)
{
    struct Case {
        RemovalResult result;
        bool permanently;
        QString message;
    };

    const RemovalFailure failure{c, "refused"};
    const std::vector<Case> cases{
        {{{a, b}, {}, {}}, false, QStringLiteral("2 élément(s) · 2,5 Ko mis à la corbeille.")},
        {{{a}, {}, {}}, true, QStringLiteral("1 élément(s) · 2,5 Ko supprimé(s) définitivement.")},
        {{{a}, {failure}, {}}, false, QStringLiteral("1 mis à la corbeille, 1 en échec.")},
        {{{}, {failure, failure}, {}}, true, QStringLiteral("0 supprimé(s) définitivement, 2 en échec.")},
    };
    for (const Case& one : cases) {
        EXPECT_EQ(removalMessage(one.result, 2'500, one.permanently), one.message);
    }
}

TEST(DeletionSupport, UndoingRanksTheListAndPutsEqualSizesLast)
{
    const EntryList entries{fileEntry("/small", 1), fileEntry("/first", 5), fileEntry("/large", 9)};
    const EntryList all =
        withRestored(entries, {fileEntry("/a", 5), fileEntry("/b", 7), fileEntry("/large", 9)});
    EXPECT_THAT(all.toVector(),
                ElementsAre(fileEntry("/large", 9), fileEntry("/b", 7), fileEntry("/first", 5),
                            fileEntry("/a", 5), fileEntry("/small", 1)));
    EXPECT_EQ(restoreMessage({{a, b}, {}, {}}),
              QStringLiteral("Suppression annulée · 2 élément(s) restauré(s)."));
    EXPECT_EQ(restoreMessage({{b}, {{a, "occupied"}}, {}}),
              QStringLiteral("Restauration partielle : 1 en échec."));
}

TEST(DeletionSupport, AFolderTakesAlongWhatLiesBelowItAndNotItsNeighbours)
{
    RemovedPlaces places{{folderEntry("/r/folder", 9), fileEntry("/r/file", 1)}};
    const std::vector<std::pair<const char*, bool>> cases{
        {"/r/folder", true},     {"/r/folder/deep/x", true}, {"/r/folder/deep/y", true},
        {"/r/folder2/x", false}, {"/r/file", true},          {"/r/file/x", false},
        {"/r", false},           {"/r/other", false},        {"/folder/x", false},
    };
    for (const auto& [path, isCovered] : cases) {
        EXPECT_EQ(places.covers(FileUrl{path}), isCovered) << path;
    }
    places.remove({folderEntry("/r/folder", 9)});
    EXPECT_FALSE(places.covers(FileUrl{"/r/folder/deep/y"}));
    EXPECT_TRUE(places.covers(FileUrl{"/r/file"}));
}

/// Removes what it is told, each item once `mayGoOn`.
struct SlowDisk {
    RemovalOperations operations()
    {
        return {[this](std::span<const Entry> entries, bool, const FileRemover::BatchOptions& options) {
                    RemovalResult result;
                    for (const Entry& entry : entries) {
                        if (options.stop.stop_requested()) {
                            break;
                        }
                        begun.push_back(entry.url);
                        isInHand.count_down();
                        mayGoOn.wait();
                        result.removed.push_back(entry.url);
                        done.push_back(entry.url);
                    }
                    return result;
                },
                {}};
    }

    std::latch isInHand{1};
    std::latch mayGoOn{1};
    std::vector<FileUrl> begun;
    std::vector<FileUrl> done;
};

const std::vector<Entry> three{fileEntry("/a", 3), fileEntry("/b", 2), fileEntry("/c", 1)};

TEST(DeletionRunner, LeavingWaitsForTheItemInHandAndStartsNoOther)
{
    SlowDisk disk;
    QObject context;
    bool wasCalled = false;
    auto runner = std::make_unique<DeletionRunner>(disk.operations());
    ASSERT_TRUE(runner->remove({fileEntry("/a", 1), fileEntry("/a", 1), fileEntry("/a", 1)}, true,
                               {.context = &context,
                                .progressed = [](const RemovalProgress&) {},
                                .finished = [&](const RemovalOutcome&) { wasCalled = true; }}));
    disk.isInHand.wait();
    // The runner asks its worker to stop before it waits for it; only then the item in hand gets on.
    std::jthread letGo{[&] { disk.mayGoOn.count_down(); }};
    runner.reset();
    EXPECT_EQ(disk.begun, disk.done) << "an item was left half removed";
    EXPECT_FALSE(wasCalled);
}

TEST(DeletionRunner, LeavingDoesNotWaitForWhatNeverAnswers)
{
    auto mayAnswer = std::make_shared<std::latch>(1);
    auto hasAnswered = std::make_shared<std::latch>(1);
    QObject context;
    auto runner = std::make_unique<DeletionRunner>(
        RemovalOperations{[=](std::span<const Entry>, bool, const FileRemover::BatchOptions&) {
                              mayAnswer->wait();
                              hasAnswered->count_down();
                              return RemovalResult{};
                          },
                          {}});
    ASSERT_TRUE(runner->remove({fileEntry("/a", 1)}, true,
                               {.context = &context,
                                .progressed = [](const RemovalProgress&) {},
                                .finished = [](const RemovalOutcome&) { FAIL() << "told to nobody"; }}));
    runner.reset();
    mayAnswer->count_down();
    hasAnswered->wait();
}

TEST(DeletionRunner, RefusesASecondBatchAndReportsTheFirstOnTheMainThread)
{
    SlowDisk disk;
    disk.mayGoOn.count_down();
    QObject context;
    std::optional<RemovalOutcome> reported;
    std::vector<Entry> told;
    std::thread::id thread;
    DeletionRunner runner{disk.operations()};
    QObject::connect(&runner, &DeletionRunner::diskChanged, &context, [&](const DiskChange& change) {
        EXPECT_FALSE(reported) << "the lists are to follow before the report is made";
        told = change.gone;
    });
    const DeletionRunner::Listener listener{.context = &context,
                                            .progressed = [](const RemovalProgress&) {},
                                            .finished =
                                                [&](const RemovalOutcome& outcome) {
                                                    reported = outcome;
                                                    thread = std::this_thread::get_id();
                                                }};
    ASSERT_TRUE(runner.remove(three, false, listener));
    EXPECT_FALSE(runner.remove(three, false, listener));
    EXPECT_FALSE(runner.restore({}, listener));
    ASSERT_TRUE(waitUntil(&runner, &DeletionRunner::isRunningChanged, [&] { return !runner.isRunning(); }));
    ASSERT_TRUE(reported);
    EXPECT_EQ(reported->result, (RemovalResult{{a, b, c}, {}, {}}));
    EXPECT_EQ(reported->done, three);
    EXPECT_EQ(told, three);
    EXPECT_EQ(thread, std::this_thread::get_id());
}

TEST(DeletionRunner, StoppingReportsWhatWentAndLeavesTheRest)
{
    SlowDisk disk;
    QObject context;
    std::optional<RemovalOutcome> reported;
    std::vector<bool> stopping;
    DeletionRunner runner{disk.operations()};
    ASSERT_TRUE(runner.remove(
        three, true,
        {.context = &context,
         .progressed = [&](const RemovalProgress& progress) { stopping.push_back(progress.isStopping); },
         .finished = [&](const RemovalOutcome& outcome) { reported = outcome; }}));
    disk.isInHand.wait();
    runner.stop();
    runner.stop();
    EXPECT_THAT(stopping, ElementsAre(true));
    disk.mayGoOn.count_down();
    ASSERT_TRUE(waitUntil(&runner, &DeletionRunner::isRunningChanged, [&] { return !runner.isRunning(); }));
    ASSERT_TRUE(reported);
    EXPECT_THAT(reported->done, ElementsAre(fileEntry("/a", 3)));
    EXPECT_EQ(reported->notBegun, 2U);
    EXPECT_EQ(disk.begun, std::vector{a});
}

TEST(DeletionRunner, SaysNothingToSomebodyWhoIsGone)
{
    SlowDisk disk;
    disk.mayGoOn.count_down();
    auto context = std::make_unique<QObject>();
    bool wasCalled = false;
    DeletionRunner runner{disk.operations()};
    ASSERT_TRUE(runner.remove(three, false,
                              {.context = context.get(),
                               .progressed = [&](const RemovalProgress&) { wasCalled = true; },
                               .finished = [&](const RemovalOutcome&) { wasCalled = true; }}));
    context.reset();
    ASSERT_TRUE(waitUntil(&runner, &DeletionRunner::isRunningChanged, [&] { return !runner.isRunning(); }));
    EXPECT_FALSE(wasCalled);
}

} // namespace

} // namespace tallyroom
