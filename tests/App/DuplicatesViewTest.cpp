#include "Tools/Duplicates/DuplicatesView.h"

#include "App/DuplicatesScene.h"
#include "App/ScreenWords.h"
#include "Controls/OptionMenu.h"
#include "Deletion/DeleteConfirmation.h"
#include "Deletion/FailureList.h"
#include "Deletion/StatusBanner.h"
#include "Duplicates/DuplicateExport.h"
#include "Rows/EntryRows.h"
#include "Rows/Selection.h"
#include "Text/SizeText.h"
#include "Tools/Duplicates/DuplicateTableModel.h"

#include <QCheckBox>
#include <QFileDialog>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>

#include <algorithm>
#include <filesystem>
#include <gmock/gmock.h>

namespace tallyroom {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

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

TEST_F(DuplicatesViewTest, TheHeaderTellsWhatComesFreeAndWhetherTheListIsWhole)
{
    const auto told = [this](const QString& beginning) {
        const QStringList texts =
            visibleTexts(*view).filter(QRegularExpression{QStringLiteral("^") + beginning});
        return texts.isEmpty() ? QString{} : texts.front();
    };
    const auto scanAgain = [this] {
        tool->refresh();
        waitForScan();
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

TEST_F(DuplicatesViewTest, AnotherMinimumSizeIsStoredOfferedAndScansAgainTheSameOneDoesNot)
{
    const QSignalSpy states{tool.get(), &FolderTool::stateChanged};
    tool->setMinimumSize(1);
    EXPECT_TRUE(states.isEmpty());
    tool->setMinimumSize(300);
    waitForScan();
    EXPECT_THAT(listed(), ElementsAre("a/big,b/big", "c/medium,x/medium,x/medium link"));
    DuplicatesViewModel restarted{m_deletions};
    EXPECT_EQ(restarted.minimumSize(), 300);
    const DuplicatesView own{restarted};
    const QList<QAction*> sizes = own.findChild<OptionMenu*>()->menu()->actions();
    EXPECT_TRUE(std::ranges::any_of(sizes, [](const QAction* one) { return one->text() == sizeText(300); }));
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
    activate(*dialog);
    word->setFocus();
    QTest::keyClick(word, Qt::Key_Space);
    QTest::keyClick(word, Qt::Key_Return); // is "Annuler" here, whatever is ticked
    EXPECT_FALSE(tool->removal().has_value() || dialog->isVisible());
    EXPECT_TRUE(trash->isEnabled());
    trash->click();
    waitForRemoval();
    EXPECT_FALSE(exists("a/big") || exists("b/big") || exists("d/small"));
}

TEST_F(DuplicatesViewTest, WhatIsNotCertainStaysAndTheReasonsAreAClickAway)
{
    write("a/big", "grown since " + big); // the copy to keep
    write("e/small", "S");
    remove({"b/big", "e/small", "x/medium"});
    EXPECT_TRUE(exists("b/big") && exists("e/small"));
    EXPECT_FALSE(exists("x/medium"));
    EXPECT_EQ(tool->statusMessage(), QStringLiteral("1 mis à la corbeille, 2 en échec."));
    button(view->findChild<StatusBanner*>(), QStringLiteral("Détails…"))->click();
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

TEST_F(DuplicatesViewTest, ExportsTheGroupsThatTheFilterShows)
{
    tool->setSearchText(QStringLiteral("small"));
    view->exportEntries();
    Q_EMIT view->findChild<QFileDialog*>()->fileSelected(QString::fromStdString(m_trash.path("list.csv")));
    ASSERT_TRUE(QTest::qWaitFor([this] { return m_trash.exists("list.csv"); }, 20'000));
    const DuplicateGroup& group = tool->groups()[2];
    std::string expected = DuplicateExport::header();
    for (const Entry& entry : group.entries) {
        expected += "\n" + DuplicateExport::line(group, entry);
    }
    EXPECT_EQ(m_trash.content("list.csv"), expected);
}

} // namespace

} // namespace tallyroom
