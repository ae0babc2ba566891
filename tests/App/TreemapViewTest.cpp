#include "App/TreemapViewScene.h"

#include <QAccessible>
#include <QContextMenuEvent>
#include <QSignalSpy>

#include <gmock/gmock.h>

namespace tallyroom {

namespace {

using testing::ElementsAre;

using TreemapViewTest = TreemapViewScene;

TEST_F(TreemapViewTest, AClickOnlyMakesCurrentAndTheBoxOrCtrlChecks)
{
    show(sixEntries());
    const QPointF gap = view.tileRect(tile("a")).topRight() + QPointF{0.5, 50};
    QTest::mouseClick(&view, Qt::LeftButton, {}, gap.toPoint());
    click("b");
    EXPECT_THAT(log, ElementsAre("at a", "at b")) << "a gap belongs to the tile before it";
    log.clear();
    const QPoint box = boxOf("b");
    QTest::mouseClick(&view, Qt::LeftButton, {}, box);
    QTest::mouseClick(&view, Qt::LeftButton, Qt::ControlModifier, centre("c"));
    EXPECT_THAT(log, ElementsAre("check b", "at c", "check c"));
    log.clear();
    QTest::mouseClick(&view, Qt::LeftButton, {}, box);
    QTest::mouseDClick(&view, Qt::LeftButton, {}, box);
    QTest::mouseRelease(&view, Qt::LeftButton, {}, box);
    EXPECT_THAT(log, ElementsAre("at b", "check b", "check b")) << "two quick clicks on a box are two clicks";
    log.clear();
    click("d");
    QTest::mouseDClick(&view, Qt::LeftButton, {}, centre("d"));
    QTest::mouseRelease(&view, Qt::LeftButton, {}, centre("d"));
    EXPECT_THAT(log, ElementsAre("at d", "open d"));
    EXPECT_EQ(selection.urls(), (std::unordered_set{urlOf("b"), urlOf("c")}));
}

TEST_F(TreemapViewTest, AClickThatEndsOnAnotherTileChecksNothing)
{
    show(sixEntries());
    QTest::mousePress(&view, Qt::LeftButton, Qt::ControlModifier, centre("a"));
    QTest::mouseRelease(&view, Qt::LeftButton, Qt::ControlModifier, centre("b"));
    EXPECT_TRUE(selection.urls().empty());

    // The pointer rests, but the scan puts another tile under it.
    const QPoint place = centre("a");
    QTest::mousePress(&view, Qt::LeftButton, Qt::ControlModifier, place);
    show(listOf({{"z", 90}, {"a", 10}}));
    QTest::mouseRelease(&view, Qt::LeftButton, Qt::ControlModifier, place);
    EXPECT_TRUE(selection.urls().empty());

    click("z");
    show(sixEntries());
    QTest::mouseDClick(&view, Qt::LeftButton, {}, place);
    EXPECT_THAT(log, testing::Not(testing::Contains("open a")))
        << "the second click met another tile: it is a first one";
}

TEST_F(TreemapViewTest, ArrowKeysMoveToTheTileBesideAndBack)
{
    show(sixEntries());
    const auto press = [this](std::initializer_list<Qt::Key> keys) {
        log.clear();
        std::ranges::for_each(keys, [this](Qt::Key key) { QTest::keyClick(&view, key); });
        return log;
    };
    using enum Qt::Key;
    EXPECT_THAT(press({Key_Down}), ElementsAre("at a")) << "without a current tile, to the largest";
    EXPECT_THAT(press({Key_Right, Key_Down, Key_Right, Key_Right, Key_Right}),
                ElementsAre("at b", "at d", "at e", "at f"));
    EXPECT_THAT(press({Key_Left, Key_Left, Key_Up, Key_Up, Key_Left, Key_Left}),
                ElementsAre("at e", "at d", "at b", "at a"));
    EXPECT_THAT(press({Key_End, Key_Up, Key_Down}), ElementsAre("at f", "at c", "at f"));
    EXPECT_THAT(press({Key_Left, Key_Left, Key_Left, Key_Right}), ElementsAre("at e", "at d", "at a", "at d"))
        << "the way back is at the level one came on";
}

TEST_F(TreemapViewTest, TheCurrentTileIsKnownByLocationAndNotByPlace)
{
    show(sixEntries());
    click("c");
    log.clear();
    replace(listOf({{"new", 500}, {"c", 300}, {"a", 60}}));
    EXPECT_EQ(view.currentEntry()->name, "c");
    EXPECT_TRUE(log.empty());

    replace(listOf({{"new", 500}, {"a", 60}}));
    EXPECT_EQ(log.size(), 1U) << "deleted: the tile that took its place is current";
    EXPECT_TRUE(view.currentEntry());

    give({});
    EXPECT_EQ(log.back(), "at nothing");
}

TEST_F(TreemapViewTest, DrawsLargerFirstAndNothingWithoutASize)
{
    std::vector<Entry> edited =
        listOf({{"small", 1}, {"zero", 0}, {"big", 9}, {"negative", -5}, {"mid", 4}}).toVector();
    std::ranges::reverse(edited); // such a list is no longer ranked
    show(EntryList{edited});
    EXPECT_THAT(drawn(), ElementsAre("big", "mid", "small"));
    show(listOf({{"zero", 0}}));
    EXPECT_THAT(drawn(), ElementsAre());
    view.grab(); // the calm message, and no division by zero
}

TEST_F(TreemapViewTest, AFilteredMapKeepsTheSharesOfTheWholeFolder)
{
    view.hide();
    view.setEntries(sixEntries(), {1, 5});
    view.show();
    EXPECT_THAT(drawn(), ElementsAre("b", "f"));
    EXPECT_NEAR(view.scene().share(tile("b")), 0.2, 0.0001);
    EXPECT_NEAR(view.scene().share(tile("f")), 1.0 / 15, 0.0001);
}

TEST_F(TreemapViewTest, OfABurstOfListsTheLastIsShownInTheEnd)
{
    EntryList::Builder builder;
    for (int arrived = 1; arrived <= 50; ++arrived) {
        const std::string name = std::to_string(arrived);
        builder.append({urlOf(name), name, arrived, false});
        give(builder.snapshot());
    }
    EXPECT_LT(drawn().size(), 50U) << "each list is laid out: a scan would use the processor up";
    ASSERT_TRUE(QTest::qWaitFor([this] { return drawn().size() == 50; }));
    EXPECT_EQ(drawn().front(), "50");
}

TEST_F(TreemapViewTest, TheMenuKeyOpensTheMenuOfTheCurrentTile)
{
    QSignalSpy spy{&view, &TreemapView::contextMenuRequested};
    show(sixEntries());
    QTest::keyClick(&view, Qt::Key_End);
    QContextMenuEvent menu{QContextMenuEvent::Keyboard, {}, {}};
    QCoreApplication::sendEvent(&view, &menu);
    ASSERT_EQ(spy.size(), 1);
    EXPECT_EQ(spy[0][0].value<Entry>().name, "f");
    EXPECT_EQ(view.mapFromGlobal(spy[0][1].toPoint()), centre("f"));
}

TEST_F(TreemapViewTest, AssistiveTechnologyKeepsItsTilesWhileTheListChanges)
{
    show(sixEntries());
    selection.setUrls({urlOf("b")});
    QAccessibleInterface* const map = QAccessible::queryAccessibleInterface(&view);
    ASSERT_EQ(map->childCount(), 6);
    QAccessibleInterface* const tile = map->child(1);
    EXPECT_EQ(tile->text(QAccessible::Name), QStringLiteral("b, 30 o"));
    EXPECT_TRUE(tile->state().checked);
    EXPECT_EQ(map->childAt(view.mapToGlobal(centre("b")).x(), view.mapToGlobal(centre("b")).y()), tile);
    tile->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_THAT(log, ElementsAre("open b"));

    replace(listOf({{"b", 1}, {"a", 2}, {"c", 3}}));
    EXPECT_EQ(map->indexOfChild(tile), 2);
    EXPECT_EQ(tile->text(QAccessible::Name), QStringLiteral("b, 1 o"));
    EXPECT_EQ(map->child(2), tile);
    replace(listOf({{"a", 2}}));
    EXPECT_EQ(map->childCount(), 1);
    EXPECT_EQ(map->child(1), nullptr);
}

} // namespace

} // namespace tallyroom
