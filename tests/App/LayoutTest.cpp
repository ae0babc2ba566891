#include "App/ExplorerScene.h"
#include "App/ToolScene.h"
#include "Controls/OptionMenu.h"
#include "Controls/SearchField.h"
#include "Controls/SelectionBar.h"
#include "Theme/Theme.h"
#include "Tools/DiskUsage/Breadcrumb.h"
#include "Tools/Frame/ListToolScreen.h"
#include "Tools/Frame/ToolHeader.h"
#include "Tools/NodeModules/NodeModules.h"
#include "Welcome/ToolWelcome.h"

#include <QAccessible>
#include <QApplication>
#include <QLabel>
#include <QLayout>
#include <QMenu>
#include <QPushButton>
#include <QScrollBar>
#include <QTest>

#include <algorithm>
#include <gmock/gmock.h>

namespace tallyroom {

namespace {

TEST_F(ExplorerScene, TheWayShrinksAfterTheFilterAndNothingMovesWhileAScanRuns)
{
    scene.openLoaded("/r", {});
    scene.navigator->activate(folderEntry("/r/a folder of some length", 30));
    scene.finishListing({folderEntry("/r/a folder of some length/and another one in it", 10)});
    scene.navigator->activate(folderEntry("/r/a folder of some length/and another one in it", 10));
    const auto placesOf = [&] {
        view.ensurePolished();
        QApplication::sendPostedEvents();
        QStringList places;
        for (const QWidget* const part : view.findChildren<QWidget*>()) {
            const bool isHead = part->isVisible() && part->mapTo(&view, QPoint{}).y() < Theme::controlHeight;
            const QRect place{part->mapTo(&view, QPoint{}), part->size()};
            if (isHead && qobject_cast<const QPushButton*>(part) == nullptr) {
                places << QStringLiteral("%1 %2").arg(place.x()).arg(place.width());
            }
        }
        return places;
    };
    const auto* const way = view.findChild<Breadcrumb*>();
    const auto* const search = view.findChild<SearchField*>();
    for (const int width : {684, 800, 1100}) {
        view.resize(width, 600);
        scene.receive({fileEntry("/r/a folder of some length/and another one in it/x", 1)});
        const QStringList whileScanning = placesOf();
        const bool isBelow = search->mapTo(&view, QPoint{}).y() > Theme::controlHeight;
        EXPECT_TRUE(isBelow || search->width() <= search->minimumSizeHint().width() ||
                    way->width() >= way->sizeHint().width())
            << width;
        EXPECT_GE(way->width(), way->minimumSizeHint().width()) << width;
        scene.finishListing({fileEntry("/r/a folder of some length/and another one in it/x", 1)});
        EXPECT_EQ(placesOf(), whileScanning) << width;
        scene.navigator->refreshCurrent();
    }
}

TEST(SelectionBar, IsOneLineWithNothingCutInAnyWindow)
{
    SelectionBar bar;
    bar.show();
    QStringList words;
    for (const int width : {500, 644, 684, 900, 1700}) {
        bar.resize(width, bar.sizeHint().height());
        for (const std::int64_t count : {0, 1, 300'000}) {
            bar.setSelection(count, count * 1'000'000);
            bar.layout()->activate();
            EXPECT_EQ(bar.height(), Theme::selectionBarHeight) << width;
            for (const QWidget* const part : bar.findChildren<QWidget*>()) {
                const QString name = part->accessibleName();
                EXPECT_GE(part->width(), part->isVisible() ? part->sizeHint().width() : 0) << width;
                EXPECT_TRUE(bar.rect().contains(part->geometry())) << width << name.toStdString();
            }
            words += bar.findChildren<QPushButton*>().front()->text();
        }
    }
    const QString all = QStringLiteral("Tout sélectionner");
    EXPECT_EQ(words.mid(0, 3), (QStringList{{}, {}, {}})) << "icons, whatever is checked";
    EXPECT_EQ(words.mid(12), (QStringList{all, all, all}));
}

ToolWelcome::Content content()
{
    return {.icon = "internaldrive",
            .title = QStringLiteral("Espace disque"),
            .message =
                QStringLiteral("Choisissez un dossier : ce qu’il contient est mesuré, niveau par niveau."),
            .hint = QStringLiteral("Rien n’est modifié pendant l’analyse, et rien ne quitte cette machine."),
            .actionTitle = QStringLiteral("Choisir un dossier…"),
            .accent = {}};
}

/// The buttons that can be pressed, the action first.
std::vector<QPushButton*> shownButtons(const ToolWelcome& welcome)
{
    std::vector<QPushButton*> result;
    for (QPushButton* const button : welcome.findChildren<QPushButton*>()) {
        if (button->isVisibleTo(&welcome)) {
            result.push_back(button);
        }
    }
    return result;
}

TEST(ToolWelcome, ListsTheFiveMostRecentFoldersAndNoSectionWithoutAny)
{
    ToolWelcome welcome{content()};
    const auto showsRecents = [&welcome] {
        const auto labels = welcome.findChildren<QLabel*>();
        const auto title = std::ranges::find(labels, QStringLiteral("Récents"), &QLabel::text);
        return title != labels.end() && (*title)->isVisibleTo(&welcome);
    };
    EXPECT_FALSE(showsRecents());
    EXPECT_EQ(shownButtons(welcome).size(), 1U);
    const FileUrl odd{"/home/moi/\xff<b>\n"};
    std::vector<FileUrl> opened;
    // Opening a folder changes the list that its button stands in.
    QObject::connect(&welcome, &ToolWelcome::recentRequested, &welcome, [&](const FileUrl& location) {
        opened.push_back(location);
        welcome.setRecents({odd});
    });
    welcome.setRecents({FileUrl{"/1"}, FileUrl{"/2"}, FileUrl{"/3"}, FileUrl{"/4"}, FileUrl{"/5"},
                        FileUrl{"/6"}, FileUrl{"/7"}});
    EXPECT_TRUE(showsRecents());
    const auto buttons = shownButtons(welcome);
    ASSERT_EQ(buttons.size(), 6U);
    QTest::mouseClick(buttons.back(), Qt::LeftButton);
    EXPECT_THAT(opened, testing::ElementsAre(FileUrl{"/5"}));
    ASSERT_EQ(shownButtons(welcome).size(), 2U);
    QPushButton* const button = shownButtons(welcome).back();
    EXPECT_FALSE(button->toolTip().contains(QStringLiteral("<b>"))) << "a name is no markup";
    button->setFocus();
    welcome.setRecents({odd});
    EXPECT_EQ(shownButtons(welcome).back(), button) << "the same ones keep their buttons, and the focus";
    button->click();
    EXPECT_EQ(opened.back(), odd);
    welcome.setRecents({});
    EXPECT_FALSE(showsRecents());
}

TEST(ToolWelcome, InASmallWindowEverythingCanBeScrolledTo)
{
    ToolWelcome welcome{content()};
    welcome.setRecents({FileUrl{"/un/chemin/" + std::string(200, 'x') + "/tres/long"}, FileUrl{"/b"},
                        FileUrl{"/c"}, FileUrl{"/d"}, FileUrl{"/e"}});
    welcome.resize(480, 450);
    welcome.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&welcome));
    const QWidget* const page = welcome.widget();
    EXPECT_LE(page->width(), welcome.viewport()->width()) << "no part lies beside the window";
    EXPECT_EQ(welcome.verticalScrollBar()->maximum(), page->height() - welcome.viewport()->height());
    int bottom = 0;
    for (const QPushButton* const button : shownButtons(welcome)) {
        const QRect place{button->mapTo(page, QPoint{}), button->size()};
        EXPECT_TRUE(page->rect().contains(place));
        EXPECT_GT(place.top(), bottom) << "the parts do not overlap";
        bottom = place.bottom();
    }
}

/// The screen of a list tool in the smallest window, on a tree with something to find.
class NarrowScreen : public ToolScene {
protected:
    NarrowScreen()
    {
        Theme::shared().apply();
        scan(tool, tree.url());
        screen->resize(900 - Theme::sidebarWidth, 600);
        screen->show();
        activate(*screen);
    }

    template <class Part>
    [[nodiscard]] Part& part() const
    {
        return *screen->findChild<Part*>();
    }

    TemporaryTree tree{file("project/node_modules/x/y", 1), file("other/node_modules/z", 1)};
    NodeModulesViewModel tool{deletions};
    std::unique_ptr<ListToolScreen> screen{makeNodeModulesScreen(tool)};
};

TEST_F(NarrowScreen, FilterAndOptionsShareALineAndThePlaceholderIsWhole)
{
    auto& search = part<SearchField>();
    auto& options = part<OptionMenu>();
    EXPECT_EQ(search.mapToGlobal(QPoint{0, 0}).y(), options.mapToGlobal(QPoint{0, 0}).y());
    EXPECT_GE(search.width(), search.minimumSizeHint().width());
    EXPECT_GT(search.minimumSizeHint().width(),
              search.textMargins().left() + search.fontMetrics().horizontalAdvance(search.placeholderText()));
    screen->resize(1600, 600);
    QCoreApplication::sendPostedEvents();
    EXPECT_EQ(search.mapToGlobal(QPoint{0, 0}).y(),
              visibleButton(*screen, QStringLiteral("Exporter"))->mapToGlobal(QPoint{0, 0}).y());
}

TEST_F(NarrowScreen, AnOptionMenuOpensAtTheChoiceThatIsOn)
{
    QMenu& menu = *part<OptionMenu>().menu();
    menu.popup({});
    ASSERT_NE(menu.activeAction(), nullptr);
    EXPECT_TRUE(menu.activeAction()->isChecked());
    menu.hide();
}

TEST_F(NarrowScreen, AChoiceThatFailedLeavesTheHeader)
{
    tool.handleImport(std::unexpected(QStringLiteral("refus")));
    EXPECT_TRUE(part<ToolHeader>().isVisible());
    EXPECT_TRUE(visibleTexts(*screen).join(u' ').contains(QStringLiteral("refus")));
}

TEST_F(NarrowScreen, RowsOfAHiddenListAreNotShowing)
{
    QAccessibleInterface* const list = QAccessible::queryAccessibleInterface(&part<EntryTable>());
    ASSERT_NE(list, nullptr);
    ASSERT_GT(list->childCount(), 0);
    const auto isShowing = [list] {
        QAccessibleInterface* const cell = list->child(list->childCount() - 1);
        return !cell->state().invisible && !cell->rect().isEmpty();
    };
    EXPECT_TRUE(isShowing());
    part<EntryTable>().hide();
    EXPECT_FALSE(isShowing());
}

} // namespace

} // namespace tallyroom
