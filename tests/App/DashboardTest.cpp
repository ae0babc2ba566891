#include "App/DashboardScene.h"
#include "Settings/RecentFolders.h"
#include "Settings/Settings.h"
#include "Text/VolumeText.h"
#include "Tools/Dashboard/BreakdownPanel.h"
#include "Tools/Dashboard/KindBar.h"
#include "Tools/Dashboard/KindRow.h"
#include "Tools/Frame/ToolTitle.h"

#include <QApplication>
#include <QScrollArea>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>

#include <algorithm>
#include <gmock/gmock.h>

namespace tallyroom {

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

class DashboardTest : public DashboardScene {
protected:
    /// The line below the kinds after a breakdown with this account.
    QString line(const std::optional<VolumeAccount>& account, const SharedUnreadPlaces& unread = {})
    {
        dashboard.analyze(FileUrl{"/"});
        analyses.send({2, FolderSummary{{videos}, 30, 2}, Progress::Phase::done, {}, unread, account});
        analyses.end();
        EXPECT_TRUE(
            waitUntil(&dashboard, &FolderTool::stateChanged, [this] { return !dashboard.isScanning(); }));
        return texts().filter(QStringLiteral("sur le volume")).join(u'\n').replace(QChar::Nbsp, u' ');
    }
};

TEST_F(DashboardTest, AVolumeThatHasYetToAnswerAgainStaysUntilTheReadingEnds)
{
    ASSERT_TRUE(report({large, root, key}));
    dashboard.refresh();
    EXPECT_THAT(dashboard.volumes(), ElementsAre(large, root, key));
    const VolumeUsage fuller = volume("/", 500, 50);
    readings.send({{fuller}, std::nullopt, 2});
    ASSERT_TRUE(waitUntil(&dashboard, &DashboardViewModel::volumesChanged, [&] {
        return dashboard.volumes() == std::vector{large, fuller, key};
    }));
    EXPECT_EQ(dashboard.mainVolume(), large);
    readings.end();
    ASSERT_TRUE(refreshed());
    EXPECT_THAT(dashboard.volumes(), ElementsAre(fuller));
    EXPECT_EQ(dashboard.mainVolume(), std::nullopt);
    EXPECT_EQ(dashboard.unansweredVolumes(), 2);
    dashboard.refresh();
    readings.end();
    ASSERT_TRUE(refreshed());
    EXPECT_THAT(dashboard.volumes(), IsEmpty()) << "none has answered this time";
}

TEST_F(DashboardTest, AVolumeThatGoesBeforeItsTrashIsReadAsksNothingWhenItComesBack)
{
    HandFedStreams<TrashContents> looks;
    trashes = [&](const FileUrl&) { return looks.begin(); };
    ASSERT_TRUE(report({root, key}));
    dashboard.trash().prepareEmptying(key.url);
    for (const auto& list : {std::vector{root}, std::vector{root, key}}) {
        dashboard.refresh();
        ASSERT_TRUE(report(list));
    }
    EXPECT_TRUE(texts().contains(QStringLiteral("La corbeille de ce volume n’a pas pu être lue.")));
    const QSignalSpy asked{&dashboard.trash(), &TrashViewModel::emptyingReady};
    TrashContents contents;
    contents.items.push_back({Entry{.url = FileUrl{"/media/key/.Trash/files/a"}, .name = "a"}, {}});
    looks.send(std::move(contents));
    ASSERT_TRUE(waitUntil(&dashboard.trash(), &TrashViewModel::contentsChanged,
                          [this] { return dashboard.trash().of(key.url) != nullptr; }));
    EXPECT_TRUE(asked.isEmpty());
}

TEST_F(DashboardTest, ANewerReadingReplacesTheOneUnderWayAndLeavesTheBreakdownAlone)
{
    dashboard.analyze(FileUrl{"/r"});
    ASSERT_TRUE(finish({videos, code}));
    const QSignalSpy states{&dashboard, &FolderTool::stateChanged};
    dashboard.refresh();
    EXPECT_TRUE(readings.isCancelled(0));
    readings.senders[0]->send({{key}, key, 0});
    ASSERT_TRUE(report({root}));
    EXPECT_THAT(dashboard.volumes(), ElementsAre(root));
    EXPECT_TRUE(states.isEmpty());
    EXPECT_EQ(dashboard.summary()->totalBytes, 40);
}

TEST_F(DashboardTest, AnAnalysisCountsThenTellsItsKindsOnceAndReplacesTheOneBefore)
{
    dashboard.handleImport(std::vector{FileUrl{"/home/moi/Proj\xff"}, FileUrl{"/other"}});
    EXPECT_EQ(dashboard.analyzedFolder(), QStringLiteral("Proj\\xFF"));
    EXPECT_EQ(RecentFolders::shared().urls().front(), FileUrl{"/home/moi/Proj\xff"});
    EXPECT_TRUE(dashboard.isScanning());
    ASSERT_TRUE(count(4096));
    EXPECT_EQ(dashboard.summary(), std::nullopt);
    ASSERT_TRUE(finish({videos, code}));
    EXPECT_EQ(dashboard.analysisScanned(), 7);
    EXPECT_EQ(dashboard.scanReport(), QStringLiteral("7 fichiers · 40 o"));
    EXPECT_DOUBLE_EQ(dashboard.fraction(videos), 0.75);

    dashboard.analyze(FileUrl{"/former"});
    dashboard.analyze(FileUrl{"/r"});
    EXPECT_TRUE(analyses.isCancelled(1));
    EXPECT_EQ(dashboard.summary(), std::nullopt);
    analyses.senders[1]->send({9, FolderSummary{{videos}, 10, 5}, Progress::Phase::done});
    ASSERT_TRUE(finish({{FileKind::code, 0, 3}}));
    EXPECT_EQ(dashboard.scanReport(), QStringLiteral("3 fichiers · 0 o"));
    EXPECT_EQ(dashboard.fraction(videos), 0) << "nothing has no shares";
}

TEST_F(DashboardTest, AnAnalysisStoppedBetweenItsSummaryAndItsEndIsLoaded)
{
    dashboard.analyze(FileUrl{"/r"});
    ASSERT_TRUE(count(2, FolderSummary{{videos}, 30, 2}));
    dashboard.cancelAnalysis();
    EXPECT_EQ(dashboard.analysisState().phase, AnalysisState::Phase::loaded);
    EXPECT_EQ(dashboard.summary()->totalBytes, 30);
}

TEST_F(DashboardTest, CardsFollowTheReportTheMainOneFirst)
{
    const QWidget* const place = view.findChild<VolumeGrid*>()->parentWidget();
    const int heightBefore = place->height();
    const VolumeUsage system{"Système", FileUrl{"/"}, 512'100'000'000, 180'400'000'000, true};
    readings.send({{large, system, key}, system, 0});
    readings.end();
    ASSERT_TRUE(refreshed());
    ASSERT_EQ(cards().size(), 3U);
    EXPECT_EQ(cards()[0]->accessibleName(),
              QStringLiteral("Système, /, 331,7 Go utilisés sur 512,1 Go, 180,4 Go disponibles"));
    EXPECT_EQ(cards()[1]->usage(), large);
    EXPECT_TRUE(cards()[2]->accessibleDescription().contains(QStringLiteral("presque plein")));
    EXPECT_GT(cards()[0]->width(), cards()[1]->width() * 6 / 5);
    EXPECT_EQ(place->height(), heightBefore) << "nothing below moves when the volumes arrive";

    // The keyboard goes through them in the order of the screen, and stays on one when another goes.
    button(QStringLiteral("Recharger"))->setFocus();
    press(Qt::Key_Tab);
    EXPECT_EQ(view.focusWidget(), cards()[0]);
    press(Qt::Key_Tab);
    press(Qt::Key_Tab);
    EXPECT_EQ(view.focusWidget(), cards()[2]);
    press(Qt::Key_F5);
    ASSERT_TRUE(report({system, key}));
    ASSERT_EQ(cards().size(), 2U);
    EXPECT_EQ(view.focusWidget(), cards()[1]);
    EXPECT_EQ(cards()[1]->usage(), key);
}

TEST_F(DashboardTest, PressingACardAsksForItsVolumeInTheExplorer)
{
    ASSERT_TRUE(report(volumes(3)));
    std::vector<FileUrl> asked;
    QObject::connect(&dashboard, &DashboardViewModel::explorationRequested, &view,
                     [&asked](const FileUrl& url) { asked.push_back(url); });
    QTest::mouseClick(cards()[1], Qt::LeftButton);
    cards()[2]->setFocus();
    press(Qt::Key_Return);
    press(Qt::Key_Space);
    EXPECT_THAT(asked, ElementsAre(FileUrl{"/mnt/2"}, FileUrl{"/mnt/3"}, FileUrl{"/mnt/3"}));
}

TEST_F(DashboardTest, VolumesThatAreNotThereAreSpokenOf)
{
    ASSERT_TRUE(report({}, 0));
    EXPECT_THAT(texts(), Contains(QStringLiteral("Aucun volume n’a pu être lu.")));
    dashboard.refresh();
    ASSERT_TRUE(report(volumes(1), 2));
    EXPECT_THAT(texts(), Contains(QStringLiteral("2 volumes ne répondent pas.")));
    EXPECT_THAT(texts(), Not(Contains(QStringLiteral("Aucun volume n’a pu être lu."))));
}

TEST_F(DashboardTest, CardsWrapWithoutOverlapAndThePageScrolls)
{
    dashboard.analyze(FileUrl{"/r"});
    ASSERT_TRUE(finish({{FileKind::video, 30, 2}, {FileKind::code, 10, 5}}));
    auto& scroll = *view.findChild<QScrollArea*>();
    // The narrowest place for the screen is the smallest window without the sidebar.
    for (const auto& [count, width] :
         {std::pair{1, 484}, {2, 484}, {8, 484}, {8, 700}, {8, 1200}, {3, 1000}}) {
        view.resize(width, 450);
        dashboard.refresh();
        ASSERT_TRUE(report(volumes(count)));
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&view));
        QApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
        const QWidget* const page = scroll.widget();
        EXPECT_LE(page->width(), scroll.viewport()->width());
        EXPECT_EQ(scroll.verticalScrollBar()->maximum(),
                  std::max(0, page->height() - scroll.viewport()->height()));
        QRegion covered;
        for (const VolumeCard* const card : cards()) {
            const QRect place{card->mapTo(page, QPoint{}), card->size()};
            EXPECT_TRUE(page->rect().contains(place)) << count << " at " << width;
            EXPECT_FALSE(covered.intersects(place)) << count << " at " << width;
            EXPECT_GE(place.width(), Theme::cardMinimumWidth);
            covered += place;
        }
        EXPECT_TRUE(count < 8 || width < 1200 || cards()[0]->width() > cards()[1]->width() * 6 / 5);
        const auto* const bar = view.findChild<KindBar*>();
        EXPECT_GT(bar->mapTo(page, QPoint{}).y(), covered.boundingRect().bottom());
    }
    view.resize(484, 450);
    ASSERT_GT(scroll.verticalScrollBar()->maximum(), 0);
    const auto* const reload = button(QStringLiteral("Recharger"));
    const QPoint place = reload->mapTo(&view, QPoint{});
    scroll.verticalScrollBar()->setValue(scroll.verticalScrollBar()->maximum());
    EXPECT_EQ(reload->mapTo(&view, QPoint{}), place) << "the window's menu stands beside it";
}

TEST_F(DashboardTest, TheKindsAreListedLargestFirstWithSharesThatAddUp)
{
    dashboard.analyze(FileUrl{"/r"});
    ASSERT_TRUE(finish({{FileKind::video, 413 * gigabyte, 1204},
                        {FileKind::archive, 128 * gigabyte, 310},
                        {FileKind::code, 1, 412'908},
                        {FileKind::spreadsheet, 0, 1}}));
    const auto rows = view.findChildren<KindRow*>();
    ASSERT_EQ(rows.size(), 4);
    double sum = 0;
    for (const KindRow* const row : rows) {
        sum += row->content().kind.share;
        EXPECT_EQ(row->content().largest, 413 * gigabyte);
    }
    EXPECT_DOUBLE_EQ(sum, 1);
    EXPECT_EQ(rows[1]->accessibleName(), QStringLiteral("Archives, 128 Go, 23,7 %, 310 fichiers"));
    EXPECT_TRUE(rows[2]->accessibleName().contains(QStringLiteral("< 0,1 %")));
    EXPECT_TRUE(rows[3]->accessibleName().endsWith(QStringLiteral("0 %, 1 fichier")));
    EXPECT_EQ(view.findChild<KindBar*>()->accessibleDescription(),
              QStringLiteral("Vidéos 76,3 %, Archives 23,7 %, Code < 0,1 %"));
    std::vector<std::pair<FileUrl, std::string>> largest;
    QObject::connect(
        &dashboard, &DashboardViewModel::largestRequested, &view,
        [&](const FileUrl& folder, FileKind kind) { largest.emplace_back(folder, kind.rawValue()); });
    ASSERT_TRUE(QTest::qWaitFor([&] { return rows[1]->isVisible(); }));
    rows[1]->setFocus();
    press(Qt::Key_Return);
    EXPECT_EQ(largest,
              (std::vector{std::pair{FileUrl{"/r"}, std::string{FileKind{FileKind::archive}.rawValue()}}}));
}

TEST_F(DashboardTest, ThePointerFindsEachKindUnderItsPartOfTheBar)
{
    KindBar bar;
    bar.resize(400, Theme::shareBarHeight);
    bar.setKinds({{{FileKind::video, 3, 1}, 0.75}, {{FileKind::code, 1, 1}, 0.25}});
    const QImage image = bar.grab().toImage();
    const int middle = image.height() / 2;
    const Theme& theme = Theme::shared();
    EXPECT_EQ(image.pixelColor(20, middle), theme.tint(FileKind::video));
    EXPECT_EQ(image.pixelColor(290, middle), theme.tint(FileKind::video));
    EXPECT_EQ(image.pixelColor(310, middle), theme.tint(FileKind::code));
    EXPECT_EQ(image.pixelColor(399, middle), theme.tint(FileKind::code)) << "the bar is full";
}

TEST_F(DashboardTest, EveryPhaseOfTheBreakdownHasItsWordsAndItsWayOn)
{
    Settings::store().clear();
    RecentFolders::shared().add(FileUrl{"/"});
    dashboard.handleImport(std::unexpected(QStringLiteral("refusé.")));
    dashboard.handleImport(FolderChoice{});
    EXPECT_EQ(analyses.senders.size(), 0U);
    EXPECT_THAT(texts(), Contains(QStringLiteral("Sélection impossible : refusé.")));
    EXPECT_TRUE(QTest::qWaitFor([this] { return texts().contains(QStringLiteral("Récents")); }));
    EXPECT_NE(button(QStringLiteral("Choisir un dossier…")), nullptr);
    EXPECT_EQ(button(QStringLiteral("Reprendre")), nullptr);

    dashboard.analyze(FileUrl{"/r"});
    ASSERT_TRUE(count(12'345));
    ASSERT_TRUE(QTest::qWaitFor([&] { return button(QStringLiteral("Arrêter")) != nullptr; }));
    EXPECT_THAT(texts(), Contains(QStringLiteral("Analyse… 12\u202f345 fichiers")));
    EXPECT_THAT(texts(), Not(Contains(QStringLiteral("Récents"))));
    button(QStringLiteral("Arrêter"))->click();
    EXPECT_TRUE(analyses.isCancelled(0));
    EXPECT_THAT(texts(), Contains(QStringLiteral("Récents")));
    EXPECT_THAT(texts(), Contains(ScanEnd::stopped().emptyText({}))) << "as in all tools";

    dashboard.analyze(FileUrl{"/home/moi/Projets"});
    button(QStringLiteral("Recharger"))->setFocus();
    press(Qt::Key_Escape);
    EXPECT_TRUE(analyses.isCancelled(1));
    EXPECT_TRUE(view.findChild<BreakdownPanel*>()->findChild<ToolTitle*>()->accessibleName().endsWith(
        QStringLiteral("Projets")));
    ASSERT_NE(button(QStringLiteral("Reprendre")), nullptr);
    QTest::mouseClick(button(QStringLiteral("Reprendre")), Qt::LeftButton);
    EXPECT_TRUE(dashboard.isScanning());
    ASSERT_TRUE(finish({}));
    EXPECT_EQ(dashboard.analyzedURL(), FileUrl{"/home/moi/Projets"});
    EXPECT_EQ(button(QStringLiteral("Reprendre")), nullptr);
    EXPECT_THAT(texts(), Contains(QStringLiteral("Aucun fichier dans ce dossier.")));
}

TEST_F(DashboardTest, ABreakdownSaysThatItsFolderHasChangedAndCanBeMadeAgain)
{
    const auto change = [this](const char* folder) {
        DiskChange changed;
        changed.folders = {FileUrl{folder}, FileUrl{"/"}};
        Q_EMIT deletions.diskChanged(changed);
    };
    const QString again = QStringLiteral("Analyser de nouveau");
    change("/r");
    dashboard.analyze(FileUrl{"/r"});
    ASSERT_TRUE(finish({videos}));
    change("/elsewhere");
    EXPECT_EQ(button(again), nullptr);
    change("/r");
    ASSERT_NE(button(again), nullptr);
    EXPECT_THAT(texts(),
                Contains(QStringLiteral("Le contenu a changé depuis : ces chiffres datent d’avant.")));
    QTest::mouseClick(button(again), Qt::LeftButton);
    EXPECT_EQ(analyses.senders.size(), 2U);
    change("/r"); // while it runs
    ASSERT_TRUE(finish({videos}));
    EXPECT_NE(button(again), nullptr);
}

TEST_F(DashboardTest, AVolumeIsRedFromNineTenthsOn)
{
    EXPECT_EQ(VolumeText::fill(volume("/", 1000, 101)), QStringLiteral("90 %"));
    EXPECT_EQ(VolumeText::fill(volume("/", 1000, 100)), QStringLiteral("presque plein"));
    EXPECT_EQ(VolumeText::fill(volume("/", 1000, 0)), QStringLiteral("plein"));
    EXPECT_TRUE(VolumeText::toolTip(volume("/<b>", 1, 1)).contains(QStringLiteral("/&lt;b&gt;")));
}

TEST_F(DashboardTest, TheAccountOfTheVolumeSaysWhatIsKnownOfTheGapAndNothingElse)
{
    const auto unread = std::make_shared<UnreadPlaces>(UnreadPlaces{12, false, {}});
    EXPECT_EQ(line(VolumeAccount{26 * gigabyte, gigabyte, 20 * gigabyte, 3 * gigabyte, 2}, unread),
              QStringLiteral("Utilisés sur le volume : 26 Go · analysés : 20 Go · réservés au système : 1 Go"
                             " · hors de portée : 5 Go (12 dossiers illisibles, 2 dossiers de versions non "
                             "ouverts, fichiers supprimés encore ouverts…)"
                             " · en plus, sous d’autres points de montage : 3 Go"));
    EXPECT_EQ(line(VolumeAccount{.used = 5 * gigabyte, .found = 6 * gigabyte}),
              QStringLiteral("Utilisés sur le volume : 5 Go · analysés : 6 Go"))
        << "compressed";
    EXPECT_EQ(line({}), QString{}) << "a folder inside of a volume";
}

} // namespace

} // namespace tallyroom
