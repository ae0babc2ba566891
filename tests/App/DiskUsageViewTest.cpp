#include "Tools/DiskUsage/DiskUsageView.h"

#include "App/ExplorerScene.h"
#include "Controls/SearchField.h"
#include "Rows/EntryTableHeader.h"
#include "Rows/EntryTableModel.h"
#include "Tools/DiskUsage/Treemap/TreemapView.h"

#include <QAbstractButton>
#include <QApplication>
#include <QClipboard>
#include <QPushButton>
#include <QRegularExpression>
#include <QTest>

#include <algorithm>
#include <gmock/gmock.h>

namespace tallyroom {

namespace {

using testing::ElementsAre;

/// The explorer's screen on a loaded folder of two files and a folder.
class DiskUsageViewTest : public ExplorerScene {
protected:
    DiskUsageViewTest()
    {
        scene.openLoaded("/r", {folderEntry("/r/folder", 30), fileEntry("/r/b", 20), fileEntry("/r/c", 10)});
        table().setFocus();
    }

    [[nodiscard]] SearchField& search() { return *view.findChild<SearchField*>(); }

    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::keyClick(view.focusWidget(), key, modifiers);
    }

    [[nodiscard]] QStringList texts() const { return visibleTexts(view); }

    [[nodiscard]] QAbstractButton* button(const char* text) const
    {
        return visibleButton(view, QString::fromUtf8(text));
    }

    /// What the screen says of its list and of what is checked.
    [[nodiscard]] std::string sums() const
    {
        const QRegularExpression sum{QStringLiteral("élément|sélectionné|^. ")};
        const QString said = texts().filter(sum).join(QStringLiteral(" | "));
        return QString{said}.replace(QStringLiteral("| · "), QStringLiteral("· ")).toStdString();
    }

    [[nodiscard]] DeleteConfirmation* dialog() const { return view.findChild<DeleteConfirmation*>(); }

    [[nodiscard]] std::string current() const { return scene.navigator->currentURL()->path(); }
};

TEST_F(DiskUsageViewTest, KeysMoveThroughFolders)
{
    ASSERT_TRUE(table().setCurrentEntry(FileUrl{"/r/folder"}));
    press(Qt::Key_Return);
    EXPECT_EQ(current(), "/r/folder");
    press(Qt::Key_Backspace);
    EXPECT_EQ(current(), "/r");
    scene.navigator->activate(folderEntry("/r/folder/deep", 0));
    press(Qt::Key_Up, Qt::AltModifier);
    EXPECT_EQ(current(), "/r/folder") << "up is not back";
    press(Qt::Key_Left, Qt::AltModifier);
    EXPECT_EQ(current(), "/r/folder/deep");
    press(Qt::Key_Home, Qt::AltModifier);
    EXPECT_EQ(current(), "/r");
    scene.navigator->activate(folderEntry("/r/folder", 0));
    QTest::mouseClick(&table(), Qt::BackButton);
    EXPECT_EQ(current(), "/r");
}

TEST_F(DiskUsageViewTest, TheWayBackLeadsToTheRowThatWasLeftWhereItWas)
{
    std::vector<Entry> folders;
    for (int number = 100; number > 0; --number) {
        folders.push_back(folderEntry("/many/" + std::to_string(number), number));
    }
    scene.openLoaded("/many", folders);
    const auto placeOf = [&] { return table().visualRect(table().currentIndex()).top(); };

    const std::vector<std::pair<const char*, std::function<void()>>> cases{
        {"/many/100", [&] { press(Qt::Key_Backspace); }},
        {"/many/30", [&] { press(Qt::Key_Left, Qt::AltModifier); }},
        {"/many/60", [&] { press(Qt::Key_Up, Qt::AltModifier); }}};
    for (const auto& [entered, goBack] : cases) {
        const std::string path = entered;
        ASSERT_TRUE(table().setCurrentEntry(FileUrl{path}));
        const int place = placeOf();
        press(Qt::Key_Return);
        scene.finishListing({fileEntry(path + "/x", 2), fileEntry(path + "/y", 1)});
        scene.navigator->setSearchText(QStringLiteral("y"));
        goBack();
        scene.receive({folders.begin(), folders.begin() + 20}); // the row may come later than the first ones
        scene.finishListing(folders);
        ASSERT_TRUE(table().currentEntry()) << path;
        EXPECT_EQ(table().currentEntry()->url, FileUrl{path});
        EXPECT_EQ(placeOf(), place) << path;
    }
    scene.navigator->activate(folderEntry("/many/7", 7)); // its row was not the current one
    scene.finishListing({});
    scene.navigator->goToRoot();
    scene.finishListing(folders);
    EXPECT_EQ(table().currentEntry()->url, FileUrl{"/many/60"});
}

TEST_F(DiskUsageViewTest, EachPressOfEnterGoesDownOneLevelInTheTableAndInTheMap)
{
    for (const char* const list : {"Tableau", "Treemap"}) {
        button(list)->click();
        scene.openLoaded("/r", {folderEntry("/r/folder", 30), fileEntry("/r/b", 20)});
        search().setFocus();
        press(Qt::Key_Down);
        press(Qt::Key_Home);
        press(Qt::Key_Return);
        scene.receive({fileEntry("/r/folder/small", 1)});
        scene.finishListing({folderEntry("/r/folder/deep", 5), fileEntry("/r/folder/small", 1)});
        QKeyEvent held{QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, {}, true};
        QApplication::sendEvent(view.focusWidget(), &held);
        EXPECT_EQ(current(), "/r/folder") << "a key that is held down, " << list;
        const auto* const map = view.findChild<TreemapView*>();
        EXPECT_TRUE(!map->isVisible() || waitUntil(map, &TreemapView::currentChanged, [map] {
            return map->currentEntry() && map->currentEntry()->name == "deep";
        }));
        press(Qt::Key_Enter); // of the keypad
        EXPECT_EQ(current(), "/r/folder/deep") << list;
    }
}

TEST_F(DiskUsageViewTest, SortingByAClickOnATitleAimsNoDeletion)
{
    view.setFocus();
    table().resetView();
    auto* const header = view.findChild<EntryTableHeader*>();
    for (const int column : {EntryTableModel::nameColumn, 2}) {
        const int x = header->sectionViewportPosition(column) + 20;
        QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, {x, header->height() / 2});
        EXPECT_FALSE(table().currentEntry()) << "a click on title " << column;
        press(Qt::Key_Delete);
        EXPECT_EQ(dialog(), nullptr);
    }
}

TEST_F(DiskUsageViewTest, ChecksByButtonsAndKeysFollowTheFilter)
{
    EXPECT_EQ(sums(), "3 éléments · 60 o | Cochez les éléments à supprimer");
    ASSERT_TRUE(table().setCurrentEntry(FileUrl{"/r/c"}));
    press(Qt::Key_Space);
    press(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QGuiApplication::clipboard()->text(), QStringLiteral("/r/c"));
    EXPECT_EQ(sums(), "3 éléments · 60 o · 1 sélectionné | 1 sélectionné · 10 o");
    search().setText(QStringLiteral("/r"));
    EXPECT_TRUE(sums().starts_with("3 éléments · 60 o · 0 affiché · 0 o |"))
        << "names are searched, not paths";
    search().setText(QStringLiteral("B"));
    EXPECT_EQ(sums(), "3 éléments · 60 o · 1 affiché · 20 o | Cochez les éléments à supprimer");
    button("Tout sélectionner")->click();
    EXPECT_EQ(sums(), "3 éléments · 60 o · 1 affiché · 20 o · 1 sélectionné | 1 sélectionné · 20 o");
    press(Qt::Key_Delete);
    ASSERT_NE(dialog(), nullptr);
    EXPECT_THAT(dialog()->pending().urls, ElementsAre(FileUrl{"/r/b"})) << "what the filter hides stays";
    delete dialog();
    activate(view);
    search().setText({});
    EXPECT_EQ(sums(), "3 éléments · 60 o · 2 sélectionnés | 2 sélectionnés · 30 o");
    table().resetView();
    table().setFocus();
    press(Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(sums(), "3 éléments · 60 o · 3 sélectionnés | 3 sélectionnés · 60 o");
    press(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QGuiApplication::clipboard()->text(), QStringLiteral("/r/folder\n/r/b\n/r/c"));
    button("Tout désélectionner")->click();
    EXPECT_EQ(sums(), "3 éléments · 60 o | Cochez les éléments à supprimer");
    view.selection().setAll();
    scene.navigator->activate(folderEntry("/r/folder", 30));
    EXPECT_TRUE(view.selection().urls().empty()) << "checks stay in their folder";
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
    const QString choice = QStringLiteral(
        " o\n\n« Mettre à la corbeille » est réversible. « Supprimer définitivement » ne l'est pas.");
    const QString trashed = QStringLiteral("1 élément(s) · 20 o mis à la corbeille.");
    const QString gone = QStringLiteral("1 élément(s) · 10 o supprimé(s) définitivement.");
    using Case = std::tuple<const char*, Qt::KeyboardModifiers, Qt::Key, std::optional<QString>>;
    for (const auto& [checked, modifiers, answer, report] :
         {Case{"/r/b", Qt::NoModifier, Qt::Key_Escape, std::nullopt},
          Case{"/r/b", Qt::NoModifier, Qt::Key_Return, trashed},
          Case{"/r/c", Qt::ShiftModifier, Qt::Key_Return, gone}}) {
        activate(view);
        view.selection().setUrls({FileUrl{checked}});
        press(Qt::Key_Delete, modifiers);
        ASSERT_NE(dialog(), nullptr);
        EXPECT_FALSE(visibleTexts(*dialog()).filter(choice).isEmpty());
        for (const char* const text : {"Mettre à la corbeille", "Supprimer définitivement", "Annuler"}) {
            EXPECT_NE(visibleButton(*dialog(), QString::fromUtf8(text)), nullptr) << text;
        }
        QTest::keyClick(dialog(), answer);
        EXPECT_EQ(scene.deletions->isRunning(), report.has_value());
        ASSERT_TRUE(scene.waitForRemoval());
        EXPECT_EQ(scene.navigator->statusMessage(), report);
        EXPECT_EQ(view.selection().urls().empty(), report.has_value());
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

TEST_F(DiskUsageViewTest, TheBannerTakesADeletionBackOnceAndNotWhileAnotherRuns)
{
    scene.deleteNow({FileUrl{"/r/b"}});
    scene.holdRemovals();
    scene.navigator->deleteSelected({FileUrl{"/r/c"}}, false);
    EXPECT_EQ(button("Annuler la suppression"), nullptr);
    scene.letRemove();
    button("Annuler la suppression")->setFocus();
    button("Annuler la suppression")->click();
    ASSERT_TRUE(scene.waitForRemoval());
    EXPECT_TRUE(table().hasFocus()) << "the button is gone, and the keyboard with it";
    EXPECT_THAT(scene.listedNames(), ElementsAre("folder", "c"));
    EXPECT_EQ(button("Annuler la suppression"), nullptr);
    button("Fermer le message")->click();
    EXPECT_EQ(button("Fermer le message"), nullptr);
    scene.deleteNow({FileUrl{"/r/c"}});
    press(Qt::Key_Z, Qt::ControlModifier);
    ASSERT_TRUE(scene.waitForRemoval());
    EXPECT_THAT(scene.listedNames(), ElementsAre("folder", "c"));
}

TEST_F(DiskUsageViewTest, EveryEndOfAScanHasItsWordsAndOnlyACompleteOneFoundNothing)
{
    const auto stop = [&] { scene.navigator->cancelScan(); };
    const auto failToChoose = [&] {
        scene.navigator->handleImport(FolderChoice{});
        scene.navigator->dismissError();
    };
    const auto find = [&] { scene.receive({fileEntry("/r/folder/x", 7)}); };
    const std::string before = "Analyse interrompue avant le premier résultat.";
    const std::string partial = "Analyse interrompue : résultat partiel";
    const std::vector<std::pair<std::function<void()>, std::string>> cases{
        {[&] { scene.finishListing({}); }, "0 élément · 0 o|Ce dossier est vide."},
        {[&] { scene.finishListing({}, SystemError{EACCES}); },
         "Ce dossier ne peut pas être lu : accès refusé."},
        {stop, partial + "|" + before},
        {failToChoose, partial + "|" + before},
        {[&] {
             scene.finishListing({}, SystemError{EACCES});
             button("Réessayer")->click();
             EXPECT_FALSE(scene.listing().useCache);
             scene.finishListing({});
             EXPECT_EQ(button("Réessayer"), nullptr);
         },
         "0 élément · 0 o|Ce dossier est vide."},
        {[&] { find(), stop(); }, "1 élément · 7 o|" + partial},
        {[&] { find(), failToChoose(); }, "1 élément · 7 o|" + partial}};
    const QRegularExpression ofEnds{QStringLiteral("^\\d+ élément|Analyse|Rien|Ce dossier")};
    for (const auto& [end, said] : cases) {
        scene.navigator->activate(folderEntry("/r/folder", 0));
        end();
        QStringList words = texts().filter(ofEnds);
        words.sort();
        EXPECT_EQ(words.join(u'|').toStdString(), said);
        QAbstractButton* const resume = button("Reprendre");
        ASSERT_EQ(resume != nullptr, said.contains(partial));
        if (resume != nullptr) {
            resume->click();
            EXPECT_TRUE(scene.navigator->isScanning());
            EXPECT_TRUE(scene.listing().useCache);
            scene.finishListing({fileEntry("/r/folder/y", 9)});
            EXPECT_EQ(texts().filter(ofEnds), QStringList{QStringLiteral("1 élément · 9 o")});
            EXPECT_EQ(button("Reprendre"), nullptr);
        }
    }
    scene.navigator->setSearchText(QStringLiteral("nothing"));
    EXPECT_TRUE(texts().contains(QStringLiteral("Aucun élément ne correspond au filtre.")));
    button("Effacer le filtre")->click();
    EXPECT_TRUE(table().isVisible());
    scene.navigator->handleImport(FolderChoice{});
    EXPECT_TRUE(texts().contains(QStringLiteral("Aucun dossier sélectionné.")));
    button("Revenir")->click();
    EXPECT_TRUE(table().isVisible());
}

TEST_F(DiskUsageViewTest, TheMapIsAnotherViewOfTheSameListAndItsChoiceIsKept)
{
    ASSERT_TRUE(table().setCurrentEntry(FileUrl{"/r/b"}));
    press(Qt::Key_Space);
    button("Treemap")->click();
    EXPECT_FALSE(table().isVisible());
    auto& map = *view.findChild<TreemapView*>();
    EXPECT_TRUE(map.hasFocus()) << "the keyboard stays in the list";
    EXPECT_TRUE(map.isChecked(*map.scene().find(FileUrl{"/r/b"})));
    map.setCurrentTile(*map.scene().find(FileUrl{"/r/c"}));
    const auto asksFor = [this](const char* path) {
        press(Qt::Key_Delete);
        ASSERT_NE(dialog(), nullptr);
        EXPECT_THAT(dialog()->pending().urls, ElementsAre(FileUrl{path}));
        delete dialog();
        activate(view);
    };
    asksFor("/r/b"); // what is checked goes before
    button("Tout désélectionner")->click();
    EXPECT_FALSE(map.isChecked(*map.scene().find(FileUrl{"/r/b"})));
    asksFor("/r/c");
    press(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QGuiApplication::clipboard()->text(), QStringLiteral("/r/c"));
    search().setText(QStringLiteral("b"));
    ASSERT_TRUE(waitUntil(&table(), &EntryTable::rowsChanged,
                          [&] { return view.grab(), map.scene().tiles().size() == 1; }));
    EXPECT_EQ(map.scene().entry(0).name, "b");
    scene.navigator->activate(folderEntry("/r/folder", 30));
    EXPECT_TRUE(map.scene().tiles().empty()) << "tiles of the folder that was left";
    EXPECT_EQ(search().text(), QString{}) << "typed for another folder's names";
    EXPECT_TRUE(DiskUsageView{*scene.navigator}.isTreemapShown());
}

TEST_F(DiskUsageViewTest, AScanShowsItselfAfterAMomentAndCanBeStopped)
{
    const auto buttons = view.findChildren<QPushButton*>();
    auto* const stop = *std::ranges::find(buttons, QStringLiteral("Arrêter"), &QPushButton::accessibleName);
    press(Qt::Key_F5);
    EXPECT_FALSE(stop->isVisible()) << "a short scan flickers";
    EXPECT_FALSE(texts().contains(QStringLiteral("Analyse en cours…")));
    ASSERT_TRUE(QTest::qWaitFor([stop] { return stop->isVisible(); }));
    EXPECT_TRUE(texts().contains(QStringLiteral("Analyse en cours…")));
    scene.listing().send({fileEntry("/r/b", 20)}, 123'456, 123'580);
    ASSERT_TRUE(waitUntil(scene.navigator.get(), &ListToolViewModel::progressChanged, [&] {
        return texts().contains(QStringLiteral("Analyse en cours… 123456/123580"));
    }));
    EXPECT_TRUE(texts().contains(QStringLiteral("99 %"))) << "is not rounded up";
    QTest::mouseClick(stop, Qt::LeftButton);
    EXPECT_TRUE(scene.listing().isCancelled());
    EXPECT_FALSE(stop->isVisible());
}

} // namespace

} // namespace tallyroom
