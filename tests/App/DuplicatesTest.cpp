#include "App/ToolScene.h"
#include "Controls/OptionMenu.h"
#include "Deletion/DeleteConfirmation.h"
#include "Deletion/FailureList.h"
#include "Duplicates/DuplicateExport.h"
#include "Rows/EntryRows.h"
#include "Rows/Selection.h"
#include "Text/SizeText.h"
#include "Tools/Duplicates/DuplicateTableModel.h"
#include "Tools/Duplicates/DuplicatesView.h"

#include <QCheckBox>
#include <QFileDialog>
#include <QMenu>
#include <QPlainTextEdit>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>

#include <algorithm>
#include <gmock/gmock.h>

namespace tallyroom {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

/// A tool on a tree of three groups, the most wasteful first: a big pair, three medium files of which two are
/// one file, and a small pair.
class DuplicatesTest : public ToolScene {
protected:
    void SetUp() override
    {
        tool = std::make_unique<DuplicatesViewModel>(deletions);
        tool->setMinimumSize(1);
        scan();
    }

    void scan() { ToolScene::scan(*tool, tree.url()); }

    /// "a,b" for each group.
    [[nodiscard]] std::vector<std::string> listed() const
    {
        std::vector<std::string> groups;
        for (const DuplicateGroup& group : tool->groups()) {
            std::string names;
            for (const std::string& name : below(tree, group.entries)) {
                names += (names.empty() ? "" : ",") + name;
            }
            groups.push_back(names);
        }
        return groups;
    }

    UrlSet urls(std::initializer_list<std::string_view> names) const
    {
        UrlSet set;
        for (const std::string_view name : names) {
            set.insert(tree.url(name));
        }
        return set;
    }

    void remove(std::initializer_list<std::string_view> names, bool permanently = false)
    {
        tool->deleteSelected(urls(names), permanently);
        waitForRemoval(*tool);
    }

    const std::string big = std::string(1'000, 'b');
    TemporaryTree tree{file("a/big", big),
                       file("b/big", big),
                       file("c/medium", std::string(300, 'm')),
                       file("d/small", "s"),
                       file("e/small", "s"),
                       file("lonely", "l..."),
                       file("x/medium", std::string(300, 'm')),
                       hardLink("x/medium link", "x/medium")};
    std::unique_ptr<DuplicatesViewModel> tool;
};

/// The screen on the tool's three groups.
class DuplicatesScreenTest : public DuplicatesTest {
protected:
    void SetUp() override
    {
        DuplicatesTest::SetUp();
        view = std::make_unique<DuplicatesView>(*tool);
        view->resize(1'000, 700);
        view->show();
    }

    [[nodiscard]] EntryRows& rows() const { return *view->findChild<EntryRows*>(); }

    [[nodiscard]] std::string spoken(int row, int column = DuplicateTableModel::nameColumn) const
    {
        return rows().model()->index(row, column).data(Qt::AccessibleTextRole).toString().toStdString();
    }

    [[nodiscard]] DeleteConfirmation* ask(std::initializer_list<std::string_view> names) const
    {
        view->selection().setUrls(urls(names));
        view->askDeletion(view->selection().checkedEntries(), DeleteConfirmation::Default::trash);
        return view->findChild<DeleteConfirmation*>();
    }

    std::unique_ptr<DuplicatesView> view;
};

TEST_F(DuplicatesTest, TheFilterKeepsGroupsWholeAndChecksCopiesThatItDoesNotMatch)
{
    tool->setSearchText(QStringLiteral("B/BIG"));
    EXPECT_THAT(tool->filteredGroups(), ElementsAre(0));
    EXPECT_EQ(tool->redundantURLs(), urls({"b/big"}));
    tool->setSearchText(QStringLiteral("a/big"));
    EXPECT_EQ(tool->redundantURLs(), urls({"b/big"}));
    EXPECT_EQ(tool->totalWasted(), 1'601); // of all groups
    tool->setSearchText({});
    EXPECT_EQ(tool->redundantURLs(), urls({"b/big", "x/medium", "x/medium link", "e/small"}));
}

TEST_F(DuplicatesTest, WhatWasTrashedComesBackWithItsGroups)
{
    const std::vector<DuplicateGroup> before = tool->groups();
    remove({"b/big", "x/medium", "d/small"});
    EXPECT_THAT(listed(), ElementsAre("c/medium,x/medium link"));
    EXPECT_EQ(tool->statusMessage(), QStringLiteral("3 élément(s) · 1 Ko mis à la corbeille."));
    EXPECT_FALSE(tree.exists("b/big"));
    ASSERT_TRUE(tool->canUndo());

    tool->undoDeletion();
    waitForRemoval(*tool);
    EXPECT_EQ(tool->groups(), before);
    EXPECT_EQ(tool->statusMessage(), QStringLiteral("Suppression annulée."));
    EXPECT_TRUE(tree.exists("b/big") && tree.exists("x/medium") && tree.exists("d/small"));
    EXPECT_FALSE(tool->canUndo());
    // What came back is known as the very file that was digested: it may go again.
    remove({"b/big", "e/small"});
    EXPECT_THAT(tool->failures(), IsEmpty());
    tree.add(file("b/big", "occupied"));
    tool->undoDeletion();
    waitForRemoval(*tool);
    EXPECT_EQ(tool->statusMessage(), QStringLiteral("Restauration partielle : 1 en échec."));
    EXPECT_THAT(listed(), ElementsAre("c/medium,x/medium,x/medium link", "d/small,e/small"));
}

TEST_F(DuplicatesTest, ARemovalThatEndsDuringTheNextScanLeavesNothingGoneInItsList)
{
    tool->deleteSelected(urls({"b/big"}), false);
    tool->refresh();
    waitForRemoval(*tool);
    EXPECT_EQ(tool->statusMessage(), QStringLiteral("1 élément(s) · 1 Ko mis à la corbeille."));
    waitForScan(*tool);
    EXPECT_THAT(listed(), ElementsAre("c/medium,x/medium,x/medium link", "d/small,e/small"));
    EXPECT_FALSE(tool->canUndo());
}

TEST_F(DuplicatesTest, AnotherFolderIsToldOnce)
{
    tree.add({sparseFile("huge1", 100'000_MiB), sparseFile("huge2", 100'000_MiB)});
    tool->open(tree.url());
    ASSERT_TRUE(
        waitUntil(tool.get(), &DuplicatesViewModel::progressChanged, [this] { return tool->isHashing(); }));
    const QSignalSpy progress{tool.get(), &DuplicatesViewModel::progressChanged};
    tool->open(trash.url());
    EXPECT_EQ(progress.count(), 1);
}

TEST_F(DuplicatesTest, WhatIsSaidOfLinksAndOfTheTrashIsWhatIsChecked)
{
    const std::string text = std::string(2'000, 't');
    tree.add({file("0data/Trash/files/text", text), folder("0data/Trash/info"), link("data", "0data"),
              file("docs/text", text), hardLink("docs/text link", "docs/text"), file("other/text", text)});
    const ScopedVariable otherHome{"XDG_DATA_HOME", tree.path("data")};
    scan();
    tool->setSearchText(QStringLiteral("docs"));
    EXPECT_EQ(tool->redundantURLs(), urls({"other/text"}));
    EXPECT_EQ(tool->groupsLosingAllCopies(urls({"docs/text", "docs/text link", "other/text"})), 1U);

    DuplicateTableModel model;
    model.setGroups(tool->sharedGroups(), tool->filteredGroups());
    const auto said = [&model](int row) {
        std::string texts;
        for (const EntryBadge& badge : model.badges(row)) {
            texts += (texts.empty() ? "" : ", ") + badge.text.toStdString();
        }
        return texts;
    };
    model.toggleGroup(0);
    EXPECT_EQ(model.selection().urls(), urls({"other/text"}));
    EXPECT_EQ(said(1), "conservé, dans la corbeille");
    EXPECT_EQ(said(2), "conservé");
    EXPECT_EQ(said(3), "conservé, lien physique, rien à récupérer");
    EXPECT_EQ(said(4), "");
    model.checkOthers(*model.entryAt(4));
    EXPECT_EQ(model.selection().urls(), urls({"docs/text", "docs/text link"}))
        << "the one to keep is not checked";
    EXPECT_EQ(said(4), "conservé");
    model.toggleGroup(0);
    model.toggleGroup(0);
    EXPECT_THAT(model.selection().urls(), IsEmpty());
    EXPECT_EQ(said(4), "") << "nothing is kept where nothing is checked";
}

TEST_F(DuplicatesTest, StoppingKeepsTheToolUsableAndAScanForgetsTheUndo)
{
    remove({"b/big"});
    tool->refresh();
    EXPECT_TRUE(tool->isScanning());
    EXPECT_THAT(listed(), IsEmpty());
    EXPECT_FALSE(tool->canUndo());
    tool->cancelScan();
    EXPECT_EQ(tool->state(), ToolState::loaded());
    EXPECT_FALSE(tool->isHashing());
    tool->deleteSelected(urls({"a/big"}), true); // no longer listed
    EXPECT_FALSE(tool->removal().has_value());
    EXPECT_TRUE(tree.exists("a/big"));
}

TEST_F(DuplicatesScreenTest, ChecksAllCopiesButTheFirstAndSaysWhichAreKept)
{
    ASSERT_EQ(rows().model()->rowCount(), 3 + 7);
    EXPECT_THAT(spoken(0), HasSubstr("2 × 1 Ko"));
    QTest::mouseClick(visibleButton(*view, QStringLiteral("Cocher les doublons (garder 1 par groupe)")),
                      Qt::LeftButton);
    EXPECT_EQ(view->selection().urls(), tool->redundantURLs());
    EXPECT_THAT(spoken(1), HasSubstr("conservé"));
    EXPECT_THAT(spoken(1, DuplicateTableModel::checkColumn), testing::StartsWith("Cocher /"));
    EXPECT_THAT(spoken(2), Not(HasSubstr("conservé")));
    EXPECT_THAT(spoken(5), Not(HasSubstr("lien physique")));
    EXPECT_THAT(spoken(6), HasSubstr("lien physique, rien à récupérer"));

    view->selection().clear();
    rows().setFocus();
    const auto press = [this](std::initializer_list<Qt::Key> keys) {
        std::ranges::for_each(keys, [this](Qt::Key key) { QTest::keyClick(&rows(), key); });
        return view->selection().urls();
    };
    EXPECT_EQ(press({Qt::Key_Down, Qt::Key_Space}), urls({"b/big"}))
        << "a group's row stands for its redundant ones";
    EXPECT_EQ(press({Qt::Key_Space, Qt::Key_Down, Qt::Key_Space}), urls({"a/big"}));
}

TEST_F(DuplicatesScreenTest, TheHeaderTellsWhatComesFreeAndWhetherTheListIsWhole)
{
    const auto told = [this](const QString& beginning) {
        return visibleTexts(*view).filter(QRegularExpression{u'^' + beginning}).value(0);
    };
    const QString expected =
        QStringLiteral("3 groupes · %1 récupérables (%2 en double, liens physiques compris)")
            .arg(sizeText(1'301), sizeText(1'601));
    EXPECT_EQ(told(QStringLiteral("3 groupes")), expected);
    scan();
    EXPECT_EQ(told(QStringLiteral("3 groupes")), expected) << "not the sum of both searches";
    EXPECT_EQ(told(QStringLiteral("Liste incomplète")), QString{});

    for (std::int64_t i = 0; i < DuplicateFinder::defaultMaxTrackedFiles; ++i) {
        tree.add(hardLink("links/" + std::to_string(i), "lonely"));
    }
    scan();
    EXPECT_NE(told(QStringLiteral("Liste incomplète")), QString{});
}

TEST_F(DuplicatesScreenTest, AnotherMinimumSizeIsStoredOfferedAndScansAgainTheSameOneDoesNot)
{
    const QSignalSpy states{tool.get(), &FolderTool::stateChanged};
    tool->setMinimumSize(1);
    EXPECT_TRUE(states.isEmpty());
    tool->setMinimumSize(300);
    waitForScan(*tool);
    EXPECT_THAT(listed(), ElementsAre("a/big,b/big", "c/medium,x/medium,x/medium link"));
    DuplicatesViewModel restarted{deletions};
    EXPECT_EQ(restarted.minimumSize(), 300);
    const DuplicatesView own{restarted};
    const QList<QAction*> sizes = own.findChild<OptionMenu*>()->menu()->actions();
    EXPECT_TRUE(std::ranges::any_of(sizes, [](const QAction* one) { return one->text() == sizeText(300); }));
}

TEST_F(DuplicatesScreenTest, LosingEveryCopyIsAskedOnceMore)
{
    DeleteConfirmation* dialog = ask({"b/big", "d/small"});
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(dialog->findChild<QCheckBox*>(), nullptr);
    EXPECT_TRUE(visibleButton(*dialog, QStringLiteral("Mettre à la corbeille"))->isEnabled());
    delete dialog;

    dialog = ask({"a/big", "b/big", "d/small"});
    auto* const word = dialog->findChild<QCheckBox*>();
    ASSERT_NE(word, nullptr);
    EXPECT_EQ(word->text(), QStringLiteral("Supprimer aussi la dernière copie de 1 groupe"));
    QAbstractButton* const toTrash = visibleButton(*dialog, QStringLiteral("Mettre à la corbeille"));
    EXPECT_FALSE(toTrash->isEnabled());
    activate(*dialog);
    word->setFocus();
    QTest::keyClick(word, Qt::Key_Space);
    QTest::keyClick(word, Qt::Key_Return); // is "Annuler" here, whatever is ticked
    EXPECT_FALSE(tool->removal().has_value() || dialog->isVisible());
    EXPECT_TRUE(toTrash->isEnabled());
    toTrash->click();
    waitForRemoval(*tool);
    EXPECT_FALSE(tree.exists("a/big") || tree.exists("b/big") || tree.exists("d/small"));
}

TEST_F(DuplicatesScreenTest, TheCopyThatStaysGoesElsewhereWhileTheQuestionIsOpenThenTheOthersStay)
{
    DeleteConfirmation* const dialog = ask({"x/medium", "x/medium link"});
    ASSERT_EQ(dialog->findChild<QCheckBox*>(), nullptr);
    remove({"c/medium"}, true);
    ASSERT_FALSE(tree.exists("c/medium"));
    visibleButton(*dialog, QStringLiteral("Supprimer définitivement"))->click();
    waitForRemoval(*tool);
    EXPECT_TRUE(tree.exists("x/medium") && tree.exists("x/medium link"));
}

TEST_F(DuplicatesScreenTest, WhatIsNotCertainStaysAndTheReasonsAreAClickAway)
{
    tree.add(file("a/big", "grown since " + big)); // the copy to keep
    tree.add(file("e/small", "S"));
    remove({"b/big", "e/small", "x/medium"});
    EXPECT_TRUE(tree.exists("b/big") && tree.exists("e/small"));
    EXPECT_FALSE(tree.exists("x/medium"));
    EXPECT_EQ(tool->statusMessage(), QStringLiteral("1 mis à la corbeille, 2 en échec."));
    visibleButton(*view, QStringLiteral("Détails…"))->click();
    const QString reasons = view->findChild<FailureList*>()->findChild<QPlainTextEdit*>()->toPlainText();
    const QRegularExpression both{
        QStringLiteral(
            "b/big.*La copie à garder a changé ou n’existe plus.*e/small.*Ce fichier a changé depuis "
            "l’analyse"),
        QRegularExpression::DotMatchesEverythingOption};
    EXPECT_TRUE(reasons.contains(both)) << reasons.toStdString();
    tool->dismissStatus();
    EXPECT_THAT(tool->failures(), IsEmpty());
}

TEST_F(DuplicatesScreenTest, ExportsTheGroupsThatTheFilterShows)
{
    tool->setSearchText(QStringLiteral("small"));
    view->exportEntries();
    Q_EMIT view->findChild<QFileDialog*>()->fileSelected(QString::fromStdString(trash.path("list.csv")));
    ASSERT_TRUE(QTest::qWaitFor([this] { return trash.exists("list.csv"); }, 20'000));
    const DuplicateGroup& group = tool->groups()[2];
    std::string expected = DuplicateExport::header();
    for (const Entry& entry : group.entries) {
        expected += "\n" + DuplicateExport::line(group, entry);
    }
    EXPECT_EQ(trash.content("list.csv"), expected);
}

} // namespace

} // namespace tallyroom
