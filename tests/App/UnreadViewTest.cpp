#include "App/EventWait.h"
#include "App/NavigatorScene.h"
#include "App/ScreenWords.h"
#include "Bridge/Desktop.h"
#include "Controls/LinkedLabel.h"
#include "Rows/EntryTable.h"
#include "Rows/EntryTableModel.h"
#include "Text/NumberText.h"
#include "Tools/DiskUsage/DiskUsageView.h"
#include "Tools/Frame/UnreadList.h"

#include <QClipboard>
#include <QFileDialog>
#include <QGuiApplication>
#include <QTest>
#include <QTreeWidget>

#include <cerrno>
#include <gmock/gmock.h>

namespace tallyroom {

namespace {

using testing::ElementsAre;

class UnreadViewTest : public testing::Test {
protected:
    void show()
    {
        view.resize(900, 600);
        view.show();
        activate(view);
    }

    NavigatorScene scene;
    DiskUsageView view{*scene.navigator};
};

TEST_F(UnreadViewTest, ASizeThatLeavesSomethingOutIsNotShownAsWhole)
{
    Entry partial = folderEntry("/r/partial", 4'200'000'000);
    FolderSize{.bytes = partial.sizeBytes, .unread = 12}.applyTo(partial);
    Entry closed = folderEntry("/r/closed", 0);
    FolderSize{.unread = 1, .isUnreadable = true}.applyTo(closed);
    const auto places = std::make_shared<UnreadPlaces>(UnreadPlaces{
        1013, false, {{FileUrl{"/r/closed"}, {EACCES}, true}, {FileUrl{"/r/partial/<b>"}, {EIO}, true}}});
    scene.navigator->open(FileUrl{"/r"});
    scene.listing().sender->send(
        {EntryList{{partial, fileEntry("/r/whole", 1000), closed}}, 3, 3, false, {}, places});
    scene.listing().end();
    ASSERT_TRUE(waitUntil(scene.navigator.get(), &ListToolViewModel::stateChanged,
                          [this] { return scene.navigator->state() == ToolState::loaded(); }));
    show();

    const QAbstractItemModel& rows = *view.findChild<EntryTable*>()->model();
    const int size = rows.columnCount() - 1;
    const auto said = [&](int role) {
        QStringList all;
        for (int row = 0; row < rows.rowCount(); ++row) {
            all += rows.index(row, size).data(role).toString();
        }
        return all.join(u'|').toStdString();
    };
    EXPECT_EQ(said(Qt::DisplayRole), "≥\u00a04,2 Go|1 Ko|illisible");
    EXPECT_EQ(said(Qt::AccessibleTextRole), "au moins 4,2 Go|1 Ko|illisible");
    EXPECT_EQ(said(Qt::ToolTipRole), "12 dossiers illisibles||Ce dossier ne peut pas être lu.");
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

TEST_F(UnreadViewTest, AnExportIsNamedAfterItsFolderAndSaysWhenTheScanWasStopped)
{
    show();
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
