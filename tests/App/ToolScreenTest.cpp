#include "Tools/Frame/ToolScreen.h"

#include "App/EventWait.h"
#include "App/NavigatorScene.h"
#include "App/ScreenWords.h"
#include "Bridge/FolderPresence.h"
#include "Controls/SearchField.h"
#include "Rows/EntryTable.h"
#include "Settings/PersistedSettings.h"
#include "Settings/RecentFolders.h"
#include "Shell/ContentView.h"
#include "Support/TemporaryTree.h"
#include "Tools/BuildCaches/BuildCachesView.h"
#include "Tools/DiskUsage/DiskUsageView.h"
#include "Tools/DiskUsage/Treemap/TreemapView.h"

#include <QApplication>
#include <QClipboard>
#include <QFileDialog>
#include <QListWidget>
#include <QMenu>
#include <QPushButton>
#include <QTest>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tallyroom {

namespace {

/// Waits for the folder chooser of a screen, and closes it.
bool chooserOpens(QWidget& screen)
{
    QFileDialog* chooser = screen.findChild<QFileDialog*>();
    if (chooser == nullptr) {
        Awaited added{screen, QEvent::ChildAdded};
        chooser = added.come() ? screen.findChild<QFileDialog*>() : nullptr;
    }
    delete chooser;
    return chooser != nullptr;
}

/// A whole window, on show and active, the explorer selected.
class WindowScene : public testing::Test {
protected:
    WindowScene()
    {
        Settings::store().clear();
        window.resize(900, 600);
        window.show();
        activate(window);
        window.selectTool(QStringLiteral("disk-usage"));
    }

    void open(ScanToolViewModel& tool, const FileUrl& folder)
    {
        tool.handleImport(std::vector{folder});
        EXPECT_TRUE(waitUntil(&tool, &FolderTool::stateChanged, [&] { return !tool.isScanning(); }));
    }

    [[nodiscard]] bool shows(const char* words) const
    {
        return visibleTexts(window).contains(QString::fromUtf8(words));
    }

    [[nodiscard]] QAbstractButton* button(const char* text) const
    {
        return visibleButton(window, QString::fromUtf8(text));
    }

    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::keyClick(window.focusWidget(), key, modifiers);
    }

    [[nodiscard]] EntryTable& table() const
    {
        for (EntryTable* const one : window.findChildren<EntryTable*>()) {
            if (one->isVisible()) {
                return *one;
            }
        }
        throw std::runtime_error{"no list is on show"};
    }

    ContentView window;
};

TEST_F(WindowScene, AFolderThatWasFoundIsEnteredInTheExplorer)
{
    const TemporaryTree tree{file("p/node_modules/m/x", 5000), file("p/.git/x", 5000),
                             file("p/target/x", 5000)};
    const std::vector<std::pair<QString, ScanToolViewModel*>> tools{
        {QStringLiteral("node-modules"), &window.store().nodeModules},
        {QStringLiteral("git-repos"), &window.store().gitRepos},
        {QStringLiteral("build-caches"), &window.store().buildCaches}};
    for (const auto& [id, tool] : tools) {
        window.selectTool(id);
        open(*tool, tree.url("p"));
        const Entry found = *[&, tool = tool] {
            std::optional<Entry> last;
            tool->forEachEntry([&last](const Entry& entry) { last = entry; });
            return last;
        }();
        ASSERT_TRUE(table().setCurrentEntry(found.url));
        table().setFocus();
        press(Qt::Key_Return);
        EXPECT_EQ(window.selectedToolID(), QStringLiteral("disk-usage"));
        FolderNavigatorViewModel& explorer = window.store().diskUsage;
        EXPECT_TRUE(waitUntil(&explorer, &FolderNavigatorViewModel::currentURLChanged,
                              [&] { return explorer.currentURL() == found.url; }));
    }
}

TEST_F(WindowScene, AClickBesideTheToolsLeavesTheOneOnShow)
{
    auto* const tools = window.findChild<QListWidget*>();
    const QRect first = tools->visualItemRect(tools->item(1));
    QTest::mouseClick(tools->viewport(), Qt::LeftButton, {},
                      tools->viewport()->rect().bottomLeft() + QPoint{20, -20});
    EXPECT_EQ(window.selectedToolID(), QStringLiteral("disk-usage"));
    QTest::mouseClick(tools->viewport(), Qt::LeftButton, Qt::ControlModifier, first.center());
    EXPECT_EQ(window.selectedToolID(), QString{});
}

TEST_F(WindowScene, AnotherFolderCanBeChosenFromAnEmptyPageToo)
{
    const TemporaryTree tree{folder("empty"), folder("<b>&other")};
    RecentFolders::shared().add(tree.url("gone"));
    RecentFolders::shared().add(tree.url("<b>&other"));
    window.selectTool(QStringLiteral("build-caches"));
    BuildCachesViewModel& caches = window.store().buildCaches;
    open(caches, tree.url("empty"));
    EXPECT_TRUE(shows("Aucun cache de build ici."));
    button("Choisir un autre dossier…")->click();
    auto& screen = *window.findChild<BuildCachesView*>();
    EXPECT_TRUE(chooserOpens(screen));

    auto* const folders = dynamic_cast<QPushButton*>(button("Changer de dossier"));
    ASSERT_NE(folders, nullptr);
    QMenu& menu = *folders->menu();
    Q_EMIT menu.aboutToShow();
    ASSERT_TRUE(waitUntil(&FolderPresence::shared(), &FolderPresence::changed,
                          [&] { return FolderPresence::shared().isMissing(tree.url("gone")); }));
    const QList<QAction*> entries = menu.actions();
    ASSERT_GE(entries.size(), 5);
    EXPECT_TRUE(entries[2]->text().endsWith(QStringLiteral("/empty")));
    EXPECT_TRUE(entries[3]->text().endsWith(QStringLiteral("/<b>&&other")));
    EXPECT_TRUE(entries[4]->text().endsWith(QStringLiteral("/gone (introuvable)")));
    entries[3]->trigger();
    ASSERT_TRUE(waitUntil(&caches, &FolderTool::stateChanged,
                          [&] { return caches.rootURL() == tree.url("<b>&other") && !caches.isScanning(); }));
    entries[0]->trigger();
    EXPECT_TRUE(chooserOpens(screen));
}

TEST_F(WindowScene, WhatNoProgramOfTheDesktopTakesIsSaid)
{
    const TemporaryTree tree{file("photo.jpg", 5000),
                             file("bin/xdg-open", "#!/bin/sh\nexit 4\n").withMode(0755)};
    const QByteArray path = qgetenv("PATH");
    open(window.store().diskUsage, tree.url());
    qputenv("PATH", QByteArray::fromStdString(tree.path("bin")));
    Desktop::open(tree.url("photo.jpg"));
    qputenv("PATH", path);
    EXPECT_TRUE(waitUntil(&window.store().diskUsage, &ScanToolViewModel::statusMessageChanged, [&] {
        return window.store().diskUsage.statusMessage() ==
               QStringLiteral("Aucun programme ne peut ouvrir « photo.jpg ».");
    }));
}

/// The explorer with listings that are fed by hand.
class ExplorerScene : public testing::Test {
protected:
    ExplorerScene()
    {
        Settings::store().clear();
        scene.openLoaded("/r", {folderEntry("/r/folder", 30), fileEntry("/r/b", 20), fileEntry("/r/c", 10)});
        view.resize(900, 600);
        view.show();
        activate(view);
        table.setFocus();
    }

    [[nodiscard]] QAbstractButton* button(const char* text) const
    {
        return visibleButton(view, QString::fromUtf8(text));
    }

    /// What the screen says of its list and of what is checked.
    [[nodiscard]] std::string sums() const
    {
        QStringList said;
        for (const QString& text : visibleTexts(view)) {
            if (text.contains(QStringLiteral("élément")) || text.contains(QStringLiteral("sélectionné"))) {
                said << text;
            }
        }
        return said.join(QStringLiteral(" | ")).toStdString();
    }

    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::keyClick(view.focusWidget(), key, modifiers);
    }

    [[nodiscard]] DeleteConfirmation* dialog() const { return view.findChild<DeleteConfirmation*>(); }

    NavigatorScene scene;
    DiskUsageView view{*scene.navigator};
    EntryTable& table = *view.findChild<EntryTable*>();
};

TEST_F(ExplorerScene, ChecksByButtonsAndKeysFollowTheFilter)
{
    EXPECT_EQ(sums(), "3 éléments · 60 o | Cochez les éléments à supprimer");
    ASSERT_TRUE(table.setCurrentEntry(FileUrl{"/r/c"}));
    press(Qt::Key_Space);
    EXPECT_EQ(sums(), "3 éléments · 60 o · 1 sélectionné | 1 sélectionné");
    view.findChild<SearchField*>()->setText(QStringLiteral("b"));
    EXPECT_EQ(sums(), "3 éléments · 60 o · 1 affiché · 20 o | Cochez les éléments à supprimer");
    button("Tout sélectionner")->click();
    EXPECT_EQ(sums(), "3 éléments · 60 o · 1 affiché · 20 o · 1 sélectionné | 1 sélectionné");
    view.findChild<SearchField*>()->setText({});
    EXPECT_EQ(sums(), "3 éléments · 60 o · 2 sélectionnés | 2 sélectionnés");
    table.setFocus();
    press(Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(sums(), "3 éléments · 60 o · 3 sélectionnés | 3 sélectionnés");
    button("Tout désélectionner")->click();
    EXPECT_EQ(sums(), "3 éléments · 60 o | Cochez les éléments à supprimer");
}

TEST_F(ExplorerScene, TheMapIsAnotherViewOfTheSameList)
{
    ASSERT_TRUE(table.setCurrentEntry(FileUrl{"/r/b"}));
    press(Qt::Key_Space);
    button("Treemap")->click();
    auto& map = *view.findChild<TreemapView*>();
    EXPECT_TRUE(map.hasFocus()) << "the keyboard stays in the list";
    EXPECT_TRUE(map.isChecked(*map.scene().find(FileUrl{"/r/b"})));
    map.setCurrentTile(*map.scene().find(FileUrl{"/r/c"}));
    press(Qt::Key_Delete);
    ASSERT_NE(dialog(), nullptr);
    EXPECT_EQ(dialog()->pending().urls, std::vector{FileUrl{"/r/b"}}) << "what is checked goes before";
    delete dialog();
    button("Tout désélectionner")->click();
    EXPECT_FALSE(map.isChecked(*map.scene().find(FileUrl{"/r/b"})));
    press(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QGuiApplication::clipboard()->text(), QStringLiteral("/r/c"));
    press(Qt::Key_Delete);
    ASSERT_NE(dialog(), nullptr);
    EXPECT_EQ(dialog()->pending().urls, std::vector{FileUrl{"/r/c"}});
    delete dialog();
    view.findChild<SearchField*>()->setText(QStringLiteral("b"));
    ASSERT_TRUE(waitUntil(&table, &EntryTable::rowsChanged,
                          [&] { return view.grab(), map.scene().tiles().size() == 1; }));
    EXPECT_EQ(map.scene().entry(0).name, "b");
    scene.navigator->activate(folderEntry("/r/folder", 30));
    EXPECT_TRUE(map.scene().tiles().empty()) << "tiles of the folder that was left";
    EXPECT_EQ(view.findChild<SearchField*>()->text(), QString{}) << "typed for another folder's names";
}

TEST_F(ExplorerScene, AScanShowsItselfAfterAMomentAndCanBeStopped)
{
    auto* const stop = [this] {
        for (QPushButton* const one : view.findChildren<QPushButton*>()) {
            if (one->text() == QStringLiteral("Arrêter") && one->parent() != nullptr && !one->isVisible()) {
                return one;
            }
        }
        return static_cast<QPushButton*>(nullptr);
    }();
    ASSERT_NE(stop, nullptr);
    press(Qt::Key_F5);
    EXPECT_FALSE(stop->isVisible()) << "a short scan flickers";
    EXPECT_FALSE(visibleTexts(view).contains(QStringLiteral("Analyse en cours…")));
    Awaited shown{*stop, QEvent::Show};
    ASSERT_TRUE(shown.come());
    EXPECT_TRUE(visibleTexts(view).contains(QStringLiteral("Analyse en cours…")));
    QTest::mouseClick(stop, Qt::LeftButton);
    EXPECT_TRUE(scene.listing().isCancelled());
    EXPECT_FALSE(stop->isVisible());
}

TEST_F(ExplorerScene, UpIsNotBackAndPathsAreCopiedLineByLine)
{
    button("Tout sélectionner")->click();
    press(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QGuiApplication::clipboard()->text(), QStringLiteral("/r/folder\n/r/b\n/r/c"));
    scene.navigator->activate(folderEntry("/r/folder/deep", 1));
    press(Qt::Key_Up, Qt::AltModifier);
    EXPECT_EQ(scene.navigator->currentURL(), FileUrl{"/r/folder"});
    press(Qt::Key_O, Qt::ControlModifier);
    EXPECT_TRUE(chooserOpens(view));
}

} // namespace

} // namespace tallyroom
