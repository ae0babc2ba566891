#include "App/WindowScene.h"
#include "Controls/OptionMenu.h"
#include "Deletion/DeleteConfirmation.h"
#include "Settings/FolderProtection.h"
#include "Settings/ScanRules.h"
#include "Shell/KeysDialog.h"
#include "Shell/PreferencesDialog.h"
#include "Text/UnreadText.h"

#include <QLineEdit>
#include <QMenu>
#include <QScopeGuard>
#include <QTreeWidget>

#include <algorithm>
#include <gmock/gmock.h>

namespace tallyroom {

namespace {

using testing::ElementsAre;

/// What the window's menu leads to, and what comes of it in the tools.
class MenuFlow : public WindowScene {};

TEST_F(MenuFlow, TheListOfKeysHasThoseOfTheToolOnShow)
{
    const auto told = [this](Qt::Key key, Qt::KeyboardModifiers modifiers) {
        press(key, modifiers);
        auto* const keys = dialog<KeysDialog>();
        QStringList all;
        for (QTreeWidgetItemIterator row{keys->findChild<QTreeWidget*>()}; *row != nullptr; ++row) {
            all += (*row)->text(0) + QStringLiteral(" = ") + (*row)->text(1);
        }
        delete keys;
        activate(*window);
        return all;
    };
    window->selectTool(QStringLiteral("disk-usage"));
    const QStringList explorer = told(Qt::Key_F1, Qt::NoModifier);
    EXPECT_TRUE(explorer.contains(QStringLiteral("Ouvrir un dossier = Ctrl+O")));
    EXPECT_TRUE(explorer.contains(QStringLiteral("Revenir en arrière = Alt+←, Retour arrière")))
        << explorer.join(QLatin1Char{'\n'}).toStdString();
    window->selectTool(QStringLiteral("dashboard"));
    const QStringList dashboard = told(Qt::Key_Question, Qt::ControlModifier);
    EXPECT_TRUE(dashboard.contains(QStringLiteral("Quitter = Ctrl+Q")));
    EXPECT_TRUE(dashboard.filter(QStringLiteral("Revenir en arrière")).isEmpty());
}

TEST_F(MenuFlow, PreferencesShowWhatToolsKeepAndFollowThem)
{
    press(Qt::Key_Comma, Qt::ControlModifier);
    const auto* const preferences = dialog<PreferencesDialog>();
    const auto titles = [](const QWidget& part) {
        QStringList texts;
        for (const OptionMenu* const menu : part.findChildren<OptionMenu*>()) {
            texts += menu->text();
        }
        return texts;
    };
    ASSERT_EQ(titles(*preferences),
              (QStringList{QStringLiteral("Ancien après : 1 mois"), QStringLiteral("Les 100 plus gros"),
                           QStringLiteral("Taille minimale : 1 Mo"), QStringLiteral("Écosystèmes (6)")}))
        << "the age of large files is forgotten with the folder";
    QMenu& limits = *preferences->findChildren<OptionMenu*>()[1]->menu();
    limits.popup({});
    limits.actions().last()->trigger();
    limits.hide();
    const std::int64_t most = store().largeFiles.limit();
    EXPECT_EQ(most, LargeFilesViewModel::offeredLimits.back());
    EXPECT_EQ(Settings::largeFilesLimit(), most);
    store().nodeModules.setThreshold(AgeThreshold::oneYear);
    EXPECT_TRUE(titles(*preferences).contains(QStringLiteral("Ancien après : 1 an")));
    window->selectTool(QStringLiteral("large-files"));
    EXPECT_TRUE(titles(shown<ToolScreen>()).contains(titles(*preferences)[1]));
}

TEST_F(MenuFlow, WhatIsExcludedIsShownAndRemovedOnlyAfterAWarning)
{
    const TemporaryTree tree{file("films/private/a", 90'000), file("films/b", 40'000), file("c", 10'000)};
    const ScanScope::Rules none;
    scan("disk-usage", tree.url());
    const auto refilled = [&](const FileUrl& folder) { return hasScanned(store().diskUsage, folder); };
    press(Qt::Key_Comma, Qt::ControlModifier);
    auto* const preferences = dialog<PreferencesDialog>();
    const auto fields = preferences->findChildren<QLineEdit*>();
    QLineEdit& name = **std::ranges::find_if(fields, &QLineEdit::isVisible);
    name.setText(QStringLiteral("private"));
    QTest::keyClick(&name, Qt::Key_Return);
    ASSERT_TRUE(refilled(tree.url())) << "the list on show follows";
    delete preferences;
    const Entry films = store().diskUsage.entries()[0];
    EXPECT_EQ(films.sizeBytes, allocated(tree.path("films/b")));
    EXPECT_TRUE(films.has(EntryMark::excluded));
    const DeleteConfirmation asking{{films}, DeleteConfirmation::Default::trash, {}, window.get()};
    EXPECT_TRUE(asking.accessibleDescription().contains(QStringLiteral("exclu des analyses")));
    scan("disk-usage", tree.url("films"));
    const auto& rows = store().diskUsage.entries();
    const auto hidden = std::ranges::find(rows, "private", &Entry::name);
    ASSERT_NE(hidden, rows.end());
    EXPECT_EQ(UnreadText::size(*hidden), QStringLiteral("exclu"));
    scan("disk-usage", tree.url("films/private"));
    EXPECT_THAT(below(tree, store().diskUsage.entries()), ElementsAre("films/private/a")) << "asked for";
    EXPECT_EQ(Settings::textList(QStringLiteral("scan.excludedNames")),
              QStringList{QStringLiteral("private")});
    ScanRules::shared().setRules(none);
}

TEST_F(MenuFlow, AFolderIsExcludedByItsMenuForAllToolsAndComesBackByIt)
{
    const TemporaryTree tree{file("films/private/a", 90'000), file("films/b", 40'000),
                             file("projet/node_modules/x", 9), link("way", "films")};
    const QScopeGuard clean{[] { ScanRules::shared().setRules({}); }};
    const auto choose = [this](const char* text, const Entry& entry) {
        const auto menu = shown<EntryTable>().makeContextMenu(entry);
        const auto actions = menu->actions();
        const auto found = std::ranges::find(actions, QString::fromUtf8(text), &QAction::text);
        if (found == actions.end()) {
            return false;
        }
        (*found)->trigger();
        return true;
    };
    const auto largest = [&] { return below(tree, store().largeFiles.entries()); };
    const auto privateRow = [this] {
        const EntryList& rows = store().diskUsage.entries();
        return *std::ranges::find(rows, "private", &Entry::name);
    };
    const auto isShownAs = [&](const QString& size) {
        return waitUntil(&store().diskUsage, &FolderTool::stateChanged, [&] {
            const EntryList& rows = store().diskUsage.entries();
            return !store().diskUsage.isScanning() && rows.size() == 2 &&
                   UnreadText::size(privateRow()) == size;
        });
    };
    store().dashboard.analyze(tree.url("films"));
    const auto isCounted = [&](int files) {
        return waitUntil(&store().dashboard, &FolderTool::stateChanged, [&] {
            return !store().dashboard.isScanning() && store().dashboard.summary() &&
                   store().dashboard.summary()->totalFiles == files;
        });
    };
    ASSERT_TRUE(isCounted(2));
    scan("large-files", tree.url("films"));
    const Entry file = store().largeFiles.entries()[0];
    EXPECT_FALSE(choose("Exclure « films » des analyses", store().largeFiles.entries()[1])) << "it is open";
    scan("disk-usage", tree.url("way"));
    const QString whole = UnreadText::size(privateRow());
    ASSERT_TRUE(choose("Exclure des analyses", privateRow()));
    ASSERT_TRUE(isShownAs(QStringLiteral("exclu")));
    EXPECT_THAT(ScanRules::shared().rules().folders, ElementsAre(tree.url("films/private")));
    EXPECT_EQ(store().largeFiles.entries().size(), 2) << "what is not on show waits";
    window->selectTool(QStringLiteral("large-files"));
    ASSERT_TRUE(hasScanned(store().largeFiles, tree.url("films")));
    EXPECT_THAT(largest(), ElementsAre("films/b"));
    window->selectTool(QStringLiteral("dashboard"));
    EXPECT_TRUE(isCounted(1));
    window->selectTool(QStringLiteral("disk-usage"));
    ASSERT_TRUE(choose("Ne plus exclure des analyses", privateRow()));
    ASSERT_TRUE(isShownAs(whole));
    window->selectTool(QStringLiteral("large-files"));
    ASSERT_TRUE(hasScanned(store().largeFiles, tree.url("films")));
    ASSERT_TRUE(choose("Exclure « private » des analyses", file));
    ASSERT_TRUE(waitUntil(&store().largeFiles, &FolderTool::stateChanged,
                          [&] { return !store().largeFiles.isScanning() && largest().size() == 1; }));
}

TEST_F(MenuFlow, WhatIsProtectedIsNotRemovedAndTheWindowSaysWhy)
{
    const TemporaryTree tree{file("films/a", 90'000), file("b", 9)};
    const QScopeGuard clean{[] { FolderProtection::setFolders({}); }};
    FolderProtection::setFolders({tree.url("films")});
    scan("disk-usage", tree.url());
    for (const bool permanently : {false, true}) {
        remove(store().diskUsage, {tree.url("films")}, permanently);
        EXPECT_TRUE(tree.exists("films/a"));
        ASSERT_EQ(store().diskUsage.failures().size(), 1);
        EXPECT_EQ(store().diskUsage.failures()[0].message, "Ce dossier est protégé dans les préférences.");
    }
}

} // namespace

} // namespace tallyroom
