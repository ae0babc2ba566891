#include "App/EventWait.h"
#include "App/ScreenWords.h"
#include "Deletion/DeleteConfirmation.h"
#include "Rows/EntryTable.h"
#include "Settings/Settings.h"
#include "Support/Isolation.h"
#include "Support/ListWords.h"
#include "Tools/BuildCaches/BuildCaches.h"
#include "Tools/Frame/ListToolScreen.h"
#include "Tools/GitRepos/GitRepos.h"
#include "Tools/LargeFiles/LargeFiles.h"
#include "Tools/NodeModules/NodeModules.h"

#include <QSignalSpy>

#include <gmock/gmock.h>

namespace tallyroom {

namespace {

using testing::ElementsAre;

class SearchToolsTest : public testing::Test {
protected:
    void SetUp() override
    {
        Settings::store().clear();
        FileScanner::clearCache();
    }

    /// Opens a folder and waits for the end of its scan.
    static void scan(ListToolViewModel& tool, const FileUrl& folder)
    {
        tool.open(folder);
        EXPECT_TRUE(finished(tool));
    }

    static bool finished(ListToolViewModel& tool)
    {
        return waitUntil(&tool, &FolderTool::stateChanged, [&tool] { return !tool.isScanning(); });
    }

    TemporaryTree m_trash;
    ScopedVariable m_dataHome{"XDG_DATA_HOME", m_trash.path()};
    DeletionRunner m_deletions;
};

TEST_F(SearchToolsTest, AnotherLimitIsKeptAndScansAgainTheSameDoesNeither)
{
    const TemporaryTree tree{file("Sub/a", 50'000), file("Sub/b", 40'000), file("c", 30'000)};
    LargeFilesViewModel tool{m_deletions};
    EXPECT_EQ(tool.limit(), 100);
    tool.setLimit(2);
    EXPECT_EQ(tool.state(), ToolState::idle()) << "without a folder a limit is only stored";
    scan(tool, tree.url());
    EXPECT_THAT(below(tree, tool.entries()), ElementsAre("Sub/a", "Sub/b"));
    EXPECT_FALSE(tool.isDiscovering());

    const QSignalSpy states{&tool, &FolderTool::stateChanged};
    tool.setLimit(2);
    EXPECT_TRUE(states.isEmpty());
    tool.setLimit(3);
    EXPECT_TRUE(tool.isScanning());
    EXPECT_TRUE(finished(tool));
    EXPECT_THAT(below(tree, tool.entries()), ElementsAre("Sub/a", "Sub/b", "c"));
    EXPECT_EQ(LargeFilesViewModel{m_deletions}.limit(), 3) << "a restart";
}

TEST_F(SearchToolsTest, AStoredThresholdIsTakenWhenItIsKnownAndNeverScans)
{
    for (const auto& [stored, threshold] : {std::pair{QStringLiteral("oneYear"), AgeThreshold::oneYear},
                                            {QStringLiteral("OneYear"), AgeThreshold::oneMonth},
                                            {QStringLiteral("2"), AgeThreshold::oneMonth}}) {
        Settings::write(QStringLiteral("nm.threshold"), stored);
        EXPECT_EQ(NodeModulesViewModel{m_deletions}.threshold(), threshold) << stored.toStdString();
    }
    const TemporaryTree tree{file("new/node_modules/x", 5000), file("old/node_modules/x", 9000),
                             folder("old/node_modules").modifiedAt(1'600'000'000)};
    NodeModulesViewModel tool{m_deletions};
    scan(tool, tree.url());
    EXPECT_THAT(below(tree, tool.entries()), ElementsAre("old/node_modules", "new/node_modules"));
    EXPECT_EQ(tool.oldEntries(), std::vector{tool.entries()[0]});

    const QSignalSpy states{&tool, &FolderTool::stateChanged};
    tool.setThreshold(AgeThreshold::sixMonths);
    EXPECT_EQ(tool.oldTotalSize(), tool.entries()[0].sizeBytes);
    EXPECT_TRUE(states.isEmpty());
    EXPECT_EQ(NodeModulesViewModel{m_deletions}.threshold(), AgeThreshold::sixMonths) << "a restart";
}

TEST_F(SearchToolsTest, EcosystemsAreLoadedWithWhatIsKnownAndAllWhenNothingIs)
{
    const std::set<Ecosystem> all{Ecosystem::all.begin(), Ecosystem::all.end()};
    EXPECT_EQ(BuildCachesViewModel{m_deletions}.enabledEcosystems(), all);
    Settings::write(QStringLiteral("bc.ecosystems"),
                    QStringList{QStringLiteral("rust"), QStringLiteral("cobol")});
    const TemporaryTree tree{file("p/target/x", 5000), file("p/dist/node_modules/x", 9000)};
    BuildCachesViewModel tool{m_deletions};
    EXPECT_EQ(tool.enabledEcosystems(), std::set<Ecosystem>{Ecosystem::rust});
    scan(tool, tree.url());
    EXPECT_THAT(below(tree, tool.entries()), ElementsAre("p/target"));

    const QSignalSpy states{&tool, &FolderTool::stateChanged};
    tool.setEnabledEcosystems({Ecosystem::rust});
    EXPECT_TRUE(states.isEmpty());
    tool.setEnabledEcosystems({Ecosystem::rust, Ecosystem::javascript});
    EXPECT_TRUE(finished(tool));
    EXPECT_THAT(below(tree, tool.entries()), ElementsAre("p/dist", "p/target"));
    tool.setEnabledEcosystems({});
    EXPECT_TRUE(finished(tool));
    EXPECT_EQ(tool.state(), ToolState::loaded());
    EXPECT_TRUE(tool.entries().empty());
    EXPECT_EQ(BuildCachesViewModel{m_deletions}.enabledEcosystems(), all) << "an empty list loads as all";
}

TEST_F(SearchToolsTest, TheChipOfAKindThatIsGoneStaysUntilItIsLetGoOf)
{
    const TemporaryTree tree{file("film.mp4", 90'000), file("Album/a.jpg", 50'000), file("b.jpg", 40'000)};
    LargeFilesViewModel tool{m_deletions};
    const std::unique_ptr<ListToolScreen> screen{makeLargeFilesScreen(tool)};
    ListToolScreen& view = *screen;
    view.resize(900, 600);
    view.show();
    scan(tool, tree.url());
    const auto chip = [&view](const char* text) { return visibleButton(view, QString::fromUtf8(text)); };
    EXPECT_EQ(chip("Audio · 0"), nullptr);
    chip("Images · 2")->click();
    tool.deleteSelected({tree.url("Album/a.jpg"), tree.url("b.jpg")}, true);
    ASSERT_TRUE(waitUntil(&tool, &ScanToolViewModel::removalChanged, [&tool] { return !tool.removal(); }));
    ASSERT_NE(chip("Images · 0"), nullptr);
    chip("Images · 0")->click();
    EXPECT_EQ(view.findChild<EntryTable*>()->arrangement().rowCount(), 1U);
    EXPECT_FALSE(tool.isFiltering());
}

TEST_F(SearchToolsTest, AHistoryGoesWithAWarning)
{
    const TemporaryTree tree{file("one/.git/objects", 90'000)};
    GitReposViewModel tool{m_deletions};
    const std::unique_ptr<ListToolScreen> screen{makeGitReposScreen(tool)};
    scan(tool, tree.url());
    screen->askDeletion({tool.entries()[0]}, DeleteConfirmation::Default::trash);
    EXPECT_TRUE(screen->findChild<DeleteConfirmation*>()->accessibleDescription().contains(
        QStringLiteral("historique")));
}

} // namespace

} // namespace tallyroom
