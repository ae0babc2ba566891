#include "App/DashboardScene.h"
#include "Deletion/EmptyTrashConfirmation.h"
#include "Support/CacheTree.h"
#include "Support/Isolation.h"
#include "Support/TemporaryTree.h"
#include "Tools/BuildCaches/BuildCaches.h"
#include "Tools/Dashboard/RecoveryPanel.h"

#include <QPushButton>
#include <QSignalSpy>

#include <algorithm>
#include <gmock/gmock.h>

namespace tallyroom {

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

/// The dashboard on a volume of its own, with a trash that the test fills.
class TrashCardTest : public DashboardScene {
protected:
    void SetUp() override
    {
        if (!mount.isMounted()) {
            GTEST_SKIP() << mount.refusal();
        }
        const std::string record = "\nDeletionDate=2026-01-02T03:04:05\n";
        tree.add({folder("v/home"), file("v/data/Trash/files/a.2", 3'000'000),
                  file("v/data/Trash/files/b", 4096),
                  file("v/data/Trash/info/a.2.trashinfo", "[Trash Info]\nPath=/x/le%20<b>film" + record),
                  file("v/data/Trash/info/gone.trashinfo", "[Trash Info]\nPath=/x/gone" + record)});
        trashes = TrashContents::stream;
        ASSERT_TRUE(report({disk, large}));
        ASSERT_TRUE(QTest::qWaitFor([this] { return emptyButton().isVisible(); }, 20'000));
    }

    [[nodiscard]] QPushButton& emptyButton() const { return *cards()[0]->emptyButton(); }

    /// Presses the card's button with a key, and waits for the question.
    [[nodiscard]] EmptyTrashConfirmation* ask()
    {
        emptyButton().setFocus();
        press(Qt::Key_Return);
        const auto dialog = [this] { return view.findChild<EmptyTrashConfirmation*>(); };
        return QTest::qWaitFor([&] { return dialog() != nullptr && dialog()->isVisible(); }, 20'000)
                   ? dialog()
                   : nullptr;
    }

    TemporaryTree tree{folder("v")};
    TemporaryMount mount = TemporaryMount::memory(tree.path("v"));
    ScopedVariable home{"HOME", tree.path("v/home")};
    ScopedVariable dataHome{"XDG_DATA_HOME", tree.path("v/data")};
    const VolumeUsage disk = volume(tree.path("v"), 900, 100);
};

TEST_F(TrashCardTest, TheCardSaysWhatLiesInTheTrashAndEmptiesItAfterAQuestion)
{
    const int heightOfAll = cards()[0]->height();
    EXPECT_EQ(heightOfAll, VolumeCard::cardHeight() + VolumeCard::trashHeight());
    EXPECT_EQ(cards()[1]->height(), heightOfAll);
    EXPECT_FALSE(cards()[1]->emptyButton()->isVisible());
    EXPECT_TRUE(cards()[0]->accessibleDescription().startsWith(QStringLiteral("Corbeille : 3 Mo. ")));
    const QSignalSpy explored{&dashboard, &DashboardViewModel::explorationRequested};

    tree.add(file("v/data/Trash/files/c", 8192)); // since the card was drawn
    auto* dialog = ask();
    ASSERT_NE(dialog, nullptr);
    EXPECT_TRUE(explored.isEmpty()) << "the button is not the card";
    const QString words = dialog->accessibleDescription();
    EXPECT_TRUE(words.startsWith(QStringLiteral("3 éléments · 3 Mo\n")));
    EXPECT_TRUE(words.contains(QStringLiteral("d’autres programmes")));
    EXPECT_TRUE(words.contains(QStringLiteral("\n• le <b>film dans /x (3 Mo)\n• c dans "))) << "by size";
    EXPECT_TRUE(words.endsWith(QStringLiteral(" (4,1 Ko)")));
    QTest::keyClick(dialog, Qt::Key_Return);
    EXPECT_FALSE(deletions.isRunning()) << "\"Annuler\" is the default";
    EXPECT_EQ(tree.names("v/data/Trash/files").size(), 3U);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);

    dialog = ask();
    ASSERT_NE(dialog, nullptr);
    tree.add(file("v/data/Trash/files/later", 4096));
    visibleButton(*dialog, QStringLiteral("Vider la corbeille"))->click();
    ASSERT_TRUE(
        waitUntil(&deletions, &DeletionRunner::isRunningChanged, [&] { return !deletions.isRunning(); }));
    EXPECT_THAT(tree.names("v/data/Trash/files"), ElementsAre("later"));
    EXPECT_THAT(tree.names("v/data/Trash/info"), IsEmpty());
    EXPECT_THAT(texts(), Contains(QStringLiteral("3 élément(s) · 3 Mo supprimé(s) définitivement.")));
    EXPECT_TRUE(dashboard.isRefreshing()) << "the free space follows";
    ASSERT_TRUE(report({disk, large}));
    const auto isSmall = [&] {
        return cards()[0]->accessibleDescription().startsWith(QStringLiteral("Corbeille : 4,1 Ko. "));
    };
    EXPECT_TRUE(QTest::qWaitFor(isSmall, 20'000));

    // Another program empties it before the question can be asked.
    tree.remove("v/data/Trash/files/later");
    emptyButton().click();
    const QString isEmpty = QStringLiteral("La corbeille de ce volume est déjà vide.");
    EXPECT_TRUE(QTest::qWaitFor([&] { return texts().contains(isEmpty); }, 20'000));
    EXPECT_EQ(cards()[0]->height(), VolumeCard::cardHeight());
}

TEST_F(TrashCardTest, WhatCouldNotGoIsNamedByThePlaceWhereItWas)
{
    auto* const dialog = ask();
    ASSERT_NE(dialog, nullptr);
    tree.add(file("v/new", "new"));
    tree.exchange("v/new", "v/data/Trash/files/a.2");
    dialog->accept();
    ASSERT_TRUE(
        waitUntil(&deletions, &DeletionRunner::isRunningChanged, [&] { return !deletions.isRunning(); }));
    EXPECT_THAT(texts(), Contains(QStringLiteral("1 supprimé(s) définitivement, 1 en échec.")));
    ASSERT_EQ(dashboard.trash().failures().size(), 1U);
    EXPECT_EQ(dashboard.trash().failures().front().url, FileUrl{"/x/le <b>film"});
    EXPECT_EQ(tree.content("v/data/Trash/files/a.2"), "new");
}

TEST_F(TrashCardTest, AfterAProposalTheLineSaysWhatIsStillInTheTrashAndItsButtonEmptiesIt)
{
    tree.add({file("v/home/crate/Cargo.toml", 9), file("v/home/crate/target/app", 200'000)});
    dateAll(tree, 1'600'000'000);
    BuildCachesViewModel caches{deletions};
    HandFedStreams<VolumeReport> figures;
    DashboardViewModel model{deletions, {[&] { return figures.begin(); }, {}, TrashContents::stream}};
    RecoveryViewModel& recovery = model.recovery();
    recovery.setTools({{QStringLiteral("build-caches"), QStringLiteral("Caches"), "hammer", &caches}});
    DashboardView own{model};
    own.show();
    activate(own);
    const auto reportFree = [&](std::int64_t bytes) {
        const VolumeUsage now = volume(tree.path("v"), 900, bytes);
        figures.send({{now}, now, 0});
        figures.end();
        return waitUntil(&model, &DashboardViewModel::isRefreshingChanged,
                         [&] { return !model.isRefreshing(); });
    };
    ASSERT_TRUE(reportFree(100));
    const auto line = [&](const QString& begin) {
        const QStringList all = visibleTexts(own);
        const auto found =
            std::ranges::find_if(all, [&](const QString& one) { return one.startsWith(begin); });
        return found != all.end() ? *found : QString{};
    };
    recovery.search(tree.url("v/home"));
    ASSERT_TRUE(
        waitUntil(&recovery, &RecoveryViewModel::changed, [&] { return recovery.rows()[0].proposes(); }));
    const std::vector<Entry> proposed = recovery.rows()[0].recovery.safe.toVector();
    recovery.remove(0, proposed, false, caches.planRemoval(proposed));
    ASSERT_TRUE(waitUntil(&caches, &ScanToolViewModel::removalChanged, [&] { return !caches.removal(); }));
    ASSERT_TRUE(reportFree(101));
    const QString told =
        QStringLiteral("Rien n’est encore libéré · 100 o disponibles avant, 101 o maintenant. "
                       "La corbeille contient 3,2 Mo, libérés quand elle sera vidée.");
    EXPECT_TRUE(QTest::qWaitFor([&] { return line(QStringLiteral("Rien n’est")) == told; }, 20'000))
        << visibleTexts(own).join(u'|').toStdString();

    const auto buttons = own.findChild<RecoveryPanel*>()->findChildren<QPushButton*>();
    const auto empty = std::ranges::find_if(buttons, [](const QPushButton* one) {
        return one->isVisible() && one->text() == QStringLiteral("Vider la corbeille…");
    });
    ASSERT_NE(empty, buttons.end());
    QTest::mouseClick(*empty, Qt::LeftButton);
    const auto dialog = [&] { return own.findChild<EmptyTrashConfirmation*>(); };
    ASSERT_TRUE(QTest::qWaitFor([&] { return dialog() != nullptr && dialog()->isVisible(); }, 20'000));
    visibleButton(*dialog(), QStringLiteral("Vider la corbeille"))->click();
    ASSERT_TRUE(
        waitUntil(&deletions, &DeletionRunner::isRunningChanged, [&] { return !deletions.isRunning(); }));
    EXPECT_THAT(tree.names("v/data/Trash/files"), IsEmpty());
    ASSERT_TRUE(reportFree(700));
    const QString freed = QStringLiteral("100 o disponibles avant, 700 o maintenant.");
    EXPECT_TRUE(QTest::qWaitFor([&] { return line(QStringLiteral("100 o")) == freed; }, 20'000))
        << visibleTexts(own).join(u'|').toStdString();
    EXPECT_FALSE((*empty)->isVisible()) << "there is nothing left in it";
}

} // namespace

} // namespace tallyroom
