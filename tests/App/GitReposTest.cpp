#include "Tools/GitRepos/GitRepos.h"

#include "App/EventWait.h"
#include "Deletion/DeleteConfirmation.h"
#include "Rows/EntryTable.h"
#include "Settings/Settings.h"
#include "Support/GitTree.h"
#include "Tools/Frame/ListToolScreen.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace tallyroom {

namespace {

class GitReposTest : public testing::Test {
protected:
    /// Opens the tree and waits until the state of every repository is known.
    void SetUp() override
    {
        Settings::store().clear();
        FileScanner::clearCache();
        ASSERT_TRUE(m_tree.isMade());
        m_screen->resize(1200, 900);
        m_screen->show();
        m_tool.open(m_tree.url());
        ASSERT_TRUE(waitUntil(&m_tool, &FolderTool::stateChanged, [this] { return !m_tool.isScanning(); }));
        ASSERT_FALSE(m_tool.entries().empty());
        ASSERT_TRUE(waitUntil(&m_tool, &GitReposViewModel::repositoryStatesChanged, [this] {
            return std::ranges::all_of(m_tool.entries(), [this](const Entry& entry) {
                return m_tool.repositoryState(entry.url) != nullptr;
            });
        }));
    }

    [[nodiscard]] Entry repository(const std::string& name) const
    {
        const FileUrl url = m_tree.url(name + "/.git");
        return *std::ranges::find(m_tool.entries(), url, &Entry::url);
    }

    [[nodiscard]] QString spoken(const std::string& name) const
    {
        auto& table = *m_screen->findChild<EntryTable*>();
        EXPECT_TRUE(table.setCurrentEntry(m_tree.url(name + "/.git"))) << name;
        return table.currentIndex().data(Qt::AccessibleTextRole).toString();
    }

    [[nodiscard]] QString question(const std::vector<Entry>& entries) const
    {
        m_screen->askDeletion(entries, DeleteConfirmation::Default::trash);
        auto* const dialog = m_screen->findChild<DeleteConfirmation*>();
        QString text = dialog->accessibleDescription();
        delete dialog;
        return text;
    }

    GitTree m_tree;
    DeletionRunner m_deletions;
    GitReposViewModel m_tool{m_deletions};
    std::unique_ptr<ListToolScreen> m_screen{makeGitReposScreen(m_tool)};
};

TEST_F(GitReposTest, EachRowSaysWhatIsNowhereElseAndTheDialogNamesThoseThatWouldLoseIt)
{
    for (const auto& [name, words] : std::vector<std::pair<std::string, QString>>{
             {"ahead", QStringLiteral("2 commits non poussés")},
             {"other-branch", QStringLiteral("1 commit non poussé")},
             {"lonely", QStringLiteral("sans dépôt distant")},
             {"stashes", QStringLiteral("modifications en réserve (stash)")},
             {"worktrees", QStringLiteral("en dépend")},
             {"broken", QStringLiteral("état inconnu")}}) {
        EXPECT_TRUE(spoken(name).contains(words)) << name << ": " << spoken(name).toStdString();
    }
    EXPECT_FALSE(spoken("pushed").contains(QStringLiteral("pouss")));

    const QString danger = question({repository("pushed"), repository("ahead"), repository("broken")});
    EXPECT_TRUE(danger.contains(QStringLiteral("• ahead : 2 commits non poussés"))) << danger.toStdString();
    EXPECT_TRUE(danger.contains(QStringLiteral("• broken : état inconnu")));
    EXPECT_FALSE(danger.contains(QStringLiteral("• pushed")));
    EXPECT_TRUE(question({repository("pushed")}).contains(QStringLiteral("aussi dans un dépôt distant")));
}

} // namespace

} // namespace tallyroom
