#include "Tools/DiskUsage/Treemap/TreemapView.h"

#include "App/EventWait.h"
#include "Rows/EntryArrangement.h"

#include <QAccessible>
#include <QContextMenuEvent>
#include <QEventLoop>
#include <QHelpEvent>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>
#include <QToolTip>

#include <gmock/gmock.h>
#include <numeric>

namespace tallyroom {

namespace {

using testing::ElementsAre;

FileUrl urlOf(const std::string& name)
{
    return FileUrl{"/home/moi/" + name};
}

using Sizes = std::vector<std::pair<std::string, std::int64_t>>;

/// As a scan sends it: in the order of arrival, ranked when read.
EntryList listOf(const Sizes& sizes)
{
    EntryList::Builder builder;
    for (const auto& [name, size] : sizes) {
        builder.append({urlOf(name), name, size, false});
    }
    return builder.snapshot();
}

/// In a square-ish view: a to the left, to its right b and c above d, e and f.
EntryList sixEntries()
{
    return listOf({{"a", 60}, {"b", 30}, {"c", 30}, {"d", 10}, {"e", 10}, {"f", 10}});
}

class TreemapViewTest : public testing::Test {
protected:
    TreemapViewTest()
    {
        QObject::connect(&view, &TreemapView::selectionToggled, &view, [this](const FileUrl& url) {
            log.push_back("check " + std::string{url.lastPathComponent()});
            selection.toggle(url);
        });
        QObject::connect(&view, &TreemapView::activated, &view,
                         [this](const Entry& entry) { log.push_back("open " + entry.name); });
        QObject::connect(&view, &TreemapView::currentChanged, &view, [this] {
            const auto current = view.currentEntry();
            log.push_back("at " + (current ? current->name : "nothing"));
        });
        view.resize(604, 404);
        view.show();
    }

    /// Shows the list at once, whatever came before.
    void show(const EntryList& entries)
    {
        give({});
        view.hide();
        give(entries);
        view.show();
    }

    /// Shows the list at once in place of the one before.
    void replace(const Sizes& sizes)
    {
        view.hide();
        give(listOf(sizes));
        view.show();
    }

    QPoint centre(const std::string& name)
    {
        const auto tile = view.scene().find(urlOf(name));
        EXPECT_TRUE(tile) << name;
        return tile ? view.tileRect(*tile).center().toPoint() : QPoint{};
    }

    /// Gives the list to the map and to the checks, as a screen does.
    void give(const EntryList& entries)
    {
        const EntryArrangement all{{entries, {}, {}, {}, {}}};
        selection.follow(entries, all.shown(), all.shownBytes());
        view.setEntries(entries);
    }

    QPoint boxOf(const std::string& name)
    {
        const auto box = TreemapPainter::checkBox(view.tileRect(*view.scene().find(urlOf(name))));
        EXPECT_TRUE(box) << name;
        return box.value_or(QRectF{}).center().toPoint();
    }

    void click(const std::string& name) { QTest::mouseClick(&view, Qt::LeftButton, {}, centre(name)); }

    std::vector<std::string> drawn() const
    {
        std::vector<std::string> names;
        for (std::size_t tile = 0; tile < view.scene().tiles().size(); ++tile) {
            names.push_back(view.scene().entry(tile).name);
        }
        return names;
    }

    QString toolTipAt(const QPoint& position)
    {
        QHelpEvent help{QEvent::ToolTip, position, view.mapToGlobal(position)};
        QCoreApplication::sendEvent(&view, &help);
        return QToolTip::text();
    }

    Selection selection;
    TreemapView view{selection};
    std::vector<std::string> log;
};

TEST_F(TreemapViewTest, AClickOnlyMakesCurrentAndTheBoxOrCtrlChecks)
{
    show(sixEntries());
    const QPointF gap = view.tileRect(*view.scene().find(urlOf("a"))).topRight() + QPointF{0.5, 50};
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

TEST_F(TreemapViewTest, KeysCheckAndOpenAndLeaveTheOwnersShortcutsAlone)
{
    show(sixEntries());
    QTest::keyClick(&view, Qt::Key_End);
    QTest::keyClick(&view, Qt::Key_Space);
    QTest::keyClick(&view, Qt::Key_Return);
    EXPECT_THAT(log, ElementsAre("at f", "check f", "open f"));
    QKeyEvent back{QEvent::KeyPress, Qt::Key_Left, Qt::AltModifier};
    QCoreApplication::sendEvent(&view, &back);
    EXPECT_FALSE(back.isAccepted());
    EXPECT_EQ(log.size(), 3U);
}

TEST_F(TreemapViewTest, TheCurrentTileIsKnownByLocationAndNotByPlace)
{
    show(sixEntries());
    click("c");
    log.clear();
    replace({{"new", 500}, {"c", 300}, {"a", 60}});
    EXPECT_EQ(view.currentEntry()->name, "c");
    EXPECT_TRUE(log.empty());

    replace({{"new", 500}, {"a", 60}});
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
    EXPECT_THAT(toolTipAt(centre("b")).toStdString(), testing::HasSubstr("30 o · 20,0 %"));
    EXPECT_THAT(toolTipAt(centre("f")).toStdString(), testing::HasSubstr("10 o · 6,7 %"));
}

TEST_F(TreemapViewTest, RepaintingTilesLeavesTheSameMapAsPaintingItAnew)
{
    const EntryList entries = listOf(
        {{"films", 500}, {"a very long name of a file.iso", 300}, {"b.jpg", 100}, {"c.cpp", 20}, {"d", 1}});
    view.setFocusPolicy(Qt::NoFocus);
    view.clearFocus();
    show(entries);
    const QImage before = view.grab().toImage();
    for (const char* const name : {"films", "c.cpp", "d"}) {
        QTest::mouseMove(&view, centre(name));
        selection.toggle(urlOf(name));
    }
    QTest::mouseMove(&view, centre("films"));
    selection.toggle(urlOf("b.jpg")); // by another view of the list
    EXPECT_NE(view.grab().toImage(), before);
    QTest::mouseMove(&view, centre("d"));
    const QRect label = view.tileRect(*view.scene().find(urlOf("films"))).toRect().adjusted(5, 5, -60, -5);
    EXPECT_NE(view.grab(label).toImage(), QPixmap::fromImage(before).copy(label).toImage())
        << "the name of a checked tile has a tick";
    QEvent leave{QEvent::Leave};
    QCoreApplication::sendEvent(&view, &leave);

    TreemapView fresh{selection};
    fresh.resize(view.size());
    fresh.setEntries(entries);
    EXPECT_EQ(view.grab().toImage(), fresh.grab().toImage());
    selection.clear();
    EXPECT_EQ(view.grab().toImage(), before);
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

    replace({{"b", 1}, {"a", 2}, {"c", 3}});
    EXPECT_EQ(map->indexOfChild(tile), 2);
    EXPECT_EQ(tile->text(QAccessible::Name), QStringLiteral("b, 1 o"));
    EXPECT_EQ(map->child(2), tile);
    replace({{"a", 2}});
    EXPECT_EQ(map->childCount(), 1);
    EXPECT_EQ(map->child(1), nullptr);
}

/// Every pixel of the area counted once, by whom it belongs to.
std::vector<int> owners(const TreemapScene& scene, const QRect& area)
{
    std::vector<int> counts(static_cast<std::size_t>(area.width() * area.height()));
    const auto count = [&](const QRect& cell) {
        const QRect inside = cell & area;
        for (int y = inside.top(); y <= inside.bottom(); ++y) {
            for (int x = inside.left(); x <= inside.right(); ++x) {
                ++counts[static_cast<std::size_t>((y - area.y()) * area.width() + x - area.x())];
            }
        }
    };
    std::ranges::for_each(scene.tiles(), [&](const TreemapScene::Tile& tile) { count(tile.cell); });
    std::ranges::for_each(scene.crumbs().cells, count);
    return counts;
}

TEST(TreemapScene, EveryPixelHasOneOwnerAtAnyScaleAndCount)
{
    for (const double scale : {1.0, 1.25, 2.0}) {
        for (const int count : {1, 7, 300, 100'000}) {
            Sizes entries;
            for (int index = 0; index < count; ++index) {
                entries.emplace_back(std::to_string(index), 1 + (index * 7919LL % 1013) * (index % 17));
            }
            std::vector<std::uint32_t> all(entries.size());
            std::iota(all.begin(), all.end(), 0U);
            const QRect area{2, 2, static_cast<int>(701 * scale), static_cast<int>(403 * scale)};
            const TreemapScene scene{listOf(entries), all, area, scale};
            EXPECT_TRUE(std::ranges::all_of(owners(scene, area), [](int owned) { return owned == 1; }))
                << count << " at " << scale;
            EXPECT_EQ(scene.tiles().size() + scene.crumbs().count, entries.size());
            for (std::size_t tile = 0; tile < scene.tiles().size(); ++tile) {
                ASSERT_TRUE(area.contains(scene.painted(tile))) << "tile " << tile << " at " << scale;
            }
        }
    }
}

} // namespace

} // namespace tallyroom
