#include "App/DashboardScene.h"
#include "Settings/RecentFolders.h"

#include <QSignalSpy>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tallyroom {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Phase = AnalysisState::Phase;

class DashboardTest : public testing::Test {
protected:
    /// Sends a report that is not the last one, and waits until it is shown.
    bool reportPartly(std::vector<VolumeUsage> list, std::int64_t unanswered)
    {
        const QSignalSpy changes{&dashboard, &DashboardViewModel::volumesChanged};
        scene.volumes.send({std::move(list), std::nullopt, unanswered});
        return waitUntil(&dashboard, &DashboardViewModel::volumesChanged, [&] { return !changes.isEmpty(); });
    }

    bool count(std::int64_t files)
    {
        scene.analyses.send({files, {}, FolderAnalyzer::Progress::Phase::scanning});
        return waitUntil(&dashboard, &DashboardViewModel::analysisScannedChanged,
                         [&] { return dashboard.analysisScanned() == files; });
    }

    DashboardScene scene;
    DashboardViewModel& dashboard = scene.dashboard;
    const VolumeUsage root = DashboardScene::volume("/", 500, 100);
    const VolumeUsage large = DashboardScene::volume("/mnt/large", 900, 100);
    const VolumeUsage key = DashboardScene::volume("/media/key", 50, 1, false);
    const CategorySize videos{FileKind::video, 30, 2};
    const CategorySize code{FileKind::code, 10, 5};
};

TEST_F(DashboardTest, AVolumeThatHasYetToAnswerAgainStaysUntilTheReadingEnds)
{
    ASSERT_TRUE(scene.report({large, root, key}));
    dashboard.refresh();
    EXPECT_THAT(dashboard.volumes(), ElementsAre(large, root, key));
    const VolumeUsage fuller = DashboardScene::volume("/", 500, 50);
    ASSERT_TRUE(reportPartly({fuller}, 2));
    EXPECT_THAT(dashboard.volumes(), ElementsAre(large, fuller, key));
    EXPECT_EQ(dashboard.mainVolume(), large);
    scene.volumes.end();
    ASSERT_TRUE(waitUntil(&dashboard, &DashboardViewModel::isRefreshingChanged,
                          [&] { return !dashboard.isRefreshing(); }));
    EXPECT_THAT(dashboard.volumes(), ElementsAre(fuller));
    EXPECT_EQ(dashboard.mainVolume(), std::nullopt);
    EXPECT_EQ(dashboard.unansweredVolumes(), 2);
    dashboard.refresh();
    scene.volumes.end();
    ASSERT_TRUE(waitUntil(&dashboard, &DashboardViewModel::isRefreshingChanged,
                          [&] { return !dashboard.isRefreshing(); }));
    EXPECT_THAT(dashboard.volumes(), IsEmpty()) << "none has answered this time";
}

TEST_F(DashboardTest, ANewerReadingReplacesTheOneUnderWayAndLeavesTheBreakdownAlone)
{
    dashboard.analyze(FileUrl{"/r"});
    ASSERT_TRUE(scene.finish({videos, code}));
    const QSignalSpy states{&dashboard, &FolderTool::stateChanged};
    dashboard.refresh();
    EXPECT_TRUE(scene.volumes.isCancelled(0));
    scene.volumes.sendFrom(0, {{key}, key, 0});
    ASSERT_TRUE(scene.report({root}));
    EXPECT_THAT(dashboard.volumes(), ElementsAre(root));
    EXPECT_TRUE(states.isEmpty());
    EXPECT_EQ(dashboard.summary()->totalBytes, 40);
}

TEST_F(DashboardTest, AnAnalysisCountsThenTellsItsKindsOnce)
{
    dashboard.handleImport(std::vector{FileUrl{"/home/moi/Proj\xff"}, FileUrl{"/other"}});
    EXPECT_EQ(dashboard.analyzedFolder(), QStringLiteral("Proj\\xFF"));
    EXPECT_EQ(RecentFolders::shared().urls().front(), FileUrl{"/home/moi/Proj\xff"});
    EXPECT_TRUE(dashboard.isScanning());
    ASSERT_TRUE(count(4096));
    EXPECT_EQ(dashboard.summary(), std::nullopt);
    ASSERT_TRUE(scene.finish({videos, code}));
    EXPECT_EQ(dashboard.analysisScanned(), 7);
    EXPECT_EQ(dashboard.scanReport(), QStringLiteral("7 fichiers · 40 o"));
    EXPECT_DOUBLE_EQ(dashboard.fraction(videos), 0.75);
}

TEST_F(DashboardTest, AnAnalysisStoppedBetweenItsSummaryAndItsEndIsLoaded)
{
    dashboard.analyze(FileUrl{"/r"});
    scene.analyses.send({2, FolderSummary{{videos}, 30, 2}, FolderAnalyzer::Progress::Phase::done});
    ASSERT_TRUE(waitUntil(&dashboard, &DashboardViewModel::summaryChanged,
                          [&] { return dashboard.summary().has_value(); }));
    dashboard.cancelAnalysis();
    EXPECT_EQ(dashboard.analysisState().phase, Phase::loaded);
    EXPECT_EQ(dashboard.summary()->totalBytes, 30);
}

TEST_F(DashboardTest, ASecondAnalysisReplacesTheFirstAndItsLateRecords)
{
    dashboard.analyze(FileUrl{"/first"});
    scene.analyses.send({8192, {}, FolderAnalyzer::Progress::Phase::scanning});
    dashboard.analyze(FileUrl{"/second"});
    EXPECT_TRUE(scene.analyses.isCancelled(0));
    scene.analyses.sendFrom(0, {9, FolderSummary{{code}, 10, 5}, FolderAnalyzer::Progress::Phase::done});
    std::vector<std::int64_t> counts;
    QObject observer;
    QObject::connect(&dashboard, &DashboardViewModel::analysisScannedChanged, &observer,
                     [&] { counts.push_back(dashboard.analysisScanned()); });
    ASSERT_TRUE(scene.finish({videos}));
    EXPECT_THAT(counts, ElementsAre(2));
    EXPECT_EQ(dashboard.summary()->categories, std::vector{videos});
    EXPECT_EQ(dashboard.analyzedFolder(), QStringLiteral("second"));
}

TEST_F(DashboardTest, AKindHasNoShareOfNothing)
{
    EXPECT_EQ(dashboard.fraction(videos), 0);
    dashboard.analyze(FileUrl{"/r"});
    ASSERT_TRUE(scene.finish({{FileKind::code, 0, 3}}));
    EXPECT_EQ(dashboard.fraction(videos), 0);
    dashboard.analyze(FileUrl{"/r"});
    EXPECT_EQ(dashboard.summary(), std::nullopt);
}

} // namespace

} // namespace tallyroom
