#include "Tools/Dashboard/DashboardView.h"

#include "App/DashboardScene.h"
#include "App/EventWait.h"
#include "App/ScreenWords.h"
#include "Settings/RecentFolders.h"
#include "Settings/Settings.h"
#include "Shell/ContentView.h"
#include "Text/VolumeText.h"
#include "Theme/Theme.h"
#include "Tools/Dashboard/KindBar.h"
#include "Tools/Dashboard/KindRow.h"
#include "Tools/Dashboard/VolumeCard.h"
#include "Tools/Dashboard/VolumeGrid.h"

#include <QApplication>
#include <QScrollBar>
#include <QTest>

#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tallyroom {

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::Not;

constexpr std::int64_t gigabyte = 1'000'000'000;

class DashboardViewTest : public testing::Test {
protected:
    DashboardViewTest()
    {
        Theme::shared().apply();
        view.resize(900, 600);
        view.show();
        activate(view);
    }

    static std::vector<VolumeUsage> volumes(int count)
    {
        std::vector<VolumeUsage> result;
        for (int serial = 1; serial <= count; ++serial) {
            result.push_back(
                DashboardScene::volume("/mnt/" + std::to_string(serial), 100 * gigabyte, serial * gigabyte));
        }
        return result;
    }

    [[nodiscard]] std::vector<VolumeCard*> cards() const { return view.findChild<VolumeGrid*>()->cards(); }

    [[nodiscard]] QStringList texts() const { return visibleTexts(view); }

    [[nodiscard]] QAbstractButton* button(const QString& text) const { return visibleButton(view, text); }

    void press(Qt::Key key) { QTest::keyClick(view.focusWidget(), key); }

    DashboardScene scene;
    DashboardView view{scene.dashboard};
};

TEST_F(DashboardViewTest, CardsFollowTheReportTheMainOneFirst)
{
    const QWidget* const place = view.findChild<VolumeGrid*>()->parentWidget();
    const int heightBefore = place->height();
    const VolumeUsage key = DashboardScene::volume("/media/key", 1000 * gigabyte, 50 * gigabyte, false);
    const VolumeUsage large = DashboardScene::volume("/mnt/large", 2000 * gigabyte, 788 * gigabyte);
    const VolumeUsage root{"Système", FileUrl{"/"}, 512'100'000'000, 180'400'000'000, true};
    scene.volumes.send({{large, root, key}, root, 0});
    scene.volumes.end();
    ASSERT_TRUE(waitUntil(&scene.dashboard, &DashboardViewModel::isRefreshingChanged,
                          [&] { return !scene.dashboard.isRefreshing(); }));
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
    ASSERT_TRUE(scene.report({root, key}));
    ASSERT_EQ(cards().size(), 2U);
    EXPECT_EQ(view.focusWidget(), cards()[1]);
    EXPECT_EQ(cards()[1]->usage(), key);
}

TEST_F(DashboardViewTest, PressingACardAsksForItsVolumeInTheExplorer)
{
    ASSERT_TRUE(scene.report(volumes(3)));
    std::vector<FileUrl> asked;
    QObject::connect(&scene.dashboard, &DashboardViewModel::explorationRequested, &view,
                     [&asked](const FileUrl& url) { asked.push_back(url); });
    QTest::mouseClick(cards()[1], Qt::LeftButton);
    cards()[2]->setFocus();
    press(Qt::Key_Return);
    press(Qt::Key_Space);
    EXPECT_THAT(asked, ElementsAre(FileUrl{"/mnt/2"}, FileUrl{"/mnt/3"}, FileUrl{"/mnt/3"}));
}

TEST(DashboardInTheWindow, AVolumeOpensInTheExplorer)
{
    ContentView window;
    EXPECT_EQ(window.selectedToolID(), QStringLiteral("dashboard"));
    window.store().dashboard.explore(FileUrl{"/"});
    EXPECT_EQ(window.selectedToolID(), QStringLiteral("disk-usage"));
    const auto isOpen = [&] { return window.store().diskUsage.rootURL() == FileUrl{"/"}; };
    EXPECT_TRUE(waitUntil(&window.store().diskUsage, &ScanToolViewModel::rootURLChanged, isOpen));
    window.store().diskUsage.cancelScan();
}

TEST_F(DashboardViewTest, VolumesThatAreNotThereAreSpokenOf)
{
    ASSERT_TRUE(scene.report({}, 0));
    EXPECT_THAT(texts(), Contains(QStringLiteral("Aucun volume n’a pu être lu.")));
    scene.dashboard.refresh();
    ASSERT_TRUE(scene.report(volumes(1), 2));
    EXPECT_THAT(texts(), Contains(QStringLiteral("2 volumes ne répondent pas.")));
    EXPECT_THAT(texts(), Not(Contains(QStringLiteral("Aucun volume n’a pu être lu."))));
}

TEST_F(DashboardViewTest, CardsWrapWithoutOverlapAndThePageScrolls)
{
    scene.dashboard.analyze(FileUrl{"/r"});
    ASSERT_TRUE(scene.finish({{FileKind::video, 30, 2}, {FileKind::code, 10, 5}}));
    // The narrowest place for the screen is the smallest window without the sidebar.
    for (const auto& [count, width] :
         {std::pair{1, 484}, {2, 484}, {8, 484}, {8, 700}, {8, 1200}, {3, 1000}}) {
        view.resize(width, 450);
        scene.dashboard.refresh();
        ASSERT_TRUE(scene.report(volumes(count)));
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&view));
        QApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
        const QWidget* const page = view.widget();
        EXPECT_LE(page->width(), view.viewport()->width());
        EXPECT_EQ(view.verticalScrollBar()->maximum(),
                  std::max(0, page->height() - view.viewport()->height()));
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
    EXPECT_GT(view.verticalScrollBar()->maximum(), 0);
}

TEST_F(DashboardViewTest, TheKindsAreListedLargestFirstWithSharesThatAddUp)
{
    scene.dashboard.analyze(FileUrl{"/r"});
    ASSERT_TRUE(scene.finish({{FileKind::video, 413 * gigabyte, 1204},
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
}

TEST_F(DashboardViewTest, ThePointerFindsEachKindUnderItsPartOfTheBar)
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

TEST_F(DashboardViewTest, EveryPhaseOfTheBreakdownHasItsWordsAndItsWayOn)
{
    Settings::store().clear();
    RecentFolders::shared().add(FileUrl{"/"});
    scene.dashboard.handleImport(std::unexpected(QStringLiteral("refusé.")));
    scene.dashboard.handleImport(FolderChoice{});
    EXPECT_EQ(scene.analyses.count(), 0U);
    EXPECT_THAT(texts(), Contains(QStringLiteral("Sélection impossible : refusé.")));
    EXPECT_TRUE(QTest::qWaitFor([this] { return texts().contains(QStringLiteral("Récents")); }));
    EXPECT_NE(button(QStringLiteral("Choisir un dossier…")), nullptr);

    scene.dashboard.analyze(FileUrl{"/r"});
    scene.analyses.send({12'345, {}, FolderAnalyzer::Progress::Phase::scanning});
    ASSERT_TRUE(waitUntil(&scene.dashboard, &DashboardViewModel::analysisScannedChanged,
                          [&] { return scene.dashboard.analysisScanned() == 12'345; }));
    ASSERT_TRUE(QTest::qWaitFor([&] { return button(QStringLiteral("Arrêter")) != nullptr; }));
    EXPECT_THAT(texts(), Contains(QStringLiteral("Analyse… 12\u202f345 fichiers")));
    EXPECT_THAT(texts(), Not(Contains(QStringLiteral("Récents"))));
    button(QStringLiteral("Arrêter"))->click();
    EXPECT_TRUE(scene.analyses.isCancelled(0));
    EXPECT_THAT(texts(), Contains(QStringLiteral("Récents")));

    scene.dashboard.analyze(FileUrl{"/r"});
    button(QStringLiteral("Recharger"))->setFocus();
    press(Qt::Key_Escape);
    EXPECT_TRUE(scene.analyses.isCancelled(1));
    scene.dashboard.analyze(FileUrl{"/r"});
    ASSERT_TRUE(scene.finish({}));
    EXPECT_THAT(texts(), Contains(QStringLiteral("Aucun fichier dans ce dossier.")));
}

TEST(VolumeText, IsRedFromNineTenthsOnAndSaysHowManyAreSilent)
{
    EXPECT_EQ(VolumeText::fill(DashboardScene::volume("/", 1000, 101)), QStringLiteral("90 %"));
    EXPECT_EQ(VolumeText::fill(DashboardScene::volume("/", 1000, 100)), QStringLiteral("presque plein"));
    EXPECT_EQ(VolumeText::fill(DashboardScene::volume("/", 1000, 0)), QStringLiteral("plein"));
    EXPECT_EQ(VolumeText::unanswered(0, true), QString{});
    EXPECT_EQ(VolumeText::unanswered(1, false), QStringLiteral("1 volume ne répond pas."));
    EXPECT_TRUE(
        VolumeText::toolTip(DashboardScene::volume("/<b>", 1, 1)).contains(QStringLiteral("/&lt;b&gt;")));
}

} // namespace

} // namespace tallyroom
