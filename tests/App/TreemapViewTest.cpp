#include "Tools/DiskUsage/Treemap/TreemapView.h"

#include "App/EventWait.h"
#include "App/OutlineMaker.h"
#include "Rows/EntryArrangement.h"
#include "Rows/EntryTableHeader.h"
#include "Shell/KeysDialog.h"

#include <QAccessible>
#include <QContextMenuEvent>
#include <QSignalSpy>
#include <QTest>
#include <QTreeWidget>
#include <QWheelEvent>

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
        QObject::connect(&view, &TreemapView::selectionToggled, &view, [this](const Entry& entry) {
            log.push_back("check " + entry.name);
            selection.toggle(entry);
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
        replace(entries);
    }

    /// Shows the list at once in place of the one before.
    void replace(const EntryList& entries)
    {
        view.hide();
        give(entries);
        view.show();
    }

    QPoint centre(const std::string& name) { return view.tileRect(tile(name)).center().toPoint(); }

    /// Gives the list to the map and to the checks, as a screen does.
    void give(const EntryList& entries)
    {
        const EntryArrangement all{{entries, {}, {}, {}, {}}};
        selection.follow(entries, all.shown(), all.shownBytes());
        std::vector<std::uint32_t> positions(entries.size());
        std::iota(positions.begin(), positions.end(), 0U);
        view.setEntries(entries, std::move(positions));
    }

    /// Shows a folder with a folder in it at once.
    void showTree()
    {
        const SharedOutline outline = outlineOf(tree, "/home/moi");
        view.setOutlines({outline});
        show(listingOf(outline));
    }

    std::size_t tile(const std::string& path)
    {
        const auto found = view.scene().find(urlOf(path));
        EXPECT_TRUE(found) << path;
        return found.value_or(0);
    }

    QPoint boxOf(const std::string& name)
    {
        const auto box = view.boxOf(tile(name));
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

    DrawnTree tree{
        "moi",
        0,
        {{"photos", 0, {{"2023", 0, {{"a.jpg", 500}, {"b.jpg", 300}}}, {"c.jpg", 90}, {"d.jpg", 80}}},
         {"film.mov", 700}}};
    Selection selection;
    TreemapView view{selection};
    std::vector<std::string> log;
};

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

TEST_F(TreemapViewTest, ATileIsCheckedAtAnyDepthAndNothingTwice)
{
    showTree();
    QTest::mouseClick(&view, Qt::LeftButton, Qt::ControlModifier, centre("photos/2023/b.jpg"));
    EXPECT_TRUE(view.isChecked(tile("photos/2023/b.jpg")));
    QTest::mouseClick(&view, Qt::LeftButton, {}, centre("photos/c.jpg"));
    QTest::keyClick(&view, Qt::Key_Space);
    EXPECT_EQ(selection.count(), 2U);
    EXPECT_EQ(selection.bytes(), 390);

    QTest::mouseClick(&view, Qt::LeftButton, {}, boxOf("photos/2023"));
    EXPECT_EQ(selection.bytes(), 890) << "b.jpg goes along with its folder";
    QTest::mouseClick(&view, Qt::LeftButton, Qt::ControlModifier, centre("photos/2023/a.jpg"));
    EXPECT_EQ(selection.bytes(), 890);
    EXPECT_TRUE(view.isCovered(tile("photos/2023/a.jpg")));
    EXPECT_THAT(selection.checkedEntries(),
                ElementsAre(testing::Field(&Entry::name, "2023"), testing::Field(&Entry::name, "c.jpg")));

    QTest::mouseClick(&view, Qt::LeftButton, {}, boxOf("photos"));
    EXPECT_EQ(selection.bytes(), 970);
    EXPECT_EQ(selection.count(), 1U);
    QTest::mouseClick(&view, Qt::LeftButton, {}, boxOf("photos"));
    EXPECT_EQ(selection.count(), 0U);
}

TEST_F(TreemapViewTest, KeysGoAmongSiblingsAndLevelsAndLeaveTheOwnersAlone)
{
    showTree();
    QTest::keyClick(&view, Qt::Key_Home);
    log.clear();
    using enum Qt::Key;
    for (const Qt::Key key :
         {Key_PageDown, Key_Right, Key_End, Key_Home, Key_PageDown, Key_PageDown, Key_PageUp, Key_Return}) {
        QTest::keyClick(&view, key);
    }
    EXPECT_EQ(log.front(), "at 2023");
    EXPECT_EQ(log.back(), "open 2023");
    EXPECT_THAT(log, testing::Not(testing::Contains("at film.mov"))) << "arrows stay within their folder";
    const auto isTakenByMap = [this](QEvent::Type type, Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        QKeyEvent event{type, key, modifiers};
        event.setAccepted(type == QEvent::KeyPress);
        QCoreApplication::sendEvent(&view, &event);
        return event.isAccepted();
    };
    EXPECT_FALSE(isTakenByMap(QEvent::KeyPress, Key_Left, Qt::AltModifier));
    EXPECT_EQ(view.currentEntry()->name, "2023");
    EXPECT_TRUE(isTakenByMap(QEvent::ShortcutOverride, Key_Escape));
    QTest::keyClick(&view, Qt::Key_Escape);
    EXPECT_EQ(view.currentEntry()->name, "photos");
    EXPECT_FALSE(isTakenByMap(QEvent::ShortcutOverride, Key_Escape))
        << "on the first level it is the owner's: it stops the scan";
}

/// The keys that the list of all keys tells in a section, and others.
QStringList toldKeys(const QString& section, QStringList keys)
{
    const QWidget none;
    const KeysDialog dialog{none, nullptr, {}, nullptr};
    const auto& list = *dialog.findChild<QTreeWidget*>();
    for (const QTreeWidgetItem* const title : list.findItems(section, Qt::MatchExactly)) {
        for (int row = 0; row < title->childCount(); ++row) {
            keys += title->child(row)->text(1).split(QStringLiteral(", "));
        }
    }
    keys.sort();
    return keys;
}

/// The keys that a widget takes, alone and with Ctrl. Before each one `prepare` is called.
QStringList takenKeys(QWidget& widget, const std::function<void()>& prepare)
{
    const auto keys = QMetaEnum::fromType<Qt::Key>();
    QStringList taken;
    for (const Qt::KeyboardModifier held : {Qt::NoModifier, Qt::ControlModifier}) {
        for (int place = 0; place < keys.keyCount(); ++place) {
            const auto key = static_cast<Qt::Key>(keys.value(place));
            prepare();
            QKeyEvent event{QEvent::KeyPress, key, held};
            QCoreApplication::sendEvent(&widget, &event);
            if (const QString name = KeyText::name(held | key); event.isAccepted() && !taken.contains(name)) {
                taken += name;
            }
        }
    }
    taken.sort();
    return taken;
}

TEST_F(TreemapViewTest, NoKeyIsTakenThatTheListOfKeysDoesNotTell)
{
    showTree();
    const auto takenByMap = takenKeys(view, [this] {
        QTest::keyClick(&view, Qt::Key_Home);
        QTest::keyClick(&view, Qt::Key_PageDown);
    });
    // And other keys for the same.
    EXPECT_EQ(takenByMap,
              toldKeys(QStringLiteral("Sur la carte"),
                       {QStringLiteral("Échap"), QStringLiteral("Ctrl+="), QStringLiteral("Ctrl+À")}));
    QWidget rows;
    EntryTableHeader header{&rows};
    EXPECT_EQ(takenKeys(header, [] {}), toldKeys(QStringLiteral("Dans les titres des colonnes"),
                                                 {QStringLiteral("Entrée"), QStringLiteral("Tab")}));
}

TEST_F(TreemapViewTest, TheWheelLooksCloserAtWhatIsUnderThePointer)
{
    showTree();
    const QPoint place = centre("photos/c.jpg");
    const QRectF before = view.tileRect(tile("photos/c.jpg"));
    QSignalSpy closer{&view, &TreemapView::lookedCloser};
    const auto turn = [&](int notches) {
        QWheelEvent wheel{place, view.mapToGlobal(place), {},   {0, 120 * notches}, {},
                          {},    Qt::NoScrollPhase,       false};
        QCoreApplication::sendEvent(&view, &wheel);
    };
    turn(6);
    const QRectF near = view.tileRect(tile("photos/c.jpg"));
    EXPECT_GT(near.width(), 3 * before.width());
    EXPECT_TRUE(near.contains(place));
    ASSERT_FALSE(closer.isEmpty());
    EXPECT_EQ(closer.back().front().value<FileUrl>(), urlOf("photos"));

    QTest::mousePress(&view, Qt::LeftButton, Qt::ControlModifier, place);
    QMouseEvent drag{QEvent::MouseMove, place - QPoint{60, 40}, view.mapToGlobal(place - QPoint{60, 40}),
                     Qt::NoButton,      Qt::LeftButton,         Qt::ControlModifier};
    QCoreApplication::sendEvent(&view, &drag);
    QTest::mouseRelease(&view, Qt::LeftButton, Qt::ControlModifier, place - QPoint{60, 40});
    EXPECT_EQ(view.tileRect(tile("photos/c.jpg")).topLeft(), near.topLeft() - QPoint(60, 40));
    EXPECT_EQ(selection.count(), 0U) << "a drag checks nothing";

    turn(-20);
    EXPECT_EQ(view.tileRect(tile("photos/c.jpg")), before);
    QTest::keyClick(&view, Qt::Key_Plus, Qt::ControlModifier);
    EXPECT_NE(view.tileRect(tile("photos/c.jpg")), before);
    QTest::keyClick(&view, Qt::Key_0, Qt::ControlModifier);
    EXPECT_EQ(view.tileRect(tile("photos/c.jpg")), before);
}

TEST_F(TreemapViewTest, AssistiveTechnologyFindsEachLevel)
{
    showTree();
    QAccessibleInterface* const map = QAccessible::queryAccessibleInterface(&view);
    ASSERT_EQ(map->childCount(), 2);
    QAccessibleInterface* const photos = map->child(0);
    ASSERT_EQ(photos->childCount(), 3);
    QAccessibleInterface* const year = photos->child(0);
    EXPECT_EQ(year->parent(), photos);
    EXPECT_EQ(photos->indexOfChild(year), 0);
    EXPECT_EQ(year->role(), QAccessible::TreeItem);
    EXPECT_EQ(year->text(QAccessible::Name), QStringLiteral("2023, 800 o"));
    EXPECT_EQ(year->text(QAccessible::Description), QStringLiteral("niveau 2, part 82,5 %, 2 éléments"));
    const QPoint place = view.mapToGlobal(centre("photos/2023/b.jpg"));
    EXPECT_EQ(map->childAt(place.x(), place.y()), photos);
    EXPECT_EQ(photos->childAt(place.x(), place.y()), year);
    year->child(1)->actionInterface()->doAction(QAccessibleActionInterface::toggleAction());
    EXPECT_TRUE(year->child(1)->state().checked);
    EXPECT_THAT(log, ElementsAre("check b.jpg"));
}

} // namespace

} // namespace tallyroom
