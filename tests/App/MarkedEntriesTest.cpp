#include "App/EventWait.h"
#include "App/ScreenWords.h"
#include "Deletion/DeleteConfirmation.h"
#include "Rows/EntryTable.h"
#include "Rows/Selection.h"
#include "Settings/Settings.h"
#include "Support/CacheTree.h"
#include "Tools/BuildCaches/BuildCaches.h"
#include "Tools/Frame/ListToolScreen.h"
#include "Tools/NodeModules/NodeModules.h"

#include <QPushButton>
#include <QTest>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tallyroom {

namespace {

using testing::ElementsAre;
using testing::UnorderedElementsAre;

class MarkedEntriesTest : public testing::Test {
protected:
    void SetUp() override
    {
        Settings::store().clear();
        FileScanner::clearCache();
    }

    /// Opens a folder, shows the screen and waits for its rows.
    static void show(ListToolScreen& screen, ListToolViewModel& tool, const FileUrl& folder)
    {
        screen.resize(1200, 900);
        screen.show();
        tool.open(folder);
        ASSERT_TRUE(waitUntil(&tool, &FolderTool::stateChanged, [&tool] { return !tool.isScanning(); }));
        EntryTable& table = *screen.findChild<EntryTable*>();
        ASSERT_TRUE(waitUntil(&table, &EntryRows::rowsChanged, [&] {
            return table.isUpToDate() && table.arrangement().rowCount() == tool.entryCount();
        }));
    }

    static std::vector<std::string> checked(const ListToolScreen& screen, const TemporaryTree& tree)
    {
        std::vector<std::string> paths;
        for (const Entry& entry : screen.selection().checkedEntries()) {
            paths.push_back(entry.url.path().substr(tree.path().size() + 1));
        }
        return paths;
    }

    static int rowOf(const EntryTable& table, const FileUrl& url)
    {
        for (std::size_t row = 0; row < table.arrangement().rowCount(); ++row) {
            if (table.arrangement().entry(row).url == url) {
                return static_cast<int>(row);
            }
        }
        return -1;
    }

    static void clickBox(EntryTable& table, int row, Qt::KeyboardModifiers keys = {})
    {
        QTest::mouseClick(table.viewport(), Qt::LeftButton, keys,
                          table.visualRect(table.model()->index(row, EntryTableModel::checkColumn)).center());
    }

    DeletionRunner m_deletions;
};

TEST_F(MarkedEntriesTest, OnlyItsOwnBoxChecksWhatNothingProvesToBeACache)
{
    const TemporaryTree tree{file("a/package.json", 2), file("a/dist/x", 90'000),
                             file("house/build/x", 50'000), file("c/package.json", 2),
                             file("c/dist/x", 9000)};
    dateAll(tree, 1'600'000'000);
    BuildCachesViewModel tool{m_deletions};
    const std::unique_ptr<ListToolScreen> screen{makeBuildCachesScreen(tool)};
    show(*screen, tool, tree.url());
    EntryTable& table = *screen->findChild<EntryTable*>();
    ASSERT_EQ(table.arrangement().entry(1).url, tree.url("house/build"));

    visibleButton(*screen, QStringLiteral("Tout sélectionner"))->click();
    EXPECT_THAT(checked(*screen, tree), UnorderedElementsAre("a/dist", "c/dist"));
    screen->selection().clear();
    QTest::keyClick(&table, Qt::Key_A, Qt::ControlModifier);
    EXPECT_THAT(checked(*screen, tree), UnorderedElementsAre("a/dist", "c/dist"));
    screen->selection().clear();
    clickBox(table, 0);
    clickBox(table, 2, Qt::ShiftModifier);
    EXPECT_THAT(checked(*screen, tree), UnorderedElementsAre("a/dist", "c/dist")) << "a range across it";
    clickBox(table, 1);
    EXPECT_THAT(checked(*screen, tree), UnorderedElementsAre("a/dist", "house/build", "c/dist"));
    visibleButton(*screen, QStringLiteral("Tout sélectionner"))->click();
    EXPECT_EQ(screen->selection().count(), 3U) << "what has its own check keeps it";

    const auto tip = [&](int row, int role) {
        return table.model()->index(row, EntryTableModel::nameColumn).data(role).toString();
    };
    EXPECT_TRUE(tip(0, Qt::ToolTipRole).contains(QStringLiteral("npm run build")));
    EXPECT_FALSE(tip(1, Qt::ToolTipRole).contains(QStringLiteral("npm")));
    EXPECT_TRUE(tip(1, Qt::AccessibleTextRole).contains(QStringLiteral("à vérifier")));
    screen->askDeletion(screen->selection().checkedEntries(), DeleteConfirmation::Default::trash);
    const QString question = screen->findChild<DeleteConfirmation*>()->accessibleDescription();
    EXPECT_TRUE(question.contains(QStringLiteral("1 élément à vérifier"))) << question.toStdString();
    EXPECT_EQ(question.count(QStringLiteral(", à vérifier)")), 1) << question.toStdString();
}

} // namespace

} // namespace tallyroom
