#include "App/ExplorerScene.h"
#include "Bridge/Desktop.h"
#include "Controls/LinkedLabel.h"
#include "Rows/EntryTableModel.h"
#include "Text/NumberText.h"
#include "Text/SizeText.h"
#include "Tools/DiskUsage/ContentColumns.h"
#include "Tools/Frame/UnreadList.h"

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QFileDialog>
#include <QHeaderView>
#include <QMenu>
#include <QTest>
#include <QTreeWidget>

#include <cerrno>
#include <gmock/gmock.h>
#include <limits>

namespace tallyroom {

namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

/// The explorer's screen while /r is being listed: of its folders one is done, two are not.
class RunningRowsTest : public ExplorerScene {
protected:
    RunningRowsTest()
    {
        scene.navigator->open(FileUrl{"/r"});
        slow = scene.listing().running->add(folderEntry("/r/slow", 0));
        other = scene.listing().running->add(folderEntry("/r/other", 0));
    }

    /// What a screen reader says of each row, after the name without the kind.
    [[nodiscard]] std::vector<std::string> rows()
    {
        std::vector<std::string> said;
        for (int row = 0; row < table().model()->rowCount(); ++row) {
            const QModelIndex name = table().model()->index(row, EntryTableModel::nameColumn);
            QStringList words = name.data(Qt::AccessibleTextRole).toString().split(QStringLiteral(", "));
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

TEST_F(RunningRowsTest, ChosenColumnsGrowSortAreReadAndStayChosen)
{
    const auto clickChoice = [this](const QString& title) {
        QHeaderView& header = *table().horizontalHeader();
        QContextMenuEvent rightClick{QContextMenuEvent::Mouse, {40, 8}, header.mapToGlobal(QPoint{40, 8})};
        QCoreApplication::sendEvent(header.viewport(), &rightClick);
        auto* const menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        ASSERT_NE(menu, nullptr);
        for (QAction* const action : menu->actions()) {
            if (action->text() == title) {
                action->trigger();
            }
        }
        menu->close();
    };
    const auto shown = [](const EntryTable& one) {
        std::vector<std::string> titles;
        for (int column = 2; column < one.model()->columnCount() - 1; ++column) {
            if (!one.isColumnHidden(column)) {
                titles.push_back(one.model()->headerData(column, Qt::Horizontal).toString().toStdString());
            }
        }
        return titles;
    };
    EXPECT_THAT(shown(table()), ElementsAre());
    for (const char* const title : {"Part du dossier", "Fichiers", "Modifié"}) {
        clickChoice(QString::fromUtf8(title));
    }
    EXPECT_THAT(shown(table()), ElementsAre("Part du dossier", "Fichiers", "Modifié")) << "at 900 by 600";

    const SharedFolderContents contents = scene.listing().contents;
    const auto mayOf = [](int year) {
        const std::chrono::sys_days day = std::chrono::year{year} / 5 / 8;
        const auto noon = std::chrono::sys_seconds{day} + std::chrono::hours{12};
        return FolderSize{.files = year - 2000,
                          .newest = static_cast<std::uint32_t>(noon.time_since_epoch().count())};
    };
    Entry dated = fileEntry("/r/file", 1000);
    dated.modifiedAt = Timestamp{std::chrono::seconds{mayOf(2020).newest}};
    contents->set("done", mayOf(2012));
    contents->of("slow").add(mayOf(2018));
    slow->bytes = 2000;
    scene.receive({folderEntry("/r/done", 5000), dated});
    awaitRows(ElementsAre("done 62,5 % du dossier 12 fichiers modifié le 8 mai 2012 5 Ko non coché",
                          "slow 25,0 % du dossier 18 fichiers modifié le 8 mai 2018 2 Ko en cours de mesure",
                          "file 12,5 % du dossier modifié le 8 mai 2020 1 Ko non coché",
                          "other 0 % du dossier 0 o en cours de mesure"));
    contents->of("other").add(mayOf(2015));
    const auto sortBy = [&](int column) { Q_EMIT table().horizontalHeader()->sectionClicked(column); };
    sortBy(3);
    awaitRows(ElementsAre(HasSubstr("18 fichiers"), HasSubstr("15 fichiers"), HasSubstr("12 fichiers"),
                          HasSubstr("file")));
    sortBy(4);
    sortBy(4);
    awaitRows(ElementsAre(HasSubstr("2012"), HasSubstr("2015"), HasSubstr("2018"), HasSubstr("2020")));
    clickChoice(QStringLiteral("Modifié"));
    EXPECT_EQ(table().sortOrder(), EntrySortOrder{}) << "nobody could see what sorts";
    QHeaderView& header = *table().horizontalHeader();
    const QPoint edge{header.sectionViewportPosition(3) + 1, 10};
    const int width = header.sectionSize(3);
    QTest::mousePress(header.viewport(), Qt::LeftButton, {}, edge);
    QTest::mouseMove(header.viewport(), edge - QPoint{30, 0});
    QTest::mouseRelease(header.viewport(), Qt::LeftButton, {}, edge - QPoint{30, 0});
    EXPECT_EQ(header.sectionSize(3), width + 30);
    EXPECT_EQ(header.sectionViewportPosition(3) + 1, edge.x() - 30) << "the edge stays under the mouse";

    DiskUsageView next{*scene.navigator};
    next.resize(900, 600);
    next.show();
    const EntryTable& again = *next.findChild<EntryTable*>();
    EXPECT_THAT(shown(again), ElementsAre("Part du dossier", "Fichiers"));
    EXPECT_EQ(again.columnWidth(3), width + 30);
}

/// What the explorer's rows and exports say of a scan that did not read all.
class ExplorerRows : public ExplorerScene {};

TEST_F(ExplorerRows, ASizeThatLeavesSomethingOutIsNotShownAsWhole)
{
    Entry partial = folderEntry("/r/partial", 4'200'000'000);
    FolderSize{.bytes = partial.sizeBytes, .unread = 12}.applyTo(partial);
    Entry unknown = folderEntry("/r/unknown", 0);
    FolderSize{.unread = 1}.applyTo(unknown);
    Entry closed = folderEntry("/r/closed", 0);
    FolderSize{.unread = 1, .isUnreadable = true}.applyTo(closed);
    const auto places = std::make_shared<UnreadPlaces>(UnreadPlaces{
        1013, false, {{FileUrl{"/r/closed"}, {EACCES}, true}, {FileUrl{"/r/partial/<b>"}, {EIO}, true}}});
    scene.navigator->open(FileUrl{"/r"});
    scene.listing().sender->send(
        {EntryList{{partial, fileEntry("/r/whole", 1000), closed, unknown}}, 4, 4, false, {}, places});
    scene.listing().end();
    ASSERT_TRUE(waitUntil(scene.navigator.get(), &ListToolViewModel::stateChanged,
                          [this] { return scene.navigator->state() == ToolState::loaded(); }));

    const QAbstractItemModel& rows = *table().model();
    const int size = rows.columnCount() - 1;
    const auto said = [&](int role) {
        QStringList all;
        for (int row = 0; row < rows.rowCount(); ++row) {
            all += rows.index(row, size).data(role).toString();
        }
        return all.join(u'|').toStdString();
    };
    EXPECT_EQ(said(Qt::DisplayRole), "≥\u00a04,2 Go|1 Ko|illisible|inconnue");
    EXPECT_EQ(said(Qt::AccessibleTextRole), "au moins 4,2 Go|1 Ko|illisible|inconnue");
    EXPECT_EQ(said(Qt::ToolTipRole),
              "12 dossiers illisibles||Ce dossier ne peut pas être lu.|1 dossier illisible");
    EXPECT_TRUE(rows.index(0, EntryTableModel::nameColumn)
                    .data(Qt::AccessibleTextRole)
                    .toString()
                    .contains(QStringLiteral("au moins 4,2 Go")));

    auto* const summary = view.findChild<LinkedLabel*>();
    EXPECT_TRUE(summary->accessibleName().endsWith(NumberText::grouped(1013) +
                                                   QStringLiteral(" dossiers illisibles")));
    summary->setFocus(Qt::TabFocusReason);
    QTest::keyClick(summary, Qt::Key_Return);
    auto* const list = view.findChild<UnreadList*>();
    ASSERT_NE(list, nullptr);
    const auto& tree = *list->findChild<QTreeWidget*>();
    QStringList lines;
    for (int row = 0; row < tree.topLevelItemCount(); ++row) {
        lines += tree.topLevelItem(row)->text(0) + u'|' + tree.topLevelItem(row)->text(1);
    }
    EXPECT_EQ(lines.join(u'\n').toStdString(),
              "/r/closed|Accès refusé.\n/r/partial/<b>|Le disque a signalé une erreur.");
    EXPECT_FALSE(visibleTexts(*list).filter(QStringLiteral("autres ne sont pas dans cette liste")).isEmpty());
    visibleButton(*list, QStringLiteral("Copier les chemins"))->click();
    EXPECT_EQ(QGuiApplication::clipboard()->text(), QStringLiteral("/r/closed"));
    Q_EMIT DesktopRefusals::shared().refused(QStringLiteral("Personne ne répond."));
    EXPECT_TRUE(visibleTexts(*list).contains(QStringLiteral("Personne ne répond."))) << "where the button is";

    scene.navigator->refresh();
    scene.finishListing({fileEntry("/r/whole", 1000)});
    EXPECT_FALSE(summary->accessibleName().contains(QStringLiteral("illisible"))) << "opened since";
}

TEST(ContentColumns, NoDateSaysMoreThanIsKnown)
{
    constexpr std::uint32_t known = 1'500'000'000; // 14 July 2017
    const auto contents = std::make_shared<Locked<SharedFolderContents>>();
    contents->set(std::make_shared<FolderContents>());
    const EntryTableColumn newest = contentColumns(contents, [] { return 0; }).back();
    const std::vector<std::tuple<std::uint32_t, std::uint32_t, std::string, std::string>> cases{
        {known, 0, "14 juil. 2017", "modifié le 14 juil. 2017"},
        {known, 2, "≥ 14 juil. 2017", "modifié au plus tôt le 14 juil. 2017"},
        {1, 0, "≤ 1 janv. 1970", "modifié au plus tard le 1 janv. 1970"},
        {std::numeric_limits<std::uint32_t>::max(), 0, "≥ 7 févr. 2106",
         "modifié au plus tôt le 7 févr. 2106"},
        {0, 1, "", ""}};
    for (const auto& [told, unread, text, spoken] : cases) {
        Entry entry = folderEntry("/r/folder", 10);
        contents->get()->set("folder", {.newest = told});
        entry.unread = unread;
        EXPECT_EQ(newest.text(entry).replace(QChar{0xa0}, u' ').toStdString(), text);
        EXPECT_EQ(newest.spoken(entry).toStdString(), spoken);
    }
}

TEST_F(ExplorerRows, OnlyAScanOfAWholeVolumeKnowsHowFarItIs)
{
    for (const bool isVolume : {false, true}) {
        scene.usedBytes->set(isVolume ? std::optional<std::int64_t>{8'000} : std::nullopt);
        scene.navigator->open(FileUrl{"/v" + std::to_string(isVolume)});
        static_cast<void>(scene.listing().running->add(folderEntry("/v/slow", 0)));
        scene.listing().contents->of("slow").add({.bytes = 1'000});
        scene.listing().contents->count(1'000);
        scene.receive({fileEntry("/v/file", 1'000)});
        const auto words = [this] { return visibleTexts(view).join(u'|').replace(QChar{0xa0}, u' '); };
        ASSERT_TRUE(
            QTest::qWaitFor([&] { return words().contains(QStringLiteral("25 %")) == isVolume; }, 20'000));
        EXPECT_EQ(words().contains(QStringLiteral("Analyse en cours… 1/2 · 2 Ko sur 8 Ko")), isVolume);
        scene.listing().contents->of("slow").add({.bytes = 10'000}); // files of several names
        const ScanLine line = scene.navigator->scanLine();
        EXPECT_FALSE(line.fraction) << "more than there is";
        EXPECT_EQ(line.text.endsWith(QStringLiteral(" · ") + sizeText(12'000)), isVolume)
            << line.text.toStdString();
    }
}

TEST_F(ExplorerRows, AnExportIsNamedAfterItsFolderAndSaysWhenTheScanWasStopped)
{
    const std::vector<std::tuple<std::string, bool, std::string>> cases{
        {"/r/folder", false, "folder.csv"},
        {"/", false, "_.csv"},
        {"/r/folder", true, "folder (partiel).csv"}};
    for (const auto& [folder, isStopped, name] : cases) {
        scene.navigator->open(FileUrl{folder});
        scene.receive({fileEntry(folder + "/a", 10)});
        isStopped ? scene.navigator->cancelScan() : scene.finishListing({fileEntry(folder + "/a", 10)});
        view.exportEntries();
        auto* const dialog = view.findChild<QFileDialog*>();
        ASSERT_NE(dialog, nullptr);
        EXPECT_EQ(dialog->selectedFiles().value(0).section(u'/', -1).toStdString(), name);
        delete dialog;
    }
}

} // namespace

} // namespace tallyroom
