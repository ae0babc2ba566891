#include "App/ToolScene.h"
#include "Rows/Selection.h"
#include "Tools/Duplicates/DuplicateTable.h"
#include "Tools/Duplicates/DuplicateTableModel.h"
#include "Tools/Duplicates/DuplicatesView.h"
#include "Tools/Duplicates/DuplicatesViewModel.h"

#include <QMenu>

#include <gmock/gmock.h>

namespace tallyroom {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

/// One group of free copies, and copies that tools keep.
class DuplicateRulesTest : public ToolScene {
protected:
    void SetUp() override
    {
        tool = std::make_unique<DuplicatesViewModel>(deletions);
        tool->setMinimumSize(1);
        scan(*tool, m_copies.url());
        ASSERT_EQ(tool->groups().size(), 2U);
    }

    [[nodiscard]] std::vector<std::string> names(const auto& urls) const
    {
        std::vector<std::string> result;
        for (const FileUrl& url : urls) {
            result.push_back(url.path().substr(m_copies.path().size() + 1));
        }
        return result;
    }

    [[nodiscard]] std::vector<std::string> redundant() const { return names(tool->redundantURLs()); }

    std::unique_ptr<DuplicatesViewModel> tool;
    const std::string big = std::string(1'000, 'b');
    TemporaryTree m_copies{file("archive/photo", big).modifiedAt(1'500'000'000),
                           file("b/c/photo", big).modifiedAt(1'400'000'000),
                           file("p", big).modifiedAt(1'600'000'000),
                           file("site/node_modules/x/photo", big).modifiedAt(1'300'000'000),
                           file("one/node_modules/lib", std::string(20'000, 'n')),
                           file("two/.venv/lib", std::string(20'000, 'n'))};
};

TEST_F(DuplicateRulesTest, EachRuleKeepsItsCopyAndTicksNothingThatToolsKeep)
{
    EXPECT_THAT(redundant(), UnorderedElementsAre("b/c/photo", "p"));
    tool->setKeepRule(KeepRule::oldest);
    EXPECT_THAT(redundant(), UnorderedElementsAre("archive/photo", "p"));
    tool->setKeepRule(KeepRule::newest);
    EXPECT_THAT(redundant(), UnorderedElementsAre("archive/photo", "b/c/photo"));
    tool->setKeepRule(KeepRule::shortestPath);
    EXPECT_THAT(redundant(), UnorderedElementsAre("archive/photo", "b/c/photo"));
    tool->setKeepRule(KeepRule::inFolder, m_copies.url("b"));
    EXPECT_THAT(redundant(), UnorderedElementsAre("archive/photo", "p"));
    tool->setKeepRule(KeepRule::inFolder, m_copies.url("arch"));
    EXPECT_THAT(redundant(), IsEmpty()) << "a folder without a copy, whose name another one begins with";
    tool->setKeepRule(KeepRule::inFolder);
    EXPECT_THAT(redundant(), IsEmpty()) << "no folder yet";
}

TEST_F(DuplicateRulesTest, AProtectedFolderIsNeverProposedAlsoAfterARestart)
{
    DuplicatesView view{*tool};
    view.resize(1200, 800);
    view.show();
    auto& table = *view.findChild<DuplicateTable*>();
    const auto take = [&](const FileUrl& copy, const QString& words) {
        const Entry entry{.url = copy, .name = std::string{copy.lastPathComponent()}};
        const std::unique_ptr<QMenu> menu = table.makeContextMenu(entry);
        for (QAction* const action : menu->actions()) {
            if (action->text().startsWith(words)) {
                action->trigger();
                return;
            }
        }
        ADD_FAILURE() << "no action " << words.toStdString();
    };
    take(m_copies.url("b/c/photo"), QStringLiteral("Ne jamais proposer"));
    EXPECT_THAT(redundant(), ElementsAre("p"));
    EXPECT_TRUE(DuplicatesViewModel{deletions}.policy().isProtected(m_copies.url("b/c/photo")));

    view.selection().setAll();
    EXPECT_THAT(names(view.selection().urls()), UnorderedElementsAre("archive/photo", "p"))
        << "all but protected and managed ones";
    take(m_copies.url("b/c/photo"), QStringLiteral("Proposer de nouveau"));
    EXPECT_THAT(redundant(), UnorderedElementsAre("b/c/photo", "p"));
}

TEST_F(DuplicateRulesTest, GroupsThatToolsKeepStandApartAndDatesAreExact)
{
    EXPECT_EQ(tool->filteredGroups().front(), 0U);
    EXPECT_EQ(tool->groups()[0].entries[0].url, m_copies.url("one/node_modules/lib")) << "the most wasteful";
    EXPECT_THAT(tool->shownGroups(), ElementsAre(1U, 0U));
    DuplicatesView view{*tool};
    view.show();
    auto& table = *view.findChild<DuplicateTable*>();
    const auto spoken = [&](int row) {
        return table.model()->index(row, 1).data(Qt::AccessibleTextRole).toString();
    };
    EXPECT_TRUE(spoken(0).contains(QStringLiteral("photo"))) << spoken(0).toStdString();
    EXPECT_TRUE(spoken(4).contains(QStringLiteral("géré par un outil"))) << spoken(4).toStdString();
    EXPECT_TRUE(spoken(5).contains(QStringLiteral("copies gérées par des outils")));
    const QString date =
        table.model()->index(1, DuplicateTableModel::detailColumn).data(Qt::ToolTipRole).toString();
    EXPECT_TRUE(date.startsWith(QStringLiteral("14 juillet 2017 à "))) << date.toStdString();
}

} // namespace

} // namespace tallyroom
