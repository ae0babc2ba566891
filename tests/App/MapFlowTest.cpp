#include "App/WindowScene.h"
#include "Deletion/DeleteConfirmation.h"
#include "Rows/Selection.h"
#include "Tools/DiskUsage/Treemap/TreemapStatusLine.h"
#include "Tools/DiskUsage/Treemap/TreemapView.h"

#include <gmock/gmock.h>

namespace tallyroom {

namespace {

using testing::ElementsAre;
using testing::UnorderedElementsAre;

/// The explorer's map on a folder of the disk.
class MapFlowTest : public WindowScene {
protected:
    MapFlowTest()
    {
        scan("disk-usage", tree.url());
        click("Treemap");
    }

    TreemapView& map() { return *window->findChild<TreemapView*>(); }

    /// Waits until the tile is drawn, or drawn no more.
    [[nodiscard]] bool draws(const char* path, bool isDrawn = true)
    {
        return waitUntil(&map(), &TreemapView::laidOut,
                         [&] { return map().scene().find(tree.url(path)).has_value() == isDrawn; });
    }

    void check(const char* path)
    {
        ASSERT_TRUE(draws(path)) << path;
        map().setCurrentTile(*map().scene().find(tree.url(path)));
        QTest::keyClick(&map(), Qt::Key_Space);
    }

    TemporaryTree tree{file("photos/2023/a.jpg", 3_MiB), file("photos/2023/b.jpg", 2_MiB),
                       file("photos/c.jpg", 1_MiB), file("film.mov", 5_MiB)};
};

TEST_F(MapFlowTest, WhatIsCheckedFurtherDownIsWhatIsDeletedAndComesBackThere)
{
    check("photos/2023/b.jpg");
    check("film.mov");
    QTest::keyClick(&map(), Qt::Key_Delete);
    auto* const question = dialog<DeleteConfirmation>();
    ASSERT_NE(question, nullptr);
    EXPECT_THAT(question->pending().urls,
                UnorderedElementsAre(tree.url("film.mov"), tree.url("photos/2023/b.jpg")));
    answer<DeleteConfirmation>("Mettre à la corbeille");
    waitForRemoval();
    EXPECT_THAT(tree.names("photos/2023"), ElementsAre("a.jpg"));
    EXPECT_THAT(trash.names("Trash/files"), UnorderedElementsAre("b.jpg", "film.mov"));
    EXPECT_TRUE(draws("photos/2023/b.jpg", false));
    EXPECT_EQ(shown<ToolScreen>().findChild<EntryTable*>()->selection().count(), 0U);

    undo(store().diskUsage);
    EXPECT_TRUE(draws("photos/2023/b.jpg"));
    std::vector<std::string> listed;
    store().diskUsage.forEachEntry([&](const Entry& entry) { listed.push_back(entry.name); });
    EXPECT_THAT(listed, UnorderedElementsAre("photos", "film.mov")) << "it lies further down";
}

TEST_F(MapFlowTest, WhatIsCheckedFurtherDownShowsInTheTableAndOutlivesARefreshWhereItExists)
{
    check("photos/2023/a.jpg");
    check("photos/2023/b.jpg");
    click("Tableau");
    const Selection& selection = shown<EntryTable>().selection();
    const auto said = [this](int role) {
        const QAbstractItemModel& rows = *shown<EntryTable>().model();
        return rows.index(0, role == Qt::CheckStateRole ? 0 : 1).data(role);
    };
    ASSERT_EQ(rows().front(), "photos");
    EXPECT_EQ(said(Qt::CheckStateRole), Qt::PartiallyChecked);
    EXPECT_TRUE(
        said(Qt::AccessibleTextRole).toString().endsWith(QStringLiteral("contient des éléments cochés")));

    tree.remove("photos/2023/b.jpg");
    tree.add(file("photos/2023/a.jpg", 6_MiB));
    press(Qt::Key_F5);
    waitForScan(store().diskUsage);
    EXPECT_TRUE(QTest::qWaitFor([&] { return selection.count() == 1 && selection.bytes() == 6_MiB; }, 20'000))
        << selection.count() << " of " << selection.bytes();
    EXPECT_EQ(said(Qt::CheckStateRole), Qt::PartiallyChecked);
    QTest::keyClick(&shown<EntryTable>(), Qt::Key_Home);
    QTest::keyClick(&shown<EntryTable>(), Qt::Key_Space);
    EXPECT_EQ(said(Qt::CheckStateRole), Qt::Checked) << "all of it";
    EXPECT_EQ(selection.count(), 1U);
}

TEST_F(MapFlowTest, WhatIsSwappedFurtherDownIsNotDeleted)
{
    check("photos/2023/b.jpg");
    tree.remove("photos/2023/b.jpg");
    tree.add(file("photos/2023/b.jpg", "something else"));
    store().diskUsage.deleteEntries(
        shown<ToolScreen>().findChild<EntryTable*>()->selection().checkedEntries(), true, {});
    waitForRemoval();
    EXPECT_TRUE(tree.exists("photos/2023/b.jpg"));
}

TEST_F(MapFlowTest, ADoubleClickGoesInAtAnyDepthAndBackspaceOutAgain)
{
    ASSERT_TRUE(draws("photos/2023/b.jpg"));
    const std::size_t year = *map().scene().find(tree.url("photos/2023"));
    const QPoint place = map().tileRect(year).topLeft().toPoint() + QPoint{12, 8};
    QTest::mouseClick(&map(), Qt::LeftButton, {}, place);
    QTest::mouseDClick(&map(), Qt::LeftButton, {}, place);
    QTest::mouseRelease(&map(), Qt::LeftButton, {}, place);
    ASSERT_TRUE(waitUntil(&map(), &TreemapView::laidOut, [this] { return map().scene().topCount() == 2; }));
    EXPECT_EQ(store().diskUsage.currentURL(), tree.url("photos/2023"));
    QTest::keyClick(&map(), Qt::Key_Backspace);
    EXPECT_EQ(store().diskUsage.currentURL(), tree.url());
    EXPECT_TRUE(draws("photos/2023/b.jpg"));
    const auto* const status = window->findChild<TreemapStatusLine*>();
    map().setCurrentTile(*map().scene().find(tree.url("photos/2023/a.jpg")));
    EXPECT_TRUE(status->text().contains(QStringLiteral("photos/2023/a.jpg"))) << status->text().toStdString();
    EXPECT_TRUE(status->text().contains(QStringLiteral("60,0 % de « 2023 » · 27,3 % du total")))
        << status->text().toStdString();
}

} // namespace

} // namespace tallyroom
