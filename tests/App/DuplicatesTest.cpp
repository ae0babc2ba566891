#include "App/EventWait.h"
#include "App/ScreenWords.h"
#include "Controls/OptionMenu.h"
#include "Deletion/DeleteConfirmation.h"
#include "Deletion/FailureList.h"
#include "Deletion/StatusBanner.h"
#include "Rows/EntryRows.h"
#include "Rows/Selection.h"
#include "Scanning/FileScanner.h"
#include "Settings/PersistedSettings.h"
#include "Support/TemporaryTree.h"
#include "Text/SizeText.h"
#include "Tools/Duplicates/DuplicateTableModel.h"
#include "Tools/Duplicates/DuplicatesView.h"

#include <QCheckBox>
#include <QFileDialog>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>

#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tallyroom {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

/// A tool on a tree of three groups, the most wasteful first: a big pair, three medium files of which two are
/// one file, and a small pair.
class DuplicatesTest : public testing::Test {
protected:
    void SetUp() override
    {
        Settings::store().clear();
        FileScanner::clearCache();
        qputenv("XDG_DATA_HOME", QByteArray::fromStdString(m_trash.path()));
        tool = std::make_unique<DuplicatesViewModel>(m_deletions);
        tool->setMinimumSize(1);
    }

    void TearDown() override { qunsetenv("XDG_DATA_HOME"); }

    void scan()
    {
        tool->open(tree.url());
        ASSERT_TRUE(waitUntil(tool.get(), &FolderTool::stateChanged, [this] { return !tool->isScanning(); }));
    }

    [[nodiscard]] std::string relative(const FileUrl& url) const
    {
        return url.path().substr(tree.path().size() + 1);
    }

    /// "a,b" for each group.
    [[nodiscard]] std::vector<std::string> listed() const
    {
        std::vector<std::string> groups;
        for (const DuplicateGroup& group : tool->groups()) {
            std::string names;
            for (const Entry& entry : group.entries) {
                names += (names.empty() ? "" : ",") + relative(entry.url);
            }
            groups.push_back(names);
        }
        return groups;
    }

    [[nodiscard]] std::vector<std::string> redundant() const
    {
        std::vector<std::string> names;
        for (const FileUrl& url : tool->redundantURLs()) {
            names.push_back(relative(url));
        }
        return names;
    }

    UrlSet urls(std::initializer_list<std::string_view> names) const
    {
        UrlSet set;
        for (const std::string_view name : names) {
            set.insert(tree.url(name));
        }
        return set;
    }

    void waitForRemoval()
    {
        ASSERT_TRUE(
            waitUntil(tool.get(), &ScanToolViewModel::removalChanged, [this] { return !tool->removal(); }));
    }

    void remove(std::initializer_list<std::string_view> names, bool permanently = false)
    {
        tool->deleteSelected(urls(names), permanently);
        waitForRemoval();
    }

    [[nodiscard]] bool exists(std::string_view name) const
    {
        return std::filesystem::exists(tree.url(name).path());
    }

    void write(std::string_view name, const std::string& content) const
    {
        std::ofstream{tree.url(name).path()} << content;
    }

    TemporaryTree m_trash;
    DeletionRunner m_deletions;
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

TEST_F(DuplicatesTest, ListsGroupsByWasteAndCountsHardLinksAsNoGain)
{
    scan();
    EXPECT_THAT(listed(), ElementsAre("a/big,b/big", "c/medium,x/medium,x/medium link", "d/small,e/small"));
    EXPECT_EQ(tool->totalWasted(), 1'000 + 600 + 1);
    EXPECT_EQ(tool->totalReclaimable(), 1'000 + 300 + 1);
    EXPECT_EQ(tool->scanned(), 8);
    EXPECT_FALSE(tool->isHashing());
    EXPECT_EQ(tool->allEntries().size(), 7U);
}

TEST_F(DuplicatesTest, TheFilterKeepsGroupsWholeAndChecksCopiesThatItDoesNotMatch)
{
    scan();
    tool->setSearchText(QStringLiteral("B/BIG"));
    EXPECT_THAT(tool->filteredGroups(), ElementsAre(0));
    EXPECT_THAT(redundant(), ElementsAre("b/big"));
    tool->setSearchText(QStringLiteral("a/big"));
    EXPECT_THAT(redundant(), ElementsAre("b/big"));
    EXPECT_EQ(tool->totalWasted(), 1'601); // of all groups
    tool->setSearchText({});
    EXPECT_THAT(redundant(), UnorderedElementsAre("b/big", "x/medium", "x/medium link", "e/small"));
}

TEST_F(DuplicatesTest, AnotherMinimumSizeIsStoredAndScansAgainTheSameOneDoesNot)
{
    scan();
    QSignalSpy states{tool.get(), &FolderTool::stateChanged};
    tool->setMinimumSize(1);
    EXPECT_EQ(states.count(), 0);
    tool->setMinimumSize(300);
    ASSERT_TRUE(waitUntil(tool.get(), &FolderTool::stateChanged, [this] { return !tool->isScanning(); }));
    EXPECT_EQ(tool->groups().size(), 2U);
    EXPECT_EQ(DuplicatesViewModel{m_deletions}.minimumSize(), 300);
}

TEST_F(DuplicatesTest, WhatWasTrashedComesBackWithItsGroups)
{
    scan();
    const std::vector<DuplicateGroup> before = tool->groups();
    remove({"b/big", "x/medium", "d/small"});
    EXPECT_THAT(listed(), ElementsAre("c/medium,x/medium link"));
    EXPECT_EQ(tool->statusMessage(), QStringLiteral("3 élément(s) · 1 Ko mis à la corbeille."));
    EXPECT_FALSE(exists("b/big"));
    ASSERT_TRUE(tool->canUndo());

    tool->undoDeletion();
    waitForRemoval();
    EXPECT_EQ(tool->groups(), before);
    EXPECT_EQ(tool->statusMessage(), QStringLiteral("Suppression annulée."));
    EXPECT_TRUE(exists("b/big") && exists("x/medium") && exists("d/small"));
    EXPECT_FALSE(tool->canUndo());
    // What came back is known as the very file that was digested: it may go again.
    remove({"b/big"});
    EXPECT_THAT(tool->failures(), IsEmpty());
}

TEST_F(DuplicatesTest, WhatCannotComeBackIsNotListedAgain)
{
    scan();
    remove({"b/big", "e/small"});
    write("b/big", "occupied");
    tool->undoDeletion();
    waitForRemoval();
    EXPECT_EQ(tool->statusMessage(), QStringLiteral("Restauration partielle : 1 en échec."));
    EXPECT_THAT(listed(), ElementsAre("c/medium,x/medium,x/medium link", "d/small,e/small"));
}

TEST_F(DuplicatesTest, APermanentRemovalEndsTheUndoOfTheOneBefore)
{
    scan();
    remove({"b/big"});
    remove({"e/small"}, true);
    EXPECT_FALSE(tool->canUndo());
    EXPECT_THAT(listed(), ElementsAre("c/medium,x/medium,x/medium link"));
    write("b/big", big);
    scan();
    EXPECT_THAT(listed(), testing::Contains("a/big,b/big")) << "it is there again";
}

TEST_F(DuplicatesTest, WhatIsNotCertainStaysAndSaysWhy)
{
    scan();
    write("a/big", "grown since " + big); // the copy to keep
    write("e/small", "S");
    remove({"b/big", "e/small", "x/medium"});
    EXPECT_TRUE(exists("b/big"));
    EXPECT_TRUE(exists("e/small"));
    EXPECT_FALSE(exists("x/medium"));
    ASSERT_EQ(tool->failures().size(), 2U);
    EXPECT_EQ(tool->failures()[0].message, "la copie à garder a changé ou n'existe plus");
    EXPECT_EQ(tool->failures()[1].message, "ce fichier a changé depuis l'analyse");
    EXPECT_EQ(tool->statusMessage(), QStringLiteral("1 mis à la corbeille, 2 en échec."));
    tool->dismissStatus();
    EXPECT_THAT(tool->failures(), IsEmpty());
}

TEST_F(DuplicatesTest, ARemovalThatEndsDuringTheNextScanLeavesNothingGoneInItsList)
{
    scan();
    tool->deleteSelected(urls({"b/big"}), false);
    tool->refresh();
    waitForRemoval();
    EXPECT_EQ(tool->statusMessage(), QStringLiteral("1 élément(s) · 1 Ko mis à la corbeille."));
    ASSERT_TRUE(waitUntil(tool.get(), &FolderTool::stateChanged, [this] { return !tool->isScanning(); }));
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
    tool->open(m_trash.url());
    EXPECT_EQ(progress.count(), 1);
}

TEST_F(DuplicatesTest, WhatIsSaidOfLinksAndOfTheTrashIsWhatIsChecked)
{
    const std::string text = std::string(2'000, 't');
    tree.add({file("0data/Trash/files/text", text), folder("0data/Trash/info"), link("data", "0data"),
              file("docs/text", text), hardLink("docs/text link", "docs/text"), file("other/text", text)});
    qputenv("XDG_DATA_HOME", QByteArray::fromStdString(tree.path("data")));
    scan();
    tool->setSearchText(QStringLiteral("docs"));
    EXPECT_THAT(redundant(), ElementsAre("other/text"));
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
    scan();
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
    EXPECT_TRUE(exists("a/big"));
}

/// The screen on the tool's three groups.
class DuplicatesViewTest : public DuplicatesTest {
protected:
    void SetUp() override
    {
        DuplicatesTest::SetUp();
        scan();
        view = std::make_unique<DuplicatesView>(*tool);
        view->resize(1'000, 700);
        view->show();
    }

    [[nodiscard]] EntryRows& rows() const { return *view->findChild<EntryRows*>(); }

    [[nodiscard]] QString spoken(int row, int column = DuplicateTableModel::nameColumn) const
    {
        return rows().model()->index(row, column).data(Qt::AccessibleTextRole).toString();
    }

    [[nodiscard]] QPushButton* button(const QWidget* parent, const QString& text) const
    {
        for (QPushButton* const one : parent->findChildren<QPushButton*>()) {
            if (one->text().contains(text)) {
                return one;
            }
        }
        return nullptr;
    }

    [[nodiscard]] DeleteConfirmation* ask(std::initializer_list<std::string_view> names) const
    {
        view->selection().setUrls(urls(names));
        view->askDeletion(view->selection().checkedEntries(), DeleteConfirmation::Default::trash);
        return view->findChild<DeleteConfirmation*>();
    }

    std::unique_ptr<DuplicatesView> view;
};

TEST_F(DuplicatesViewTest, ChecksAllCopiesButTheFirstAndSaysWhichAreKept)
{
    ASSERT_EQ(rows().model()->rowCount(), 3 + 7);
    EXPECT_THAT(spoken(0).toStdString(), testing::HasSubstr("2 × 1 Ko"));
    QTest::mouseClick(button(view.get(), QStringLiteral("Cocher les doublons (garder 1 par groupe)")),
                      Qt::LeftButton);
    EXPECT_EQ(view->selection().urls(), tool->redundantURLs());
    EXPECT_THAT(spoken(1).toStdString(), testing::HasSubstr("conservé"));
    EXPECT_THAT(spoken(1, DuplicateTableModel::checkColumn).toStdString(), testing::StartsWith("Cocher /"));
    EXPECT_THAT(spoken(2).toStdString(), testing::Not(testing::HasSubstr("conservé")));
    EXPECT_THAT(spoken(5).toStdString(), testing::Not(testing::HasSubstr("lien physique")));
    EXPECT_THAT(spoken(6).toStdString(), testing::HasSubstr("lien physique, rien à récupérer"));
}

TEST_F(DuplicatesViewTest, TheHeaderTellsWhatComesFreeAndWhetherTheListIsWhole)
{
    const auto told = [this](const QString& beginning) {
        const QStringList texts =
            visibleTexts(*view).filter(QRegularExpression{QStringLiteral("^") + beginning});
        return texts.isEmpty() ? QString{} : texts.front();
    };
    const auto scanAgain = [this] {
        tool->refresh();
        ASSERT_TRUE(waitUntil(tool.get(), &FolderTool::stateChanged, [this] { return !tool->isScanning(); }));
    };
    const QString expected =
        QStringLiteral("3 groupes · %1 récupérables (%2 en double, liens physiques compris)")
            .arg(sizeText(1'301), sizeText(1'601));
    EXPECT_EQ(told(QStringLiteral("3 groupes")), expected);
    scanAgain();
    EXPECT_EQ(told(QStringLiteral("3 groupes")), expected) << "not the sum of both searches";
    EXPECT_EQ(told(QStringLiteral("Liste incomplète")), QString{});

    const std::filesystem::path folder = tree.url("links").path();
    std::filesystem::create_directory(folder);
    for (std::int64_t i = 0; i < DuplicateFinder::defaultMaxTrackedFiles; ++i) {
        std::filesystem::create_hard_link(tree.url("lonely").path(), folder / std::to_string(i));
    }
    scanAgain();
    EXPECT_NE(told(QStringLiteral("Liste incomplète")), QString{});
}

TEST_F(DuplicatesViewTest, AMinimumSizeOfOnesOwnIsOffered)
{
    tool->setMinimumSize(12'345);
    const DuplicatesView own{*tool};
    QStringList sizes;
    for (const QAction* const action : own.findChild<OptionMenu*>()->menu()->actions()) {
        sizes << action->text();
    }
    EXPECT_TRUE(sizes.contains(sizeText(12'345))) << sizes.join(u'|').toStdString();
}

TEST_F(DuplicatesViewTest, KeysWalkTheRowsAndSpaceChecksACopyOrAGroup)
{
    rows().setFocus();
    QTest::keyClick(&rows(), Qt::Key_Down);
    ASSERT_EQ(rows().currentRow(), 0);
    QTest::keyClick(&rows(), Qt::Key_Space);
    EXPECT_EQ(view->selection().urls(), urls({"b/big"}));
    QTest::keyClick(&rows(), Qt::Key_Space);
    EXPECT_THAT(view->selection().urls(), IsEmpty());
    QTest::keyClick(&rows(), Qt::Key_Down);
    QTest::keyClick(&rows(), Qt::Key_Space);
    EXPECT_EQ(view->selection().urls(), urls({"a/big"}));
}

TEST_F(DuplicatesViewTest, LosingEveryCopyIsAskedOnceMore)
{
    DeleteConfirmation* dialog = ask({"b/big", "d/small"});
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(dialog->findChild<QCheckBox*>(), nullptr);
    EXPECT_TRUE(button(dialog, QStringLiteral("Mettre à la corbeille"))->isEnabled());
    delete dialog;

    dialog = ask({"a/big", "b/big", "d/small"});
    auto* const word = dialog->findChild<QCheckBox*>();
    ASSERT_NE(word, nullptr);
    EXPECT_EQ(word->text(), QStringLiteral("Supprimer aussi la dernière copie de 1 groupe"));
    QPushButton* const trash = button(dialog, QStringLiteral("Mettre à la corbeille"));
    EXPECT_FALSE(trash->isEnabled());
    word->click();
    QTest::keyClick(dialog, Qt::Key_Return); // is "Annuler" here, whatever is ticked
    EXPECT_FALSE(tool->removal().has_value() || dialog->isVisible());
    EXPECT_TRUE(trash->isEnabled());
    trash->click();
    waitForRemoval();
    EXPECT_FALSE(exists("a/big") || exists("b/big") || exists("d/small"));
}

TEST_F(DuplicatesViewTest, ReasonsAreAClickAwayFromTheReport)
{
    write("a/big", "changed");
    remove({"b/big"});
    const auto* const banner = view->findChild<StatusBanner*>();
    ASSERT_TRUE(banner->isVisible());
    button(banner, QStringLiteral("Détails…"))->click();
    const auto* const list = view->findChild<FailureList*>();
    ASSERT_NE(list, nullptr);
    const QString text = list->findChild<QPlainTextEdit*>()->toPlainText();
    EXPECT_TRUE(text.contains(QStringLiteral("b/big")));
    EXPECT_TRUE(text.contains(QStringLiteral("la copie à garder a changé")));
}

TEST_F(DuplicatesViewTest, ExportsTheGroupsThatTheFilterShows)
{
    tool->setSearchText(QStringLiteral("small"));
    view->exportEntries();
    auto* const dialog = view->findChild<QFileDialog*>();
    ASSERT_NE(dialog, nullptr);
    const QString path = QString::fromStdString(m_trash.path() + "/list.csv");
    Q_EMIT dialog->fileSelected(path);
    ASSERT_TRUE(QTest::qWaitFor([&path] { return QFile::exists(path); }, 20'000));
    QFile file{path};
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QList<QByteArray> lines = file.readAll().split('\n');
    ASSERT_EQ(lines.size(), 3);
    EXPECT_EQ(lines[0], QByteArray{"Groupe,Nom,Chemin,Taille (octets),Taille,Type,Modifié"});
    const QByteArray group = lines[1].split(',').front();
    EXPECT_EQ(QByteArray::fromStdString(tool->groups()[2].id), group);
    EXPECT_TRUE(lines[1].contains(tree.url("d/small").path().c_str()));
    EXPECT_TRUE(lines[2].startsWith(group + ","));
}

} // namespace

} // namespace tallyroom
