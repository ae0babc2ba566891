#include "App/WindowScene.h"
#include "Bridge/FolderPresence.h"
#include "Controls/CategoryChips.h"
#include "Controls/SearchField.h"
#include "Deletion/DeleteConfirmation.h"
#include "Layout/FlowLayout.h"
#include "Rows/EntryTableHeader.h"
#include "Settings/RecentFolders.h"
#include "Shell/DropHint.h"
#include "Text/CSVExport.h"
#include "Text/FileUrlText.h"
#include "Theme/Theme.h"
#include "Tools/Frame/ToolHeader.h"
#include "Tools/Frame/ToolTitle.h"
#include "Welcome/ToolWelcome.h"

#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileDialog>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QMessageBox>
#include <QMimeData>
#include <QPushButton>

#include <algorithm>
#include <chrono>
#include <gmock/gmock.h>

namespace tallyroom {

namespace {

using testing::ElementsAre;

/// Every tool's screen: its buttons, keys and options, and all that comes of them.
class Screens : public WindowScene {
protected:
    [[nodiscard]] QAbstractButton& chip(const char* text) const
    {
        return *visibleButton(shown<CategoryChips>(), QString::fromUtf8(text));
    }

    /// Answers the save panel that is open, and returns the name that it proposed.
    [[nodiscard]] std::string saveAs(const std::string& path) const
    {
        auto* const panel = dialog<QFileDialog>();
        if (panel == nullptr) {
            return "no save panel";
        }
        const QString proposed = panel->selectedFiles().value(0);
        Q_EMIT panel->fileSelected(QString::fromStdString(path));
        delete panel;
        return proposed.mid(proposed.lastIndexOf(u'/') + 1).toStdString();
    }

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

TEST_F(Screens, ChipsFilterAndSortingDecideWhatIsListedAndExported)
{
    const TemporaryTree tree{file("film.mp4", 90'000), file("Album/z.jpg", 50'000),
                             file("Album/a.jpg", 40'000), file("b.jpg", 30'000)};
    const TemporaryTree other{file("x.jpg", 10), file("y.mp4", 20)};
    LargeFilesViewModel& tool = store().largeFiles;
    scan("large-files", tree.url());
    EXPECT_THAT(rows(), ElementsAre("film.mp4", "z.jpg", "a.jpg", "b.jpg"));
    chip("Images · 3").click();
    EXPECT_THAT(rows(), ElementsAre("z.jpg", "a.jpg", "b.jpg"));
    shown<SearchField>().setText(QStringLiteral("ALBUM"));
    EXPECT_THAT(rows(), ElementsAre("z.jpg", "a.jpg"));
    press(Qt::Key_F5);
    waitForScan(tool);
    EXPECT_TRUE(chip("Images · 3").isChecked()) << "a chip counts what it would show";

    auto& header = shown<EntryTableHeader>();
    QTest::mouseClick(header.viewport(), Qt::LeftButton, {},
                      {header.sectionViewportPosition(EntryRowsModel::nameColumn) + 20, header.height() / 2});
    const std::string expected = std::string{CSVExport::header} + "\n" + CSVExport::line(tool.entries()[2]) +
                                 "\n" + CSVExport::line(tool.entries()[1]);
    for (const bool byKey : {true, false}) {
        tool.dismissStatus();
        byKey ? press(Qt::Key_E, Qt::ControlModifier) : click("Exporter");
        EXPECT_EQ(saveAs(trash.path("list.csv")), "Gros fichiers.csv");
        ASSERT_TRUE(waitUntil(&tool, &ScanToolViewModel::statusMessageChanged,
                              [&] { return tool.statusMessage().has_value(); }));
        EXPECT_EQ(trash.content("list.csv"), expected);
    }
    click("Exporter");
    EXPECT_EQ(saveAs(trash.path("no such folder/list.csv")), "Gros fichiers.csv");
    auto* const failure = dialog<QMessageBox>();
    ASSERT_NE(failure, nullptr);
    EXPECT_TRUE(failure->text().contains(QStringLiteral("list.csv » n’a pas pu être écrit.")));
    delete failure;
    activate(*window);

    shown<SearchField>().setText(QStringLiteral("nothing"));
    EXPECT_TRUE(shows("Aucun élément ne correspond au filtre."));
    press(Qt::Key_E, Qt::ControlModifier);
    EXPECT_EQ(window->findChild<QFileDialog*>(), nullptr) << "there is nothing to export";
    EXPECT_FALSE(button(QStringLiteral("Exporter"))->isEnabled());
    press(Qt::Key_Escape);
    EXPECT_THAT(rows(), ElementsAre("a.jpg", "b.jpg", "film.mp4", "z.jpg")) << "the chip is cleared too";

    chip("Images · 3").click();
    scan("large-files", other.url());
    EXPECT_THAT(rows(), ElementsAre("x.jpg", "y.mp4")) << "a chip is chosen for one folder";

    chip("Images · 1").setFocus();
    tool.handleImport(std::unexpected{QStringLiteral("accès refusé.")});
    EXPECT_TRUE(button(QStringLiteral("Choisir un dossier…"))->hasFocus());
}

TEST_F(Screens, ProjectsAreNamedMeasuredAgainAndOldFromTheChosenAgeOn)
{
    using namespace std::chrono;
    const auto daysAgo = [](int count) {
        return duration_cast<seconds>((system_clock::now() - days{count}).time_since_epoch()).count();
    };
    TemporaryTree tree{file("new/node_modules/x", 5'000), file("aged/node_modules/x", 9'000),
                       file("old/node_modules/x", 20'000)};
    NodeModulesViewModel& tool = store().nodeModules;
    tree.add({folder("aged/node_modules").modifiedAt(daysAgo(60)),
              folder("old/node_modules").modifiedAt(daysAgo(300))});
    scan("node-modules", tree.url());
    EXPECT_THAT(rows(), ElementsAre("old", "aged", "new"));
    EXPECT_NE(button(QStringLiteral("Supprimer anciens (2)")), nullptr);
    tool.setThreshold(AgeThreshold::sixMonths);
    click("Supprimer anciens (1)");
    auto* const asked = dialog<DeleteConfirmation>();
    ASSERT_NE(asked, nullptr);
    EXPECT_THAT(asked->pending().urls, ElementsAre(tree.url("old/node_modules")));
    EXPECT_EQ(shown<EntryTable>().selection().urls(), UrlSet{tree.url("old/node_modules")});
    delete asked;

    for (const bool byKey : {true, false}) {
        tree.add({file(byKey ? "new/node_modules/y" : "aged/node_modules/y", byKey ? 50'000 : 90'000)});
        byKey ? press(Qt::Key_F5) : click("Rafraîchir");
        waitForScan(tool);
        EXPECT_EQ(rows().front(), byKey ? "new" : "aged") << "sizes are measured anew";
    }
}

TEST_F(Screens, ToolsAreChosenByKeyAndMouseAndTheWindowIsLeftAndItsSizeKept)
{
    EXPECT_EQ(window->selectedToolID(), QStringLiteral("dashboard"));
    auto& tools = shown<QListWidget>();
    for (std::size_t place = 0; place < ToolRegistry::all().size(); ++place) {
        press(static_cast<Qt::Key>(Qt::Key_1 + static_cast<int>(place)), Qt::ControlModifier);
        EXPECT_EQ(window->selectedToolID(), ToolRegistry::all()[place].id);
        EXPECT_EQ(tools.currentRow(), static_cast<int>(place));
    }
    tools.setCurrentRow(1);
    const auto* const explorer = &shown<ToolScreen>();
    QTest::mouseClick(tools.viewport(), Qt::LeftButton, {},
                      tools.viewport()->rect().bottomLeft() + QPoint{20, -20});
    EXPECT_EQ(window->selectedToolID(), QStringLiteral("disk-usage")) << "a click beside the tools";
    QTest::mouseClick(tools.viewport(), Qt::LeftButton, Qt::ControlModifier,
                      tools.visualItemRect(tools.item(1)).center());
    EXPECT_EQ(window->selectedToolID(), QString{});
    EXPECT_TRUE(shows("Aucun outil sélectionné") && shows("Choisissez un outil dans la barre latérale."));
    EXPECT_TRUE(tools.selectedItems().isEmpty());
    tools.setCurrentRow(1);
    EXPECT_EQ(&shown<ToolScreen>(), explorer) << "a tool keeps its screen";
    window->resize(760, 500); // the screen of the tests is small
    press(Qt::Key_Q, Qt::ControlModifier);
    EXPECT_FALSE(window->isVisible());
    open();
    EXPECT_EQ(window->size(), QSize(760, 500));
}

TEST_F(Screens, ADroppedFolderGoesToTheToolOnShowAndAFileIsRefused)
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

TEST_F(Screens, ARecentFolderOfTheWelcomePageIsScannedAndItsListHasTheKeyboard)
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

TEST_F(Screens, AFolderOpenElsewhereIsOfferedFirstAndEnterTakesIt)
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

/// The parts of a header that lie on others or beyond it, or are cut, and options below others.
QStringList misplaced(const ToolHeader& header)
{
    QStringList found;
    QRegion covered;
    for (const QWidget* const part : header.findChildren<QWidget*>()) {
        const bool isControl = qobject_cast<const QAbstractButton*>(part) != nullptr ||
                               qobject_cast<const QLineEdit*>(part) != nullptr ||
                               dynamic_cast<const ToolTitle*>(part) != nullptr;
        if (isControl && part->isVisible() &&
            qobject_cast<const QLineEdit*>(part->parentWidget()) == nullptr) {
            const QRect place{part->mapTo(&header, QPoint{}), part->size()};
            if (covered.intersects(place) || !header.rect().contains(place) ||
                place.width() < part->minimumSizeHint().width()) {
                found << QString::fromLatin1(part->metaObject()->className()) + part->accessibleName();
            }
            covered += place;
        }
    }
    const auto* const options = header.findChild<FlowLayout*>();
    int room = header.width();
    for (int number = 0; number < options->count(); ++number) {
        room -= options->itemAt(number)->sizeHint().width() + Theme::gap;
        if (room > 0 && options->itemAt(number)->geometry().y() != options->itemAt(0)->geometry().y()) {
            found << QStringLiteral("option %1").arg(number);
        }
    }
    return found;
}

TEST_F(Screens, NoPartOfAHeaderLiesOnAnotherAtAnyWidth)
{
    const TemporaryTree tree{file("p/node_modules/x", 5'000), file("p/.git/x", 5'000),
                             file("p/target/x", 5'000),       file("a.jpg", "same"),
                             file("b.jpg", "same"),           file("c.mp4", 10)};
    store().duplicates.setMinimumSize(1);
    for (const ToolDescriptor& descriptor : ToolRegistry::all()) {
        scan(descriptor.id.toUtf8().constData(), tree.url());
        for (const int width : {700, 760, 800}) {
            window->resize(width, 500);
            for (const ToolHeader* const header : window->findChildren<ToolHeader*>()) {
                const auto isSettled = [header] { return misplaced(*header).isEmpty(); };
                EXPECT_TRUE(!header->isVisible() || QTest::qWaitFor(isSettled))
                    << descriptor.id.toStdString() << " at " << width << ": "
                    << misplaced(*header).join(u'|').toStdString();
            }
        }
    }
}

TEST_F(Screens, TheDashboardIsReadAgainByItsButtonAndChoosesAFolderByKey)
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

TEST_F(Screens, AFolderThatWasFoundIsEnteredInTheExplorer)
{
    const TemporaryTree tree{file("p/node_modules/m/x", 5000), file("p/.git/x", 5000),
                             file("p/target/x", 5000)};
    for (const auto& [id, found] : {std::pair{"node-modules", "p/node_modules"},
                                    {"git-repos", "p/.git"},
                                    {"build-caches", "p/target"}}) {
        scan(id, tree.url("p"));
        ASSERT_TRUE(shown<EntryTable>().setCurrentEntry(tree.url(found)));
        shown<EntryTable>().setFocus();
        press(Qt::Key_Return);
        EXPECT_EQ(window->selectedToolID(), QStringLiteral("disk-usage"));
        EXPECT_TRUE(hasScanned(store().diskUsage, tree.url(found)));
    }
}

TEST_F(Screens, AnotherFolderCanBeChosenFromAnEmptyPageToo)
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

TEST_F(Screens, TabGoesThroughTheWindowAsItIsSeenAndBack)
{
    const TemporaryTree tree{file("inner/photo.jpg", 5000)};
    FolderNavigatorViewModel& navigator = store().diskUsage;
    scan("disk-usage", tree.url());
    navigator.activate(navigator.entries()[0]);
    waitForScan(navigator);
    const QString way = FileUrlText::display(tree.url()).replace(u'/', u'|');
    const QString order =
        QStringLiteral("Filtrer par nom|Tableau|Changer de dossier|Rafraîchir|Exporter|"
                       "Trier par : Taille, décroissant|Espace disque|Tout sélectionner|Tout désélectionner|"
                       "Menu de Tallyroom|Outils|Retour|/");
    window->resize(1600, 700);
    shown<SearchField>().setFocus();
    QStringList seen = (order + way).split(u'|');
    EXPECT_EQ(stopsOf(*window, Qt::Key_Tab).join(u'|').toStdString(), seen.join(u'|').toStdString());
    std::reverse(seen.begin() + 1, seen.end());
    EXPECT_EQ(stopsOf(*window, Qt::Key_Backtab).join(u'|').toStdString(), seen.join(u'|').toStdString());
}

} // namespace

} // namespace tallyroom
