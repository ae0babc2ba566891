#include "Rows/EntryTable.h"

#include "App/EventWait.h"
#include "Rows/Selection.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QHeaderView>
#include <QMenu>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTableView>
#include <QTest>
#include <QTimer>

#include <gmock/gmock.h>

namespace tallyroom {

namespace {

using testing::ElementsAre;

Entry fileRow(const std::string& name, std::int64_t size, bool isFolder = false)
{
    return {FileUrl{"/tri/" + name}, name, size, isFolder};
}

/// A table on screen, 400 high, with what a reader does to it.
class EntryTableTest : public testing::Test {
protected:
    EntryTableTest() { open({.firstColumnTitle = QStringLiteral("Nom")}); }

    void open(EntryTableStyle style)
    {
        table = std::make_unique<EntryTable>(std::move(style));
        view = table.get();
        table->resize(600, 400);
        table->show();
    }

    /// Files "f0", "f1" … of sizes 1 to `count` in a mixed order, as a scan would find them.
    void fill(int count, std::int64_t sizeStep = 1)
    {
        for (int serial = 0; serial < count; ++serial) {
            found.append(
                fileRow("f" + std::to_string(nextSerial++), (serial * 7919LL % count + 1) * sizeStep));
        }
        table->setEntries(found.snapshot());
        view->doItemsLayout(); // as the next frame would
    }

    [[nodiscard]] Entry entryAt(int row) const
    {
        return table->arrangement().entry(static_cast<std::size_t>(row));
    }

    [[nodiscard]] std::vector<std::string> names() const
    {
        std::vector<std::string> result;
        for (int row = 0; row < view->model()->rowCount(); ++row) {
            result.push_back(entryAt(row).name);
        }
        return result;
    }

    [[nodiscard]] Entry first() const { return entryAt(view->rowAt(0)); }

    [[nodiscard]] int topOf(const Entry& entry) const
    {
        int row = 0;
        while (entryAt(row) != entry) {
            ++row;
        }
        return view->rowViewportPosition(row);
    }

    void clickBox(int row, Qt::KeyboardModifiers modifiers = {}) const
    {
        const QPoint box = view->visualRect(view->model()->index(row, 0)).center();
        QTest::mouseClick(view->viewport(), Qt::LeftButton, modifiers, box);
    }

    void clickTitle(int column) const
    {
        const QHeaderView* const header = view->horizontalHeader();
        QTest::mouseClick(header->viewport(), Qt::LeftButton, {},
                          {header->sectionViewportPosition(column) + 20, header->height() / 2});
    }

    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) const
    {
        QTest::keyClick(view, key, modifiers);
    }

    std::unique_ptr<EntryTable> table;
    QTableView* view = nullptr;
    EntryList::Builder found;
    int nextSerial = 0;
};

TEST_F(EntryTableTest, TheCurrentRowKeepsItsPlaceOnScreenWhileLargerOnesComeAbove)
{
    fill(100);
    const Entry read = entryAt(40);
    ASSERT_TRUE(table->setCurrentEntry(read.url));
    const int top = topOf(read);
    for (int round = 0; round < 5; ++round) {
        fill(200, 10);
        EXPECT_EQ(table->currentEntry(), read);
        ASSERT_EQ(topOf(read), top) << "round " << round;
    }
}

TEST_F(EntryTableTest, AScrolledListStaysAndOneAtTheTopShowsItsHeaviestRows)
{
    activate(*table);
    fill(300);
    view->clearFocus();
    table->setFocus(Qt::OtherFocusReason); // as a screen does that has just been given a folder
    EXPECT_EQ(table->currentEntry(), std::nullopt);
    fill(100, 10);
    EXPECT_EQ(first(), table->arrangement().entries().front());
    press(Qt::Key_Down);
    const auto current = table->currentEntry();
    ASSERT_NE(current, std::nullopt);
    fill(100, 1000);
    EXPECT_EQ(first(), table->arrangement().entries().front()) << "moving within the top is no scrolling";
    EXPECT_EQ(table->currentEntry(), current);

    view->verticalScrollBar()->setValue(1234);
    const Entry read = first();
    const int top = topOf(read);
    fill(300, 10'000);
    EXPECT_EQ(topOf(read), top);
    table->resetView();
    fill(300, 100'000);
    EXPECT_EQ(view->verticalScrollBar()->value(), 0);
}

TEST_F(EntryTableTest, TheNeighbourBecomesCurrentWhenTheCurrentEntryGoes)
{
    table->setEntries({fileRow("a", 3), fileRow("b", 2), fileRow("c", 1)});
    table->setCurrentEntry(FileUrl{"/tri/b"});
    table->setEntries({fileRow("a", 3), fileRow("c", 1)});
    EXPECT_EQ(table->currentEntry()->name, "c");
    table->setEntries({fileRow("a", 3)});
    EXPECT_EQ(table->currentEntry()->name, "a");
    table->setEntries({});
    EXPECT_EQ(table->currentEntry(), std::nullopt);
}

TEST_F(EntryTableTest, BoxesCheckWhatWasPressedAndRangesBeginAtTheLastOne)
{
    table->setEntries({fileRow("a", 9), fileRow("b", 8), fileRow("c", 7), fileRow("d", 6), fileRow("e", 5),
                       fileRow("f", 4)});
    const QSignalSpy opened{table.get(), &EntryTable::activated};
    const auto checked = [this] {
        std::string names;
        for (const Entry& entry : table->selection().checkedEntries()) {
            names += entry.name;
        }
        return names;
    };
    clickBox(0);
    clickBox(2);
    clickBox(4, Qt::ShiftModifier);
    EXPECT_EQ(checked(), "acde");
    table->setFilter([](const Entry& entry) { return entry.name != "d"; });
    clickBox(3);
    clickBox(4, Qt::ShiftModifier);
    EXPECT_EQ(checked(), "acef");
    table->setFilter({});
    EXPECT_EQ(checked(), "acdef") << "what was hidden stays checked";

    table->selection().clear();
    table->resetView();
    clickBox(1, Qt::ShiftModifier);
    EXPECT_EQ(checked(), "b") << "a range does not begin in another folder";
    const QPoint box = view->visualRect(view->model()->index(5, 0)).center();
    QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, box);
    QTest::mouseDClick(view->viewport(), Qt::LeftButton, {}, box);
    QTest::mouseRelease(view->viewport(), Qt::LeftButton, {}, box);
    EXPECT_EQ(checked(), "b") << "two quick clicks are two clicks";
    EXPECT_TRUE(opened.isEmpty());
    QTest::mousePress(view->viewport(), Qt::LeftButton, {}, box);
    QTest::mouseRelease(view->viewport(), Qt::LeftButton, {}, box - QPoint{0, 100});
    EXPECT_EQ(checked(), "b") << "dragged away, so given up";
    QTest::mousePress(view->viewport(), Qt::LeftButton, {}, box);
    table->setEntries({fileRow("a", 9), fileRow("new", 8), fileRow("b", 8), fileRow("e", 5), fileRow("g", 5),
                       fileRow("f", 4)});
    QTest::mouseRelease(view->viewport(), Qt::LeftButton, {}, box);
    table->setFilter([](const Entry& entry) { return entry.sizeBytes < 8; });
    EXPECT_EQ(table->arrangement().largestSize(), 5) << "bars are measured against what is shown";
    EXPECT_EQ(checked(), "f");
}

TEST_F(EntryTableTest, NamesThatLookAlikeActOnTheirOwnFile)
{
    const EntryList entries{fileRow("\xff", 1), fileRow("\xfe", 1), fileRow("\xef\xbf\xbd", 1),
                            fileRow("a\nb", 1), fileRow("a b", 1),  fileRow("\\xFF", 1)};
    table->setEntries(entries);
    const QSignalSpy acted{table.get(), &EntryTable::copyPathRequested};
    std::set<QString> drawn;
    for (std::size_t row = 0; row < entries.size(); ++row) {
        ASSERT_TRUE(table->setCurrentEntry(entries[row].url));
        press(Qt::Key_C, Qt::ControlModifier);
        press(Qt::Key_Space);
        EXPECT_EQ(acted.back()[0].value<Entry>(), entries[row]);
        EXPECT_TRUE(table->selection().urls().contains(entries[row].url));
        const QString text = view->model()->index(static_cast<int>(row), 1).data().toString();
        EXPECT_FALSE(text.contains(QLatin1Char{'\n'}));
        drawn.insert(text);
    }
    EXPECT_EQ(table->selection().urls().size(), entries.size());
    EXPECT_EQ(drawn.size(), entries.size() - 1) << "only a name spelt like an escape may look like one";
}

TEST_F(EntryTableTest, TitlesSortByTheMouseAndTheKeyboardAndSayTheOrder)
{
    table->setEntries({fileRow("photo10.jpg", 40), fileRow("Photo9.jpg", 30), fileRow("école", 20),
                       fileRow("zèbre", 10), fileRow("Eclair", 5), fileRow("photo010.jpg", 4)});
    const std::vector<std::string> bySize = names();
    const std::vector<std::string> byName{"Eclair",       "école",       "Photo9.jpg",
                                          "photo010.jpg", "photo10.jpg", "zèbre"};
    clickTitle(1);
    EXPECT_EQ(table->sortOrder(), (EntrySortOrder{EntrySortOrder::Key::name, 0, true}));
    EXPECT_EQ(names(), byName);
    clickTitle(1);
    EXPECT_THAT(names(), ElementsAre("zèbre", "photo010.jpg", "photo10.jpg", "Photo9.jpg", "école", "Eclair"))
        << "equal names stay in the order of their paths";
    clickTitle(2);
    EXPECT_EQ(names(), bySize);
    clickTitle(2);
    EXPECT_EQ(names(), std::vector(bySize.rbegin(), bySize.rend()));
    clickTitle(2);

    activate(*table);
    QHeaderView* const header = view->horizontalHeader();
    header->setFocus(Qt::TabFocusReason);
    EXPECT_EQ(header->accessibleName(), QStringLiteral("Trier par : Taille, décroissant"));
    QTest::keyClick(header, Qt::Key_Left);
    QTest::keyClick(header, Qt::Key_Left); // the column of boxes has no title
    EXPECT_EQ(header->accessibleName(), QStringLiteral("Trier par : Nom"));
    QTest::keyClick(header, Qt::Key_Space);
    EXPECT_EQ(names(), byName);
    QTest::keyClick(header, Qt::Key_Return);
    EXPECT_EQ(header->accessibleName(), QStringLiteral("Trier par : Nom, décroissant"));
    QTest::keyClick(header, Qt::Key_Down);
    EXPECT_TRUE(view->hasFocus());
}

TEST_F(EntryTableTest, AToolsOwnColumnSortsByItsKeyAndGivesWayWhereRoomIsShort)
{
    const auto key = [](const Entry& entry) { return static_cast<double>(entry.name.size()); };
    const auto text = [](const Entry& entry) { return QString::number(entry.name.size()); };
    open({.firstColumnTitle = QStringLiteral("Projet"),
          .secondLine = text,
          .columns = {{QStringLiteral("Modifié"), 130, text, key},
                      {QStringLiteral("Note"), 60, text, nullptr}}});
    table->resize(900, 400);
    table->setEntries(
        {fileRow("z", 7), fileRow("b10", 5), fileRow("É", 5), fileRow("b9", 5), fileRow("a", 1)});
    EXPECT_THAT(names(), ElementsAre("z", "b9", "b10", "É", "a")) << "equal sizes by name";
    clickTitle(4);
    EXPECT_THAT(names(), ElementsAre("a", "b9", "b10", "É", "z"));
    clickTitle(2);
    EXPECT_THAT(names(), ElementsAre("b10", "b9", "É", "z", "a")) << "equal keys by size, then by name";
    clickTitle(2);
    EXPECT_THAT(names(), ElementsAre("z", "a", "b9", "É", "b10"));
    clickTitle(3);
    EXPECT_EQ(table->sortOrder(), (EntrySortOrder{EntrySortOrder::Key::column, 0, true}));
    table->resize(400, 400);
    EXPECT_TRUE(view->isColumnHidden(2));
    EXPECT_GE(view->columnWidth(1), Theme::nameColumnMinimum);
    table->resize(900, 400);
    EXPECT_FALSE(view->isColumnHidden(2));
    table->resize(1700, 400);
    const int bar = view->columnWidth(4) - table->trailingMargin();
    EXPECT_LE(view->columnViewportPosition(2), 700) << "the other columns stay near the names";
    EXPECT_TRUE(bar >= 240 && bar <= 320) << bar;
}

TEST_F(EntryTableTest, ABadgeThatDoesNotFitIsCutShortAndNotDropped)
{
    const QString warning = QStringLiteral("modifications en réserve (stash)");
    bool isWarned = false;
    open({.firstColumnTitle = QStringLiteral("Nom"), .badges = [&](const Entry&) {
              return isWarned ? std::vector{EntryBadge{warning, Theme::Colour::old}}
                              : std::vector<EntryBadge>{};
          }});
    fill(1);
    for (const int width : {700, 420, 300}) {
        table->resize(width, 400);
        const QRect name = view->visualRect(view->model()->index(0, 1));
        const auto row = [&](bool isNowWarned) {
            isWarned = isNowWarned;
            return view->viewport()->grab().toImage();
        };
        const QImage with = row(true);
        const QImage without = row(false);
        EXPECT_NE(with.copy(name), without.copy(name)) << width << ": says nothing";
        const QRect rest{name.topRight() + QPoint{1, 0}, with.rect().bottomRight()};
        EXPECT_EQ(with.copy(rest), without.copy(rest)) << width << ": leaves its column";
    }
    isWarned = true;
    EXPECT_TRUE(view->model()->index(0, 1).data(Qt::ToolTipRole).toString().contains(warning));
}

TEST_F(EntryTableTest, ALongListIsArrangedAsideAndTheLastWishCounts)
{
    constexpr int count = 30'000;
    fill(count);
    QSignalSpy changed{table.get(), &EntryTable::rowsChanged};
    if (table->arrangement().rowCount() == 0) {
        ASSERT_TRUE(changed.wait());
    }
    std::set<std::size_t> seen{count};
    QObject::connect(table.get(), &EntryTable::rowsChanged, table.get(),
                     [&] { seen.insert(table->arrangement().rowCount()); });
    table->setSortOrder({EntrySortOrder::Key::name, 0, true});
    table->setFilter([](const Entry& entry) { return entry.name.ends_with("7"); });
    table->setFilter([](const Entry& entry) { return entry.name.ends_with("77"); });
    fill(10);
    while (table->arrangement().rowCount() != count / 100) {
        ASSERT_TRUE(changed.wait()) << table->arrangement().rowCount();
    }
    EXPECT_THAT(seen, ElementsAre(count / 100, count)) << "half of a list is never shown";
    EXPECT_EQ(names().front(), "f77");
    EXPECT_EQ(names().back(), "f29977");
    table->setSortOrder({EntrySortOrder::Key::name, 0, false}); // and leaves meanwhile
}

TEST_F(EntryTableTest, ASpaceWithinATypedNameIsLookedForAndChecksNothing)
{
    const int interval = QApplication::keyboardInputInterval();
    QApplication::setKeyboardInputInterval(60'000);
    table->setEntries({fileRow("ab", 3), fileRow("a c", 2), fileRow("d", 1)});
    press(Qt::Key_Down);
    QTest::keyClicks(view, QStringLiteral("a c"));
    EXPECT_EQ(table->currentEntry()->name, "a c");
    EXPECT_EQ(table->selection().count(), 0U);
    QApplication::setKeyboardInputInterval(0); // the name is typed
    press(Qt::Key_Space);
    EXPECT_THAT(table->selection().urls(), ElementsAre(FileUrl{"/tri/a c"}));
    QApplication::setKeyboardInputInterval(interval);
}

TEST_F(EntryTableTest, TheContextMenuOffersWhatTheRowCanDo)
{
    const auto texts = [this](const Entry& entry) {
        QStringList result;
        const auto menu = table->makeContextMenu(entry);
        for (const QAction* const action : menu->actions()) {
            result << (action->isSeparator() ? QStringLiteral("-") : action->text());
        }
        return result.join(u'|').toStdString();
    };
    const std::string all = "Ouvrir|Révéler dans le gestionnaire de fichiers|Ouvrir un terminal ici|"
                            "Copier le chemin|-|Propriétés";
    EXPECT_EQ(texts(fileRow("f", 1)), all);
    table->setDeletionEnabled(true);
    EXPECT_EQ(texts(fileRow("d", 1, true)), "Entrer|" + all + "|-|Mettre à la corbeille");

    const QSignalSpy deleted{table.get(), &EntryTable::deleteRequested};
    table->setEntries({fileRow("a", 2), fileRow("\xff", 1)});
    ASSERT_TRUE(table->setCurrentEntry(FileUrl{"/tri/\xff"}));
    QTimer::singleShot(0, table.get(), [] {
        auto* const open = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        open->actions().back()->trigger();
        open->close();
    });
    QContextMenuEvent byKey{QContextMenuEvent::Keyboard, {}, {}};
    QCoreApplication::sendEvent(view->viewport(), &byKey);
    ASSERT_EQ(deleted.size(), 1);
    EXPECT_EQ(deleted[0][0].value<Entry>().name, "\xff") << "the menu key means the current row";
}

TEST_F(EntryTableTest, AssistiveToolsReadTheRowAndSwitchItsBox)
{
    open({.firstColumnTitle = QStringLiteral("Nom"), .badges = [](const Entry&) {
              return std::vector{EntryBadge{QStringLiteral("ancien"), Theme::Colour::old}};
          }});
    table->setEntries({fileRow("photo.jpg", 1500)});
    QAbstractItemModel* const model = view->model();
    const auto spoken = [model] { return model->index(0, 1).data(Qt::AccessibleTextRole).toString(); };
    EXPECT_EQ(spoken(), QStringLiteral("photo.jpg, Images, ancien, 1,5 Ko, non coché"));
    const QSignalSpy redrawn{model, &QAbstractItemModel::dataChanged};
    EXPECT_TRUE(model->setData(model->index(0, 0), Qt::Checked, Qt::CheckStateRole));
    EXPECT_EQ(redrawn.count(), 1);
    EXPECT_TRUE(spoken().endsWith(QStringLiteral(", coché")));
}

} // namespace

} // namespace tallyroom
