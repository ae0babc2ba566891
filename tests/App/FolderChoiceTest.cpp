#include "App/WindowScene.h"
#include "Bridge/FolderPresence.h"
#include "Controls/SearchField.h"
#include "Settings/RecentFolders.h"
#include "Shell/DropHint.h"
#include "Text/FileUrlText.h"
#include "Welcome/ToolWelcome.h"

#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileDialog>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QPushButton>

#include <gmock/gmock.h>

namespace tallyroom {

namespace {

/// The ways by which a folder comes to a tool.
class FolderChoiceFlow : public WindowScene {
protected:
    /// Waits for the folder chooser, and dismisses it.
    [[nodiscard]] bool chooserOpens() const
    {
        const QPointer chooser = dialog<QFileDialog>();
        if (chooser == nullptr) {
            return false;
        }
        QTest::keyClick(chooser, Qt::Key_Escape);
        const bool isClosed = chooser->isHidden();
        delete chooser;
        activate(*window);
        return isClosed;
    }

    /// Waits for the folder chooser, and chooses a folder in it.
    void chooseFolder(const std::string& path) const
    {
        QFileDialog* const chooser = dialog<QFileDialog>();
        ASSERT_NE(chooser, nullptr);
        chooser->findChild<QLineEdit*>()->setText(QString::fromStdString(path));
        QTest::mouseClick(visibleButton(*chooser, QStringLiteral("Choisir")), Qt::LeftButton);
    }
};

TEST_F(FolderChoiceFlow, ADroppedFolderGoesToTheToolOnShowAndAFileIsRefused)
{
    const TemporaryTree tree{file("p/target/x", 5'000), file("note", 1)};
    const auto drop = [this](const QUrl& url) {
        QMimeData dropped;
        dropped.setUrls({url});
        QDragEnterEvent enter{{9, 9}, Qt::CopyAction, &dropped, Qt::LeftButton, {}};
        enter.ignore();
        QCoreApplication::sendEvent(window.get(), &enter);
        const DropHint& hint = *window->findChild<DropHint*>();
        EXPECT_EQ(hint.isVisible(), enter.isAccepted()) << "it says where that lands";
        if (enter.isAccepted()) {
            QDropEvent release{{9, 9}, Qt::CopyAction, &dropped, Qt::LeftButton, {}};
            QCoreApplication::sendEvent(window.get(), &release);
            EXPECT_FALSE(hint.isVisible());
        }
        return enter.isAccepted();
    };
    window->selectTool(QStringLiteral("build-caches"));
    BuildCachesViewModel& tool = store().buildCaches;
    EXPECT_FALSE(drop(QUrl{QStringLiteral("https://a/b")}));
    EXPECT_TRUE(drop(QUrl::fromLocalFile(QString::fromStdString(tree.path("note")))));
    ASSERT_TRUE(waitUntil(&tool, &FolderTool::stateChanged,
                          [&] { return tool.state().phase == ToolState::Phase::error; }));
    EXPECT_TRUE(shows("Sélection impossible : ce n’est pas un dossier."));
    EXPECT_TRUE(drop(QUrl::fromLocalFile(QString::fromStdString(tree.path("p")))));
    ASSERT_TRUE(hasScanned(tool, tree.url("p")));
    EXPECT_THAT(rows(), testing::SizeIs(1));
    EXPECT_EQ(store().diskUsage.rootURL(), std::nullopt);
}

TEST_F(FolderChoiceFlow, ARecentFolderOfTheWelcomePageIsScannedAndItsListHasTheKeyboard)
{
    const TemporaryTree tree{file("big", 90'000), file("small", 10)};
    RecentFolders::shared().add(tree.url());
    window->selectTool(QStringLiteral("large-files"));
    LargeFilesViewModel& tool = store().largeFiles;
    button(QString::fromStdString(std::string{tree.url().lastPathComponent()}))->click();
    ASSERT_TRUE(hasScanned(tool, tree.url()));
    EXPECT_TRUE(shown<EntryTable>().hasFocus());
    press(Qt::Key_F, Qt::ControlModifier);
    EXPECT_TRUE(shown<SearchField>().hasFocus());
    press(Qt::Key_Down);
    EXPECT_TRUE(shown<EntryTable>().hasFocus());
    EXPECT_EQ(shown<EntryTable>().currentEntry()->name, "big");
    EXPECT_THAT(RecentFolders::shared().urls().front(), tree.url());
}

TEST_F(FolderChoiceFlow, AFolderOpenElsewhereIsOfferedFirstAndEnterTakesIt)
{
    const TemporaryTree tree{file("a&b/big", 90'000)};
    scan("large-files", tree.url("a&b"));
    window->selectTool(QStringLiteral("duplicates"));
    auto* const offer = button(QStringLiteral("Analyser ") + FileUrlText::displayFromHome(tree.url("a&b")));
    ASSERT_NE(offer, nullptr);
    EXPECT_FALSE(offer->text().contains(QStringLiteral("a&b"))) << "the sign would be swallowed";
    shown<ToolWelcome>().setFocus();
    press(Qt::Key_Return);
    EXPECT_TRUE(hasScanned(store().duplicates, tree.url("a&b")));
}

TEST_F(FolderChoiceFlow, TheDashboardIsReadAgainByItsButtonAndChoosesAFolderByKey)
{
    DashboardViewModel& tool = store().dashboard;
    ASSERT_TRUE(
        waitUntil(&tool, &DashboardViewModel::isRefreshingChanged, [&] { return !tool.isRefreshing(); }));
    click("Recharger");
    EXPECT_TRUE(tool.isRefreshing());
    press(Qt::Key_O, Qt::ControlModifier);
    EXPECT_TRUE(chooserOpens());
    window->selectTool(QStringLiteral("git-repos"));
    press(Qt::Key_O, Qt::ControlModifier);
    EXPECT_TRUE(chooserOpens());
    tool.explore(trash.url());
    EXPECT_EQ(window->selectedToolID(), QStringLiteral("disk-usage"));
    EXPECT_TRUE(hasScanned(store().diskUsage, trash.url()));
}

TEST_F(FolderChoiceFlow, AnotherFolderCanBeChosenFromAnEmptyPageToo)
{
    const TemporaryTree tree{folder("empty"), folder("<b>&other"), folder("Album\xC3\xA9")};
    RecentFolders::shared().add(tree.url("gone"));
    RecentFolders::shared().add(tree.url("<b>&other"));
    window->selectTool(QStringLiteral("build-caches"));
    BuildCachesViewModel& caches = store().buildCaches;
    scan(caches, tree.url("empty"));
    EXPECT_TRUE(shows("Aucun cache de build ici."));
    EXPECT_EQ(button(QStringLiteral("Tout sélectionner")), nullptr) << "there is nothing to select";
    click("Choisir un autre dossier…");
    EXPECT_TRUE(chooserOpens());
    EXPECT_TRUE(shows("Aucun cache de build ici.")) << "nothing was chosen";

    auto* const folders = dynamic_cast<QPushButton*>(button(QStringLiteral("Changer de dossier")));
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
    ASSERT_TRUE(hasScanned(caches, tree.url("<b>&other")));
    entries[0]->trigger();
    chooseFolder(tree.path("Album\xC3\xA9"));
    EXPECT_TRUE(hasScanned(caches, tree.url("Album\xC3\xA9")));
}

} // namespace

} // namespace tallyroom
