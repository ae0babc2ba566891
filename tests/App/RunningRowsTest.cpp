#include "App/EventWait.h"
#include "App/NavigatorScene.h"
#include "App/ScreenWords.h"
#include "Rows/EntryTable.h"
#include "Tools/DiskUsage/DiskUsageView.h"

#include <QMenu>
#include <QTest>

#include <gmock/gmock.h>

namespace tallyroom {

namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

/// The explorer's screen while /r is being listed: of its folders one is done, two are not.
class RunningRowsTest : public testing::Test {
protected:
    RunningRowsTest()
    {
        view.resize(900, 600);
        view.show();
        activate(view);
        scene.navigator->open(FileUrl{"/r"});
        slow = scene.listing().running->add(folderEntry("/r/slow", 0));
        other = scene.listing().running->add(folderEntry("/r/other", 0));
    }

    [[nodiscard]] EntryTable& table() { return *view.findChild<EntryTable*>(); }

    /// What a screen reader says of each row, after the name without the kind.
    [[nodiscard]] std::vector<std::string> rows()
    {
        std::vector<std::string> said;
        for (int row = 0; row < table().model()->rowCount(); ++row) {
            QStringList words = table()
                                    .model()
                                    ->index(row, 1)
                                    .data(Qt::AccessibleTextRole)
                                    .toString()
                                    .split(QStringLiteral(", "));
            words.removeAt(1);
            said.push_back(
                words.join(QStringLiteral(" ")).replace(QChar{0xa0}, QLatin1Char{' '}).toStdString());
        }
        return said;
    }

    void awaitRows(const testing::Matcher<std::vector<std::string>>& expected)
    {
        EXPECT_TRUE(QTest::qWaitFor([&] { return testing::Value(rows(), expected); }))
            << testing::PrintToString(rows());
    }

    NavigatorScene scene;
    DiskUsageView view{*scene.navigator};
    RunningFolders::Folder* slow = nullptr;
    RunningFolders::Folder* other = nullptr;
};

TEST_F(RunningRowsTest, FoldersGrowAtTheirRankFromTheStartAndAreThereOnce)
{
    awaitRows(ElementsAre(HasSubstr("other"), HasSubstr("slow")));
    slow->bytes = 2000;
    scene.receive({fileEntry("/r/file", 1000), fileEntry("/r/small", 10)});
    awaitRows(ElementsAre("slow 2 Ko en cours de mesure", "file 1 Ko non coché", "small 10 o non coché",
                          "other 0 o en cours de mesure"));
    EXPECT_THAT(visibleTexts(view).join(QLatin1Char{'|'}).toStdString(),
                AllOf(HasSubstr("2 dossiers en cours de mesure"), Not(HasSubstr("%"))));
    other->bytes = 500;
    slow->completed = 3;
    scene.receive({fileEntry("/r/file", 1000), fileEntry("/r/small", 10), folderEntry("/r/slow", 5)});
    awaitRows(ElementsAre("file 1 Ko non coché", "other 500 o en cours de mesure", "small 10 o non coché",
                          "slow 5 o non coché"));
    table().setSortOrder({EntrySortOrder::Key::name, 0, true});
    awaitRows(ElementsAre(HasSubstr("file"), HasSubstr("other"), HasSubstr("slow"), HasSubstr("small")));
    scene.navigator->setSearchText(QStringLiteral("o"));
    awaitRows(ElementsAre(HasSubstr("other"), HasSubstr("slow")));
    scene.navigator->cancelScan();
    awaitRows(ElementsAre(HasSubstr("slow")));
}

TEST_F(RunningRowsTest, WhatIsBeingMeasuredCannotBeCheckedOrDeletedButEntered)
{
    slow->bytes = 2000;
    scene.receive({fileEntry("/r/file", 1000)});
    awaitRows(Contains(HasSubstr("slow 2 Ko")));
    const auto box = [&] { return table().visualRect(table().model()->index(0, 0)).center(); };
    QTest::mouseClick(table().viewport(), Qt::LeftButton, {}, box());
    table().setFocus();
    ASSERT_TRUE(table().setCurrentEntry(FileUrl{"/r/slow"}));
    QTest::keyClick(&table(), Qt::Key_Space);
    QTest::keyClick(&table(), Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(table().selection().urls(), UrlSet{FileUrl{"/r/file"}});
    EXPECT_FALSE(table().currentEntry());
    // The reader stays on the row while others pass it.
    scene.receive({fileEntry("/r/file", 3000)});
    awaitRows(ElementsAre(HasSubstr("file"), HasSubstr("slow"), HasSubstr("other")));
    EXPECT_EQ(table().currentRow(), 1);
    slow->completed = 2;
    scene.receive({folderEntry("/r/slow", 9000), fileEntry("/r/file", 3000)});
    EXPECT_EQ(table().currentEntry().value_or(Entry{}).name, "slow");
    ASSERT_TRUE(table().setCurrentEntry(FileUrl{"/r/other"}));
    QTest::keyClick(&table(), Qt::Key_Return);
    EXPECT_EQ(scene.navigator->currentURL(), FileUrl{"/r/other"});
    EXPECT_EQ(table().model()->rowCount(), 0) << "rows of the folder that was left";
}

} // namespace

} // namespace tallyroom
