#include "App/NavigatorScene.h"
#include "Deletion/DeletionRunner.h"
#include "Deletion/RemovedPlaces.h"
#include "Support/Cases.h"

#include <gmock/gmock.h>
#include <latch>

namespace tallyroom {

namespace {

using FileRemover::RemovalFailure;
using FileRemover::RemovalResult;
using testing::ElementsAre;

const FileUrl a{"/a"};
const FileUrl b{"/b"};

TEST(DeletionSupport, UndoingRanksTheListAndPutsEqualSizesLast)
{
    const EntryList entries{fileEntry("/small", 1), fileEntry("/first", 5), fileEntry("/large", 9)};
    const EntryList all =
        withRestored(entries, EntryList{fileEntry("/a", 5), fileEntry("/b", 7), fileEntry("/large", 9)});
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
    for (const auto& row : cases("what a removal covers")) {
        EXPECT_EQ(places.covers(fileEntry(row[0], 0)), row[1] == "yes") << row[0];
    }
    places.remove({folderEntry("/r/folder", 9)});
    EXPECT_FALSE(places.covers(fileEntry("/r/folder/deep/y", 0)));
    EXPECT_TRUE(places.covers(fileEntry("/r/file", 0)));
}

/// Listens for the life of `context`.
DeletionRunner::Listener listening(QObject& context, std::function<void(const RemovalOutcome&)> finished)
{
    return {
        .context = &context, .progressed = [](const RemovalProgress&) {}, .finished = std::move(finished)};
}

const std::vector<Entry> three{fileEntry("/a", 3), fileEntry("/b", 2), fileEntry("/c", 1)};

TEST(DeletionRunner, LeavingWaitsForTheItemInHandAndStartsNoOther)
{
    std::latch isInHand{1};
    std::latch mayGoOn{1};
    std::vector<FileUrl> done;
    QObject context;
    bool wasCalled = false;
    const auto remove = [&](std::span<const Entry> entries, bool, const FileRemover::BatchOptions& options) {
        for (const Entry& entry : entries) {
            if (options.stop.stop_requested()) {
                break;
            }
            // The item in hand gets on once the runner asks to stop, and not before.
            const std::stop_callback letGo{options.stop, [&] { mayGoOn.count_down(); }};
            isInHand.count_down();
            mayGoOn.wait();
            done.push_back(entry.url);
        }
        return RemovalResult{};
    };
    auto runner = std::make_unique<DeletionRunner>(RemovalOperations{remove, {}});
    ASSERT_TRUE(runner->remove(three, true, listening(context, [&](const auto&) { wasCalled = true; })));
    isInHand.wait();
    runner.reset();
    EXPECT_THAT(done, ElementsAre(a)) << "left half removed, or not stopped";
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
    ASSERT_TRUE(runner->remove(three, true, listening(context, [](const auto&) { FAIL(); })));
    runner.reset();
    mayAnswer->count_down();
    hasAnswered->wait();
}

TEST(DeletionRunner, SaysNothingToSomebodyWhoIsGone)
{
    auto context = std::make_unique<QObject>();
    bool wasCalled = false;
    DeletionRunner runner{{[](const auto&...) { return RemovalResult{}; }, {}}};
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
