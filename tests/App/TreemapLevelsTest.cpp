#include "App/TreemapViewScene.h"
#include "Rows/EntryTableHeader.h"
#include "Shell/KeysDialog.h"

#include <QAccessible>
#include <QMetaEnum>
#include <QSignalSpy>
#include <QTreeWidget>
#include <QWheelEvent>

#include <functional>
#include <gmock/gmock.h>

namespace tallyroom {

namespace {

using testing::ElementsAre;

using TreemapLevelsTest = TreemapViewScene;

TEST_F(TreemapLevelsTest, ATileIsCheckedAtAnyDepthAndNothingTwice)
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

TEST_F(TreemapLevelsTest, KeysGoAmongSiblingsAndLevelsAndLeaveTheOwnersAlone)
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

TEST_F(TreemapLevelsTest, NoKeyIsTakenThatTheListOfKeysDoesNotTell)
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

TEST_F(TreemapLevelsTest, TheWheelLooksCloserAtWhatIsUnderThePointer)
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

TEST_F(TreemapLevelsTest, AssistiveTechnologyFindsEachLevel)
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
