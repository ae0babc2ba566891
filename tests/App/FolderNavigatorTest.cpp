#include "App/NavigatorScene.h"
#include "App/ScreenWords.h"
#include "Support/Cases.h"
#include "Theme/Theme.h"
#include "Tools/DiskUsage/Breadcrumb.h"

#include <QAbstractButton>
#include <QMenu>
#include <QSignalSpy>
#include <QTest>

#include <algorithm>
#include <gmock/gmock.h>
#include <sstream>

namespace tallyroom {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const auto twoFiles = [] { return std::vector{fileEntry("/r/big", 900), fileEntry("/r/small", 10)}; };

class FolderNavigator : public testing::Test {
protected:
    NavigatorScene scene;
    FolderNavigatorViewModel& navigator = *scene.navigator;
};

TEST_F(FolderNavigator, TellsTheWholeStoryOfAScanInOrderAndNothingTwice)
{
    std::vector<std::string> lines;
    const auto write = [&](auto signal, auto words) {
        QObject::connect(&navigator, signal, &navigator, [&lines, words] { lines.push_back(words()); });
    };
    using Tool = FolderNavigatorViewModel;
    write(&Tool::rootURLChanged, [&] { return "root " + navigator.rootURL()->path(); });
    write(&Tool::currentURLChanged, [&] { return "at " + navigator.currentURL()->path(); });
    write(&Tool::canGoBackChanged, [&] { return navigator.canGoBack() ? "may go back" : "at its start"; });
    write(&Tool::stateChanged, [&] { return navigator.isScanning() ? "scanning" : "done"; });
    write(&Tool::statusMessageChanged, [] { return "message"; });
    write(&Tool::undoableChanged, [] { return "undo"; });
    write(&Tool::progressChanged, [&] {
        return std::to_string(navigator.scanCompleted()) + "/" + std::to_string(navigator.scanTotal()) + " " +
               testing::PrintToString(scene.listedNames());
    });
    const auto told = [&lines] { return std::exchange(lines, {}); };
    navigator.open(FileUrl{"/r"});
    EXPECT_THAT(told(), ElementsAre("root /r", "at /r", "scanning"));
    scene.receive({fileEntry("/r/a", 5)});
    EXPECT_THAT(told(), ElementsAre("1/2 { \"a\" }"));
    scene.finishListing({fileEntry("/r/b", 9), fileEntry("/r/a", 5)});
    EXPECT_THAT(told(), ElementsAre("2/2 { \"b\", \"a\" }", "done"));
    navigator.activate(folderEntry("/r/b", 9));
    EXPECT_THAT(told(), ElementsAre("may go back", "at /r/b", "scanning", "0/0 {}"));
}

TEST_F(FolderNavigator, AnObserverMayNavigateWhileARecordIsHandedOver)
{
    navigator.open(FileUrl{"/r"});
    QObject observer;
    QObject::connect(
        &navigator, &ListToolViewModel::progressChanged, &observer,
        [&] { navigator.navigateViaBreadcrumb(FileUrl{"/r/sub"}); }, Qt::SingleShotConnection);
    scene.listing().send(twoFiles(), 2, 2);
    scene.listing().end();
    ASSERT_TRUE(waitUntil(&navigator, &FolderNavigatorViewModel::currentURLChanged,
                          [&] { return scene.listings.size() == 2; }));
    EXPECT_EQ(navigator.state(), ToolState::scanning());
    EXPECT_THAT(scene.listedNames(), IsEmpty());
}

TEST_F(FolderNavigator, AFolderThatCannotBeChosenIsAnErrorThatStays)
{
    scene.openLoaded("/r", twoFiles());
    navigator.handleImport(std::unexpected(QStringLiteral("refusé.")));
    EXPECT_EQ(navigator.state(), ToolState::error(QStringLiteral("Sélection impossible : refusé.")));
    EXPECT_THAT(scene.listedNames(), ElementsAre("big", "small"));
    navigator.handleImport(std::vector{FileUrl{"/x"}, FileUrl{"/y"}});
    EXPECT_EQ(navigator.rootURL(), FileUrl{"/x"});
    navigator.handleImport(FolderChoice{});
    EXPECT_TRUE(scene.listing().isCancelled()) << "its end would pull the message away";
}

TEST_F(FolderNavigator, AFileIsShownAndNotEntered)
{
    scene.openLoaded("/r", twoFiles());
    navigator.activate(fileEntry("/r/big", 900));
    EXPECT_THAT(scene.revealed, ElementsAre(FileUrl{"/r/big"}));
    EXPECT_FALSE(navigator.canGoBack());
    EXPECT_EQ(scene.listings.size(), 1U);
}

TEST_F(FolderNavigator, LeadsBackTheWayItCame)
{
    for (const auto& row : cases("ways through folders")) {
        navigator.open(FileUrl{"/r"});
        std::istringstream steps{row[0]};
        for (std::string step; steps >> step;) {
            step == "<"             ? navigator.goBack()
            : step == "^"           ? navigator.goUp()
            : step == "~"           ? navigator.goToRoot()
            : step.starts_with(':') ? navigator.navigateViaBreadcrumb(FileUrl{step.substr(1)})
                                    : navigator.activate(folderEntry(step, 0));
        }
        EXPECT_EQ(navigator.currentURL(), FileUrl{row[1]}) << row[0];
        std::string wayBack;
        while (navigator.canGoBack()) {
            navigator.goBack();
            wayBack += (wayBack.empty() ? "" : " ") + navigator.currentURL()->path();
        }
        EXPECT_EQ(wayBack, row[2]) << row[0];
    }
}

TEST_F(FolderNavigator, TheBreadcrumbGoesFromTheRootToTheCurrentFolderByComponents)
{
    EXPECT_THAT(navigator.breadcrumb(), IsEmpty());
    for (const auto& row : cases("steps of a breadcrumb")) {
        navigator.open(FileUrl{row[0]});
        navigator.navigateViaBreadcrumb(FileUrl{row[1]});
        std::string steps;
        for (const BreadcrumbItem& item : navigator.breadcrumb()) {
            steps += (steps.empty() ? "" : " ") + item.name + "=" + item.url.path();
        }
        EXPECT_EQ(steps, row[2]) << row[0] << " " << row[1];
    }
}

TEST_F(FolderNavigator, WhatEndsInAnotherFolderLeavesItsListAlone)
{
    for (const bool isUndo : {false, true}) {
        scene.openLoaded("/r", {folderEntry("/r/a", 9), fileEntry("/r/b", 1)});
        if (isUndo) {
            scene.deleteNow({FileUrl{"/r/b"}});
        }
        scene.holdRemovals();
        isUndo ? navigator.undoDeletion() : navigator.deleteSelected({FileUrl{"/r/b"}}, false);
        navigator.activate(folderEntry("/r/a", 9));
        scene.finishListing({fileEntry("/r/a/x", 9)});
        scene.letRemove();
        EXPECT_THAT(scene.listedNames(), ElementsAre("x"));
        EXPECT_FALSE(navigator.undoable());
        EXPECT_EQ(navigator.statusMessage(),
                  isUndo ? QStringLiteral("Suppression annulée · 1 élément(s) restauré(s).")
                         : QStringLiteral("1 élément(s) · 1 o mis à la corbeille."));
    }
}

TEST_F(FolderNavigator, TheSameFailureOfAnotherItemIsToldAgain)
{
    scene.openLoaded("/r", twoFiles());
    scene.undeletable = {FileUrl{"/r/big"}, FileUrl{"/r/small"}};
    const QSignalSpy told{&navigator, &ScanToolViewModel::statusMessageChanged};
    scene.deleteNow({FileUrl{"/r/big"}});
    scene.deleteNow({FileUrl{"/r/small"}});
    EXPECT_EQ(told.count(), 2);
    EXPECT_EQ(navigator.failures().front().url, FileUrl{"/r/small"});
}

TEST_F(FolderNavigator, ARunningScanDoesNotBringBackWhatWasDeletedNorLosesWhatWasPutBack)
{
    navigator.open(FileUrl{"/r"});
    scene.receive(twoFiles());
    scene.deleteNow({FileUrl{"/r/big"}, FileUrl{"/r/small"}});
    scene.listing().send({fileEntry("/r/big", 900), fileEntry("/r/new", 50), fileEntry("/r/small", 10)}, 3,
                         4);
    ASSERT_TRUE(waitUntil(&navigator, &ListToolViewModel::progressChanged,
                          [&] { return navigator.scanCompleted() == 3; }));
    EXPECT_THAT(scene.listedNames(), ElementsAre("new"));
    navigator.undoDeletion();
    ASSERT_TRUE(scene.waitForRemoval());
    EXPECT_THAT(scene.listedNames(), ElementsAre("big", "new", "small"));
    scene.finishListing({fileEntry("/r/new", 50), fileEntry("/r/small", 10)});
    EXPECT_THAT(scene.listedNames(), ElementsAre("big", "new", "small"));
}

TEST_F(FolderNavigator, ASecondDeletionIsRefusedInWordsWhileOneRuns)
{
    scene.openLoaded("/r", twoFiles());
    scene.holdRemovals();
    navigator.deleteSelected({FileUrl{"/r/big"}}, false);
    navigator.deleteSelected({FileUrl{"/r/small"}}, true);
    EXPECT_TRUE(navigator.statusMessage().value_or(QString{}).contains(QStringLiteral("en cours")));
    scene.letRemove();
    EXPECT_THAT(scene.listedNames(), ElementsAre("small"));
    EXPECT_TRUE(navigator.undoable());
}

TEST_F(FolderNavigator, AStepAboveTheRootOpensItAndOneBelowDoesNot)
{
    EXPECT_THAT(navigator.wayToRoot(), IsEmpty());
    scene.openLoaded("/home/moi/photos", {});
    const std::vector<BreadcrumbItem> above{
        {"/", FileUrl{"/"}}, {"home", FileUrl{"/home"}}, {"moi", FileUrl{"/home/moi"}}};
    EXPECT_EQ(navigator.wayToRoot(), above);
    navigator.activate(folderEntry("/home/moi/photos/2020", 1));
    navigator.goTo(FileUrl{"/home/moi/photos"});
    EXPECT_EQ(navigator.rootURL(), FileUrl{"/home/moi/photos"});
    navigator.goTo(FileUrl{"/home"});
    EXPECT_EQ(navigator.rootURL(), FileUrl{"/home"});
    EXPECT_EQ(navigator.currentURL(), FileUrl{"/home"});
    EXPECT_EQ(navigator.wayToRoot().size(), 1U);
}

TEST(Breadcrumb, ShowsTheFolderAndItsParentAndTheRestInAMenu)
{
    Breadcrumb breadcrumb;
    std::vector<BreadcrumbItem> items;
    FileUrl url{"/home"};
    const std::vector<BreadcrumbItem> above{{"/", FileUrl{"/"}}, {"home", url}};
    for (const char* name : {"root", "one & two", "three", "four", "five", "current"}) {
        url = url.appending(name);
        items.push_back({name, url});
    }
    breadcrumb.show();

    std::vector<std::vector<std::string>> rows = cases("breadcrumbs with steps above");
    const std::size_t countWithAbove = rows.size();
    std::ranges::copy(cases("breadcrumbs"), std::back_inserter(rows));
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const std::vector<std::string>& row = rows[i];
        breadcrumb.setItems(items, i < countWithAbove ? above : std::vector<BreadcrumbItem>{});
        breadcrumb.resize(std::stoi(row[0]), Theme::controlHeight);
        std::vector<QAbstractButton*> steps;
        for (QAbstractButton* const step : breadcrumb.findChildren<QAbstractButton*>()) {
            if (step->isVisible()) {
                EXPECT_GT(step->width(), 0);
                EXPECT_LE(step->geometry().right(), breadcrumb.width());
                steps.push_back(step);
            }
        }
        std::ranges::sort(steps, {}, [](const QAbstractButton* step) { return step->x(); });
        QStringList shown;
        QStringList menu;
        for (QAbstractButton* const step : steps) {
            shown << step->text();
            if (step->text() == QStringLiteral("…")) {
                step->click();
                for (const QAction* const action : step->findChild<QMenu*>()->actions()) {
                    menu << action->text();
                }
                step->findChild<QMenu*>()->hide();
            }
        }
        EXPECT_EQ(shown.join(u'>').toStdString(), row[1]) << row[0];
        EXPECT_EQ(menu.join(u'>').toStdString(), row[2]) << row[0];
    }
    const QSignalSpy chosen{&breadcrumb, &Breadcrumb::selected};
    QTest::keyClick(visibleButton(breadcrumb, QStringLiteral("five")), Qt::Key_Return);
    EXPECT_EQ(chosen.count(), 1) << "Enter presses a step";
}

} // namespace

} // namespace tallyroom
