#include "App/ToolScene.h"
#include "Controls/OptionMenu.h"
#include "Deletion/DeleteConfirmation.h"
#include "Rows/EntryTable.h"
#include "Rows/EntryTableModel.h"
#include "Support/CacheTree.h"
#include "Support/Cases.h"
#include "Support/GitTree.h"
#include "Text/FileUrlText.h"
#include "Tools/BuildCaches/BuildCaches.h"
#include "Tools/Frame/ListToolScreen.h"
#include "Tools/GitRepos/GitRepos.h"
#include "Tools/LargeFiles/LargeFiles.h"
#include "Tools/NodeModules/NodeModules.h"

#include <QAbstractButton>
#include <QMenu>
#include <QSignalSpy>
#include <QTest>

#include <functional>
#include <gmock/gmock.h>

namespace tallyroom {

namespace {

using testing::ElementsAre;

class SearchToolsTest : public ToolScene {
protected:
    /// Scans a folder in a screen, and waits for its rows.
    static void show(ListToolScreen& screen, ListToolViewModel& tool, const FileUrl& folder)
    {
        screen.resize(1200, 900);
        screen.show();
        scan(tool, folder);
        EntryTable& table = *screen.findChild<EntryTable*>();
        ASSERT_TRUE(waitUntil(&table, &EntryRows::rowsChanged, [&] {
            return table.isUpToDate() && table.arrangement().rowCount() == tool.entryCount();
        }));
    }

    static QString question(ListToolScreen& screen, const std::vector<Entry>& entries)
    {
        screen.askDeletion(entries, DeleteConfirmation::Default::trash);
        auto* const dialog = screen.findChild<DeleteConfirmation*>();
        QString text = dialog->accessibleDescription();
        delete dialog;
        return text;
    }
};

TEST_F(SearchToolsTest, AnotherLimitIsKeptAndScansAgainTheSameDoesNeither)
{
    const TemporaryTree tree{file("Sub/a", 50'000), file("Sub/b", 40'000), file("c", 30'000)};
    LargeFilesViewModel tool{deletions};
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
    waitForScan(tool);
    EXPECT_THAT(below(tree, tool.entries()), ElementsAre("Sub/a", "Sub/b", "c"));
    EXPECT_EQ(LargeFilesViewModel{deletions}.limit(), 3) << "a restart";
}

TEST_F(SearchToolsTest, AStoredThresholdIsTakenWhenItIsKnownAndNeverScans)
{
    for (const auto& [stored, threshold] : {std::pair{QStringLiteral("oneYear"), AgeThreshold::oneYear},
                                            {QStringLiteral("OneYear"), AgeThreshold::oneMonth},
                                            {QStringLiteral("2"), AgeThreshold::oneMonth}}) {
        Settings::write(QStringLiteral("nm.threshold"), stored);
        NodeModulesViewModel loaded{deletions};
        EXPECT_EQ(loaded.threshold(), threshold) << stored.toStdString();
        loaded.setThreshold(threshold);
        EXPECT_EQ(Settings::text(QStringLiteral("nm.threshold")),
                  QString::fromUtf8(AgeThreshold{threshold}.rawValue().data()))
            << "chosen again";
    }
    const TemporaryTree tree{file("new/node_modules/x", 5000), file("old/node_modules/x", 9000),
                             folder("old/node_modules").modifiedAt(1'600'000'000)};
    NodeModulesViewModel tool{deletions};
    scan(tool, tree.url());
    EXPECT_THAT(below(tree, tool.entries()), ElementsAre("old/node_modules", "new/node_modules"));
    EXPECT_EQ(tool.oldEntries(), std::vector{tool.entries()[0]});

    const QSignalSpy states{&tool, &FolderTool::stateChanged};
    tool.setThreshold(AgeThreshold::sixMonths);
    EXPECT_EQ(tool.oldTotalSize(), tool.entries()[0].sizeBytes);
    EXPECT_TRUE(states.isEmpty());
    EXPECT_EQ(NodeModulesViewModel{deletions}.threshold(), AgeThreshold::sixMonths) << "a restart";
}

TEST_F(SearchToolsTest, EcosystemsAreLoadedWithWhatIsKnownAndAllWhenNothingIs)
{
    const std::set<Ecosystem> all{Ecosystem::all.begin(), Ecosystem::all.end()};
    EXPECT_EQ(BuildCachesViewModel{deletions}.enabledEcosystems(), all);
    Settings::write(QStringLiteral("bc.ecosystems"),
                    QStringList{QStringLiteral("rust"), QStringLiteral("cobol")});
    const TemporaryTree tree{file("p/target/x", 5000), file("p/dist/node_modules/x", 9000)};
    BuildCachesViewModel tool{deletions};
    EXPECT_EQ(tool.enabledEcosystems(), std::set<Ecosystem>{Ecosystem::rust});
    scan(tool, tree.url());
    EXPECT_THAT(below(tree, tool.entries()), ElementsAre("p/target"));

    const QSignalSpy states{&tool, &FolderTool::stateChanged};
    tool.setEnabledEcosystems({Ecosystem::rust});
    EXPECT_TRUE(states.isEmpty());
    tool.setEnabledEcosystems({Ecosystem::rust, Ecosystem::javascript});
    waitForScan(tool);
    EXPECT_THAT(below(tree, tool.entries()), ElementsAre("p/dist", "p/target"));
    tool.setEnabledEcosystems({});
    waitForScan(tool);
    EXPECT_EQ(tool.state(), ToolState::loaded());
    EXPECT_TRUE(tool.entries().empty());
    EXPECT_EQ(BuildCachesViewModel{deletions}.enabledEcosystems(), all) << "an empty list loads as all";
}

TEST_F(SearchToolsTest, TheChipOfAKindThatIsGoneStaysUntilItIsLetGoOf)
{
    const TemporaryTree tree{file("film.mp4", 90'000), file("Album/a.jpg", 50'000), file("b.jpg", 40'000)};
    LargeFilesViewModel tool{deletions};
    const std::unique_ptr<ListToolScreen> screen{makeLargeFilesScreen(tool)};
    ListToolScreen& view = *screen;
    show(view, tool, tree.url());
    const auto chip = [&view](const char* text) { return visibleButton(view, QString::fromUtf8(text)); };
    EXPECT_EQ(chip("Audio · 0"), nullptr);
    chip("Images · 2")->click();
    tool.deleteSelected({tree.url("Album/a.jpg"), tree.url("b.jpg")}, true);
    waitForRemoval(tool);
    ASSERT_NE(chip("Images · 0"), nullptr);
    chip("Images · 0")->click();
    EXPECT_EQ(view.findChild<EntryTable*>()->arrangement().rowCount(), 1U);
    EXPECT_FALSE(tool.isFiltering());
}

TEST_F(SearchToolsTest, AKindOrAnAgeThatTheLimitHasCutOffIsSearchedAgain)
{
    const TemporaryTree tree{file("film.mp4", 90'000), file("other.mp4", 80'000), file("a.jpg", 50'000),
                             file("old.jpg", 40'000).modifiedAt(1'600'000'000)};
    LargeFilesViewModel tool{deletions};
    const std::unique_ptr<ListToolScreen> screen{makeLargeFilesScreen(tool)};
    const auto shown = [&](const std::optional<std::string>& kind, const std::optional<AgeThreshold>& age) {
        tool.setCategory(kind);
        tool.setAge(age);
        waitForScan(tool);
        return below(tree, tool.filteredEntries());
    };
    tool.setLimit(3);
    show(*screen, tool, tree.url());
    EXPECT_THAT(shown("image", {}), ElementsAre("a.jpg", "old.jpg"));
    EXPECT_NE(visibleButton(*screen, QStringLiteral("Vidéos · 2")), nullptr) << "the way to another kind";
    EXPECT_THAT(shown("image", AgeThreshold::oneYear), ElementsAre("old.jpg"));
    EXPECT_THAT(shown("video", AgeThreshold::oneYear), ElementsAre());
    QMenu& ages = *screen->findChild<OptionMenu*>()->menu();
    ages.actions().back()->trigger();
    visibleButton(*screen, QStringLiteral("Effacer le filtre"))->click();
    waitForScan(tool);
    EXPECT_THAT(below(tree, tool.entries()), ElementsAre("film.mp4", "other.mp4", "a.jpg"));
    ages.popup({});
    EXPECT_TRUE(ages.actions().front()->isChecked()) << "all ages, though not by the menu";
    ages.hide();

    tool.setLimit(4);
    waitForScan(tool);
    tool.setLimit(5);
    waitForScan(tool);
    const QSignalSpy states{&tool, &FolderTool::stateChanged};
    EXPECT_THAT(shown("video", {}), ElementsAre("film.mp4", "other.mp4"));
    EXPECT_TRUE(states.isEmpty()) << "a list that holds all files need not be made again";
    tool.openCategory(tree.url(), FileKind{FileKind::image}.rawValue());
    ASSERT_TRUE(waitUntil(&tool, &FolderTool::stateChanged, [&] { return tool.isScanning(); }));
    waitForScan(tool);
    EXPECT_THAT(below(tree, tool.entries()), ElementsAre("a.jpg", "old.jpg"));
}

TEST_F(SearchToolsTest, OnlyItsOwnBoxChecksWhatNothingProvesToBeACache)
{
    const TemporaryTree tree{file("a/package.json", 2), file("a/dist/x", 90'000),
                             file("house/build/x", 50'000), file("c/package.json", 2),
                             file("c/dist/x", 9000)};
    dateAll(tree, 1'600'000'000);
    BuildCachesViewModel tool{deletions};
    const std::unique_ptr<ListToolScreen> screen{makeBuildCachesScreen(tool)};
    show(*screen, tool, tree.url());
    EntryTable& table = *screen->findChild<EntryTable*>();
    const auto clickBox = [&table](int row, Qt::KeyboardModifiers keys = {}) {
        QTest::mouseClick(table.viewport(), Qt::LeftButton, keys,
                          table.visualRect(table.model()->index(row, EntryTableModel::checkColumn)).center());
    };
    const auto checked = [&] { return below(tree, screen->selection().checkedEntries()); };
    const std::vector<std::string> proven{"a/dist", "c/dist"};
    const std::vector<std::string> all{"a/dist", "house/build", "c/dist"};
    QAbstractButton* const everything = visibleButton(*screen, QStringLiteral("Tout sélectionner"));
    const std::vector<std::function<void()>> ways{
        [&] { everything->click(); }, [&] { QTest::keyClick(&table, Qt::Key_A, Qt::ControlModifier); },
        [&] { clickBox(0), clickBox(2, Qt::ShiftModifier); }}; // a range across it
    for (const auto& check : ways) {
        screen->selection().clear();
        check();
        EXPECT_EQ(checked(), proven);
    }
    clickBox(1);
    EXPECT_EQ(checked(), all);
    everything->click();
    EXPECT_EQ(checked(), all) << "what has its own check keeps it";

    const auto tip = [&](int row, int role) {
        return table.model()->index(row, EntryTableModel::nameColumn).data(role).toString();
    };
    EXPECT_TRUE(tip(0, Qt::ToolTipRole).contains(QStringLiteral("npm run build")));
    EXPECT_FALSE(tip(1, Qt::ToolTipRole).contains(QStringLiteral("npm")));
    EXPECT_TRUE(tip(1, Qt::AccessibleTextRole).contains(QStringLiteral("à vérifier")));
    const QString asked = question(*screen, screen->selection().checkedEntries());
    EXPECT_TRUE(asked.contains(QStringLiteral("1 élément à vérifier"))) << asked.toStdString();
    EXPECT_EQ(asked.count(QStringLiteral(", à vérifier)")), 1) << asked.toStdString();
}

TEST_F(SearchToolsTest, EachRepositorySaysWhatIsNowhereElseAndTheDialogNamesThoseThatWouldLoseIt)
{
    const GitTree tree;
    ASSERT_TRUE(tree.isMade());
    GitReposViewModel tool{deletions};
    const std::unique_ptr<ListToolScreen> screen{makeGitReposScreen(tool)};
    show(*screen, tool, tree.url());
    ASSERT_TRUE(waitUntil(&tool, &ScanToolViewModel::remarksChanged, [&] {
        return std::ranges::all_of(
            tool.entries(), [&](const Entry& entry) { return tool.repositoryState(entry.url) != nullptr; });
    }));
    EntryTable& table = *screen->findChild<EntryTable*>();
    const auto spoken = [&](const std::string& name) {
        EXPECT_TRUE(table.setCurrentEntry(tree.url(name + "/.git"))) << name;
        return table.currentIndex().data(Qt::AccessibleTextRole).toString();
    };
    for (const auto& row : cases("what a repository says")) {
        EXPECT_TRUE(spoken(row[0]).contains(QString::fromStdString(row[1])))
            << row[0] << ": " << spoken(row[0]).toStdString();
    }
    EXPECT_FALSE(spoken("pushed").contains(QStringLiteral("pouss")));

    const auto repository = [&](const std::string& name) {
        return *std::ranges::find(tool.entries(), tree.url(name + "/.git"), &Entry::url);
    };
    const QString danger = question(
        *screen, {repository("pushed"), repository("ahead"), repository("broken"), repository("worktrees")});
    EXPECT_TRUE(danger.contains(QStringLiteral("historique")));
    EXPECT_TRUE(danger.contains(QStringLiteral("• ahead : 2 commits non poussés"))) << danger.toStdString();
    EXPECT_TRUE(danger.contains(QStringLiteral("• broken : état inconnu")));
    EXPECT_TRUE(danger.contains(QStringLiteral("copie de travail en dépend (%1)")
                                    .arg(FileUrlText::displayFromHome(tree.url("second-tree")))))
        << danger.toStdString();
    EXPECT_FALSE(danger.contains(QStringLiteral("• pushed")));
    EXPECT_TRUE(
        question(*screen, {repository("pushed")}).contains(QStringLiteral("aussi dans un dépôt distant")));
}

} // namespace

} // namespace tallyroom
