#include "App/WindowScene.h"
#include "Controls/CategoryChips.h"
#include "Controls/SearchField.h"
#include "Deletion/DeleteConfirmation.h"
#include "Layout/FlowLayout.h"
#include "Rows/EntryTableHeader.h"
#include "Text/CSVExport.h"
#include "Text/FileUrlText.h"
#include "Theme/Theme.h"
#include "Tools/Frame/ToolHeader.h"
#include "Tools/Frame/ToolTitle.h"

#include <QFileDialog>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>

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
