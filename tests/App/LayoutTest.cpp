#include "App/NavigatorScene.h"
#include "Controls/SearchField.h"
#include "Controls/SelectionBar.h"
#include "Theme/Theme.h"
#include "Tools/DiskUsage/Breadcrumb.h"
#include "Tools/DiskUsage/DiskUsageView.h"
#include "Welcome/ToolWelcome.h"

#include <QApplication>
#include <QLabel>
#include <QLayout>
#include <QPushButton>
#include <QScrollBar>
#include <QTest>

#include <algorithm>
#include <gmock/gmock.h>

namespace tallyroom {

namespace {

TEST(DiskUsageView, TheWayShrinksAfterTheFilterAndNothingMovesWhileAScanRuns)
{
    NavigatorScene scene;
    DiskUsageView view{*scene.navigator};
    view.show();
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

} // namespace

} // namespace tallyroom
