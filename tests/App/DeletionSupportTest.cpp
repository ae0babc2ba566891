#include "Deletion/DeletionSupport.h"

#include "App/NavigatorScene.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <latch>
#include <thread>

namespace tallyroom {

namespace {

using FileRemover::RemovalFailure;
using FileRemover::RemovalResult;
using FileRemover::TrashedItem;
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

TEST(DeletionSupport, WhatFailedStaysListedAndIsNotUndone)
{
    const EntryList entries{fileEntry("/c", 1), fileEntry("/a", 3), fileEntry("/b", 2)};
    const std::vector<Entry> targets = deletionTargets(entries, {a, b, FileUrl{"/unlisted"}});
    EXPECT_THAT(targets, ElementsAre(fileEntry("/a", 3), fileEntry("/b", 2)));
    const TrashedItem trashed{a, FileUrl{"/trash/a"}};
    const RemovalResult result{{a}, {{b, "refused"}}, {trashed}};
    const DeletionOutcome outcome = applyDeletion(result, targets, entries, false);
    EXPECT_THAT(outcome.entries.toVector(), ElementsAre(fileEntry("/c", 1), fileEntry("/b", 2)));
    EXPECT_EQ(outcome.undoable, (UndoableDeletion{{fileEntry("/a", 3)}, {trashed}}));
}

TEST(DeletionSupport, UndoingRanksTheListAndPutsEqualSizesLast)
{
    const EntryList entries{fileEntry("/small", 1), fileEntry("/first", 5), fileEntry("/large", 9)};
    const UndoableDeletion undoable{{fileEntry("/a", 5), fileEntry("/b", 7)}, {}};
    const RestoreOutcome whole = applyRestore({{a, b}, {}, {}}, undoable, entries);
    EXPECT_THAT(whole.entries.toVector(),
                ElementsAre(fileEntry("/large", 9), fileEntry("/b", 7), fileEntry("/first", 5),
                            fileEntry("/a", 5), fileEntry("/small", 1)));
    EXPECT_EQ(whole.message, QStringLiteral("Suppression annulée · 2 élément(s) restauré(s)."));
    const RestoreOutcome partial = applyRestore({{b}, {{a, "occupied"}}, {}}, undoable, EntryList{});
    EXPECT_THAT(partial.entries.toVector(), ElementsAre(fileEntry("/b", 7)));
    EXPECT_EQ(partial.message, QStringLiteral("Restauration partielle : 1 en échec."));
}

TEST(DeletionRunner, LeavingWaitsForTheItemInHandAndStartsNoOther)
{
    std::latch isInHand{1};
    std::latch mayGoOn{1};
    std::vector<FileUrl> begun;
    std::vector<FileUrl> done;
    const auto remove = [&](const FileUrl& url, bool) {
        begun.push_back(url);
        isInHand.count_down();
        mayGoOn.wait();
        done.push_back(url);
        return RemovalResult{{url}, {}, {}};
    };
    QObject context;
    bool wasCalled = false;
    auto runner = std::make_unique<DeletionRunner>(RemovalOperations{remove, {}});
    ASSERT_TRUE(runner->remove({a, b, c}, true,
                               {.context = &context,
                                .progressed = [](const RemovalProgress&) {},
                                .finished = [&](const RemovalResult&) { wasCalled = true; }}));
    isInHand.wait();
    // The runner asks its worker to stop before it waits for it; only then the item in hand gets on.
    std::jthread letGo{[&] { mayGoOn.count_down(); }};
    runner.reset();
    EXPECT_EQ(begun, done) << "an item was left half removed";
    EXPECT_FALSE(wasCalled);
}

TEST(DeletionRunner, RefusesASecondBatchAndReportsTheFirstOnTheMainThread)
{
    QObject context;
    std::optional<RemovalResult> reported;
    RemovalProgress last;
    std::thread::id thread;
    DeletionRunner runner{{[](const FileUrl& url, bool) { return RemovalResult{{url}, {}, {}}; }, {}}};
    const DeletionRunner::Listener listener{.context = &context,
                                            .progressed = [&](const RemovalProgress& p) { last = p; },
                                            .finished =
                                                [&](const RemovalResult& result) {
                                                    reported = result;
                                                    thread = std::this_thread::get_id();
                                                }};
    ASSERT_TRUE(runner.remove({a, b}, false, listener));
    EXPECT_FALSE(runner.remove({c}, false, listener));
    EXPECT_FALSE(runner.restore({}, listener));
    ASSERT_TRUE(waitUntil(&runner, &DeletionRunner::isRunningChanged, [&] { return !runner.isRunning(); }));
    EXPECT_EQ(reported, (RemovalResult{{a, b}, {}, {}}));
    EXPECT_EQ(thread, std::this_thread::get_id());
    EXPECT_LE(last.completed, 2U);
}

TEST(DeletionRunner, SaysNothingToSomebodyWhoIsGone)
{
    auto context = std::make_unique<QObject>();
    bool wasCalled = false;
    DeletionRunner runner{{[](const FileUrl& url, bool) { return RemovalResult{{url}, {}, {}}; }, {}}};
    ASSERT_TRUE(runner.remove({a}, false,
                              {.context = context.get(),
                               .progressed = [&](const RemovalProgress&) { wasCalled = true; },
                               .finished = [&](const RemovalResult&) { wasCalled = true; }}));
    context.reset();
    ASSERT_TRUE(waitUntil(&runner, &DeletionRunner::isRunningChanged, [&] { return !runner.isRunning(); }));
    EXPECT_FALSE(wasCalled);
}

} // namespace

} // namespace tallyroom
