#include "Tools/DiskUsage/DiskUsageView.h"

#include "App/EventWait.h"
#include "App/NavigatorScene.h"
#include "App/ScreenWords.h"
#include "Controls/SearchField.h"
#include "Controls/SelectionBar.h"
#include "Deletion/StatusBanner.h"
#include "Rows/EntryTable.h"
#include "Rows/EntryTableHeader.h"
#include "Rows/EntryTableModel.h"
#include "Settings/PersistedSettings.h"
#include "Shell/ContentView.h"
#include "Support/TemporaryTree.h"
#include "Text/FileUrlText.h"
#include "Theme/Theme.h"
#include "Tools/DiskUsage/Breadcrumb.h"

#include <QAbstractButton>
#include <QApplication>
#include <QClipboard>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QTest>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tallyroom {

namespace {

using testing::ElementsAre;

/// The explorer's screen in a window of its own, on a loaded folder of two files and a folder.
class DiskUsageViewTest : public testing::Test {
protected:
    DiskUsageViewTest()
    {
        Settings::store().remove(QStringLiteral("diskUsage.treemap"));
        scene.openLoaded("/r", {folderEntry("/r/folder", 30), fileEntry("/r/b", 20), fileEntry("/r/c", 10)});
        view.resize(900, 600);
        view.show();
        activate(view);
        table().setFocus();
    }

    [[nodiscard]] EntryTable& table() { return *view.findChild<EntryTable*>(); }

    [[nodiscard]] SearchField& search() { return *view.findChild<SearchField*>(); }

    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::keyClick(view.focusWidget(), key, modifiers);
    }

    [[nodiscard]] QStringList texts() const { return visibleTexts(view); }

    [[nodiscard]] QAbstractButton* button(const QString& text) const { return visibleButton(view, text); }

    [[nodiscard]] DeleteConfirmation* dialog() const { return view.findChild<DeleteConfirmation*>(); }

    [[nodiscard]] QString current() const
    {
        return QString::fromStdString(scene.navigator->currentURL()->path());
    }

    NavigatorScene scene;
    DiskUsageView view{*scene.navigator};
};

TEST_F(DiskUsageViewTest, KeysMoveThroughFolders)
{
    ASSERT_TRUE(table().setCurrentEntry(FileUrl{"/r/folder"}));
    press(Qt::Key_Return);
    EXPECT_EQ(current(), QStringLiteral("/r/folder"));
    press(Qt::Key_Backspace);
    EXPECT_EQ(current(), QStringLiteral("/r"));
    scene.navigator->activate(folderEntry("/r/folder", 0));
    scene.navigator->activate(folderEntry("/r/folder/deep", 0));
    press(Qt::Key_Up, Qt::AltModifier);
    EXPECT_EQ(current(), QStringLiteral("/r/folder"));
    press(Qt::Key_Left, Qt::AltModifier);
    EXPECT_EQ(current(), QStringLiteral("/r"));
    scene.navigator->activate(folderEntry("/r/folder", 0));
    press(Qt::Key_Home, Qt::AltModifier);
    EXPECT_EQ(current(), QStringLiteral("/r"));
    scene.navigator->activate(folderEntry("/r/folder", 0));
    QTest::mouseClick(&table(), Qt::BackButton);
    EXPECT_EQ(current(), QStringLiteral("/r"));
}

TEST_F(DiskUsageViewTest, GoingBackFindsTheFolderThatWasLeft)
{
    scene.navigator->activate(folderEntry("/r/folder", 30));
    scene.finishListing({});
    scene.navigator->goBack();
    scene.finishListing({fileEntry("/r/b", 50), folderEntry("/r/folder", 30)});
    ASSERT_TRUE(table().currentEntry());
    EXPECT_EQ(table().currentEntry()->name, "folder");
}

TEST_F(DiskUsageViewTest, SortingByAClickOnATitleAimsNoDeletion)
{
    view.setFocus();
    table().startOver();
    auto* const header = view.findChild<EntryTableHeader*>();
    for (const int column : {EntryTableModel::nameColumn, 2}) {
        const int x = header->sectionViewportPosition(column) + 20;
        QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, {x, header->height() / 2});
        EXPECT_FALSE(table().currentEntry()) << "a click on title " << column;
        press(Qt::Key_Delete);
        EXPECT_EQ(dialog(), nullptr);
    }
}

TEST_F(DiskUsageViewTest, KeysCheckAndUncheck)
{
    ASSERT_TRUE(table().setCurrentEntry(FileUrl{"/r/b"}));
    press(Qt::Key_Space);
    EXPECT_EQ(view.selection().urls(), UrlSet{FileUrl{"/r/b"}});
    EXPECT_TRUE(texts().contains(QStringLiteral("3 éléments · 60 o · 1 sélectionné")));
    press(Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(view.selection().urls().size(), 3U);
    press(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QGuiApplication::clipboard()->text(), QStringLiteral("/r/b"));
}

TEST_F(DiskUsageViewTest, ATextFieldKeepsItsOwnKeys)
{
    press(Qt::Key_F, Qt::ControlModifier);
    ASSERT_TRUE(search().hasFocus());
    QTest::keyClicks(&search(), QStringLiteral("bx"));
    press(Qt::Key_Backspace);
    EXPECT_EQ(scene.navigator->searchText(), QStringLiteral("b"));
    press(Qt::Key_A, Qt::ControlModifier);
    press(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QGuiApplication::clipboard()->text(), QStringLiteral("b"));
    EXPECT_TRUE(view.selection().urls().empty());
    press(Qt::Key_Delete);
    EXPECT_EQ(scene.navigator->searchText(), QString{});
    EXPECT_EQ(dialog(), nullptr);
}

TEST_F(DiskUsageViewTest, WhatTheFilterHidesIsNotDeleted)
{
    view.selection().setUrls({FileUrl{"/r/b"}, FileUrl{"/r/c"}});
    scene.navigator->setSearchText(QStringLiteral("C"));
    EXPECT_THAT(view.selection().checkedEntries(), ElementsAre(fileEntry("/r/c", 10)));
    EXPECT_TRUE(texts().contains(QStringLiteral("3 éléments · 60 o · 1 affiché · 10 o · 1 sélectionné")));
    press(Qt::Key_Delete);
    ASSERT_NE(dialog(), nullptr);
    EXPECT_THAT(dialog()->pending().urls, ElementsAre(FileUrl{"/r/c"}));
}

TEST_F(DiskUsageViewTest, EscapeClearsTheFieldItIsTypedInAndElseStopsTheScanBeforeTheFilter)
{
    scene.navigator->setSearchText(QStringLiteral("b"));
    press(Qt::Key_F5);
    EXPECT_THAT(scene.invalidated, ElementsAre(FileUrl{"/r"}));
    EXPECT_FALSE(scene.listing().useCache);
    search().setFocus();
    press(Qt::Key_Escape);
    EXPECT_EQ(search().text(), QString{});
    EXPECT_FALSE(scene.listing().isCancelled());
    press(Qt::Key_Escape);
    EXPECT_TRUE(scene.listing().isCancelled());
    scene.navigator->setSearchText(QStringLiteral("b"));
    press(Qt::Key_F5);
    table().setFocus();
    press(Qt::Key_Escape);
    EXPECT_TRUE(scene.listing().isCancelled());
    EXPECT_EQ(search().text(), QStringLiteral("b"));
    press(Qt::Key_Escape);
    EXPECT_EQ(search().text(), QString{});
}

TEST_F(DiskUsageViewTest, DeleteAndShiftDeleteDifferInTheChoiceThatEnterTakes)
{
    struct Case {
        Qt::KeyboardModifiers modifiers;
        QString report;
    };

    const std::vector<Case> cases{
        {Qt::NoModifier, QStringLiteral("1 élément(s) · 20 o mis à la corbeille.")},
        {Qt::ShiftModifier, QStringLiteral("1 élément(s) · 10 o supprimé(s) définitivement.")}};
    const std::vector<FileUrl> checked{FileUrl{"/r/b"}, FileUrl{"/r/c"}};
    for (std::size_t index = 0; index < cases.size(); ++index) {
        activate(view);
        view.selection().setUrls({checked[index]});
        press(Qt::Key_Delete, cases[index].modifiers);
        ASSERT_NE(dialog(), nullptr);
        QTest::keyClick(dialog(), Qt::Key_Return);
        ASSERT_TRUE(scene.waitForRemoval());
        EXPECT_EQ(scene.navigator->statusMessage(), cases[index].report);
        EXPECT_TRUE(view.selection().urls().empty());
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

TEST_F(DiskUsageViewTest, TheDialogSaysWhatIsAtStakeAndMayBeLeft)
{
    view.selection().setUrls({FileUrl{"/r/b"}, FileUrl{"/r/c"}});
    press(Qt::Key_Delete);
    ASSERT_NE(dialog(), nullptr);
    EXPECT_EQ(dialog()->windowTitle(), QStringLiteral("Comment supprimer ?"));
    QStringList labels;
    for (const QLabel* const label : dialog()->findChildren<QLabel*>()) {
        labels << label->text();
    }
    EXPECT_TRUE(labels.contains(
        QStringLiteral("2 éléments · 30 o\n\n« Mettre à la corbeille » est réversible. « Supprimer "
                       "définitivement » ne l'est pas.")));
    QStringList buttons;
    for (const QPushButton* const one : dialog()->findChildren<QPushButton*>()) {
        buttons << one->text();
    }
    EXPECT_EQ(buttons, (QStringList{QStringLiteral("Mettre à la corbeille"),
                                    QStringLiteral("Supprimer définitivement"), QStringLiteral("Annuler")}));
    QTest::keyClick(dialog(), Qt::Key_Escape);
    EXPECT_FALSE(scene.deletions->isRunning());
    EXPECT_EQ(scene.listedNames().size(), 3U);
}

TEST_F(DiskUsageViewTest, TheBannerTakesADeletionBackOnce)
{
    scene.deleteNow({FileUrl{"/r/b"}});
    QAbstractButton* const undo = button(QStringLiteral("Annuler la suppression"));
    ASSERT_NE(undo, nullptr);
    undo->click();
    ASSERT_TRUE(scene.waitForRemoval());
    EXPECT_EQ(scene.listedNames().size(), 3U);
    EXPECT_EQ(button(QStringLiteral("Annuler la suppression")), nullptr);
    button(QStringLiteral("Fermer le message"))->click();
    EXPECT_FALSE(view.findChild<StatusBanner*>()->isVisible());
    scene.deleteNow({FileUrl{"/r/b"}});
    press(Qt::Key_Z, Qt::ControlModifier);
    ASSERT_TRUE(scene.waitForRemoval());
    EXPECT_EQ(scene.listedNames().size(), 3U);
}

TEST_F(DiskUsageViewTest, ChecksStayWhileAScanFillsTheListAndGoWithTheFolder)
{
    scene.navigator->activate(folderEntry("/r/folder", 30));
    scene.receive({fileEntry("/r/folder/x", 5)});
    view.selection().setUrls({FileUrl{"/r/folder/x"}});
    scene.finishListing({fileEntry("/r/folder/y", 9), fileEntry("/r/folder/x", 5)});
    EXPECT_EQ(view.selection().urls(), UrlSet{FileUrl{"/r/folder/x"}});
    scene.navigator->goBack();
    EXPECT_TRUE(view.selection().urls().empty());
}

TEST_F(DiskUsageViewTest, OnlyACompleteScanIsSaidToHaveFoundNothing)
{
    const QString partial = QStringLiteral("Analyse interrompue : résultat partiel");
    const auto stop = [&] { scene.navigator->cancelScan(); };
    const auto failToChoose = [&] {
        scene.navigator->handleImport(FolderChoice{});
        scene.navigator->dismissError();
    };

    struct Case {
        std::function<void()> end;
        std::vector<QString> said;
        bool isPartial;
    };

    const QString before = QStringLiteral("Rien n’a été trouvé avant l’arrêt de l’analyse.");
    const std::vector<Case> cases{
        {[&] { scene.finishListing({}); },
         {QStringLiteral("Ce dossier est vide."), QStringLiteral("0 élément · 0 o")},
         false},
        {[&] { scene.finishListing({}, SystemError{EACCES}); },
         {QStringLiteral("Ce dossier ne peut pas être lu : accès refusé.")},
         false},
        {stop, {partial, before}, true},
        {failToChoose, {partial, before}, true},
        {[&] { scene.receive({fileEntry("/r/folder/x", 7)}), stop(); },
         {partial, QStringLiteral("1 élément · 7 o")},
         true},
        {[&] { scene.receive({fileEntry("/r/folder/x", 7)}), failToChoose(); },
         {partial, QStringLiteral("1 élément · 7 o")},
         true}};
    for (const Case& one : cases) {
        scene.navigator->activate(folderEntry("/r/folder", 0));
        one.end();
        for (const QString& words : one.said) {
            EXPECT_TRUE(texts().contains(words)) << words.toStdString();
        }
        EXPECT_EQ(texts().contains(QStringLiteral("Ce dossier est vide.")),
                  one.said.front() == QStringLiteral("Ce dossier est vide."));
        EXPECT_EQ(texts().contains(QStringLiteral("0 élément · 0 o")),
                  one.said.size() == 2 && !one.isPartial);
        QAbstractButton* const resume = button(QStringLiteral("Reprendre"));
        ASSERT_EQ(resume != nullptr, one.isPartial);
        if (one.isPartial) {
            resume->click();
            EXPECT_TRUE(scene.navigator->isScanning());
            EXPECT_TRUE(scene.listing().useCache);
            scene.finishListing({fileEntry("/r/folder/y", 9)});
            EXPECT_TRUE(texts().contains(QStringLiteral("1 élément · 9 o")));
            EXPECT_EQ(button(QStringLiteral("Reprendre")), nullptr);
        }
        EXPECT_FALSE(texts().contains(partial));
    }
}

TEST_F(DiskUsageViewTest, EveryEndOfAScanHasItsWords)
{
    scene.navigator->setSearchText(QStringLiteral("nothing"));
    EXPECT_TRUE(texts().contains(QStringLiteral("Aucun élément ne correspond au filtre.")));
    button(QStringLiteral("Effacer le filtre"))->click();
    EXPECT_TRUE(table().isVisible());
    scene.navigator->handleImport(FolderChoice{});
    EXPECT_TRUE(texts().contains(QStringLiteral("Aucun dossier sélectionné.")));
    button(QStringLiteral("Revenir"))->click();
    EXPECT_TRUE(table().isVisible());
}

TEST_F(DiskUsageViewTest, TheChoiceOfTreemapIsKept)
{
    EXPECT_FALSE(view.isTreemapShown());
    button(QStringLiteral("Treemap"))->click();
    EXPECT_TRUE(view.isTreemapShown());
    EXPECT_FALSE(table().isVisible());
    const DiskUsageView next{*scene.navigator};
    EXPECT_TRUE(next.isTreemapShown());
}

/// What Tab, or Shift+Tab, comes by from where the keyboard is, until it is there again.
QStringList stopsOf(QWidget& window, Qt::Key key)
{
    QStringList stops;
    const QWidget* const start = window.focusWidget();
    do {
        const auto* const button = qobject_cast<QAbstractButton*>(window.focusWidget());
        const QString name = window.focusWidget()->accessibleName();
        stops << (name.isEmpty() && button != nullptr ? button->text() : name);
        QTest::keyClick(window.focusWidget(), key);
    } while (window.focusWidget() != start && stops.size() < 20);
    return stops;
}

TEST(ContentView, TabGoesThroughTheWindowAsItIsSeenAndBack)
{
    Settings::store().remove(QStringLiteral("diskUsage.treemap"));
    const TemporaryTree tree{file("inner/photo.jpg", 5000)};
    ContentView window;
    window.show();
    activate(window);
    window.openFolder(tree.url());
    FolderNavigatorViewModel& navigator = window.store().diskUsage;
    const auto isLoaded = [&navigator] { return !navigator.isScanning() && !navigator.entries().empty(); };
    ASSERT_TRUE(waitUntil(&navigator, &FolderTool::stateChanged, isLoaded));
    navigator.activate(navigator.entries()[0]);
    ASSERT_TRUE(waitUntil(&navigator, &FolderTool::stateChanged, isLoaded));
    window.findChild<SearchField*>()->setFocus();
    QStringList seen{QStringLiteral("Filtrer par nom"),
                     QStringLiteral("Tableau"),
                     QStringLiteral("Changer de dossier"),
                     QStringLiteral("Rafraîchir"),
                     QStringLiteral("Exporter"),
                     QStringLiteral("Trier par : Taille, décroissant"),
                     QStringLiteral("Espace disque"),
                     QStringLiteral("Tout sélectionner"),
                     QStringLiteral("Tout désélectionner"),
                     QStringLiteral("Outils"),
                     QStringLiteral("Retour"),
                     FileUrlText::display(tree.url().lastPathComponent())};
    EXPECT_EQ(stopsOf(window, Qt::Key_Tab).join(u'|').toStdString(), seen.join(u'|').toStdString());
    std::reverse(seen.begin() + 1, seen.end());
    EXPECT_EQ(stopsOf(window, Qt::Key_Backtab).join(u'|').toStdString(), seen.join(u'|').toStdString());
}

TEST(Breadcrumb, ShowsTheFolderAndItsParentAndTheRestInAMenu)
{
    Breadcrumb breadcrumb;
    std::vector<BreadcrumbItem> items;
    FileUrl url{"/"};
    for (const char* name : {"root", "one & two", "three", "four", "five", "current"}) {
        url = url.appending(name);
        items.push_back({name, url});
    }
    breadcrumb.setItems(items);
    breadcrumb.show();

    struct Case {
        int width;
        QStringList shown;
        QStringList menu;
    };

    const auto words = [](const char* text) { return QString::fromUtf8(text).split(u'|'); };
    const std::vector<Case> cases{
        {600, words("root|one & two|three|four|five|current"), {}},
        {270, words("root|…|four|five|current"), words("one && two|three")},
        {215, words("root|…|five|current"), words("one && two|three|four")},
        {160, words("…|five|current"), words("root|one && two|three|four")},
        {100, words("…|five|current"), words("root|one && two|three|four")},
    };
    for (const Case& one : cases) {
        breadcrumb.resize(one.width, Theme::controlHeight);
        std::vector<QAbstractButton*> steps;
        for (QAbstractButton* const step : breadcrumb.findChildren<QAbstractButton*>()) {
            if (step->isVisible()) {
                EXPECT_GT(step->width(), 0);
                EXPECT_LE(step->geometry().right(), breadcrumb.width());
                steps.push_back(step);
            }
        }
        std::ranges::sort(steps, {}, [](const QAbstractButton* step) { return step->x(); });
        QStringList shown;
        QStringList menu;
        for (QAbstractButton* const step : steps) {
            shown << step->text();
            if (step->text() == QStringLiteral("…")) {
                step->click();
                for (const QAction* const action : step->findChild<QMenu*>()->actions()) {
                    menu << action->text();
                }
                step->findChild<QMenu*>()->hide();
            }
        }
        EXPECT_EQ(shown.join(u'|').toStdString(), one.shown.join(u'|').toStdString()) << one.width;
        EXPECT_EQ(menu.join(u'|').toStdString(), one.menu.join(u'|').toStdString()) << one.width;
    }
}

} // namespace

} // namespace tallyroom
