#include "Welcome/ToolWelcome.h"

#include <QLabel>
#include <QPushButton>
#include <QScrollBar>
#include <QTest>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tallyroom {

namespace {

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

std::vector<FileUrl> folders(int count)
{
    std::vector<FileUrl> result;
    for (int serial = 1; serial <= count; ++serial) {
        result.emplace_back("/home/moi/dossier" + std::to_string(serial));
    }
    return result;
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

bool showsRecents(const ToolWelcome& welcome)
{
    const auto labels = welcome.findChildren<QLabel*>();
    return std::ranges::any_of(labels, [&welcome](const QLabel* label) {
        return label->text() == QStringLiteral("Récents") && label->isVisibleTo(&welcome);
    });
}

TEST(ToolWelcome, ListsTheFiveMostRecentFoldersAndNoSectionWithoutAny)
{
    ToolWelcome welcome{content()};
    EXPECT_FALSE(showsRecents(welcome));
    EXPECT_EQ(shownButtons(welcome).size(), 1U);
    std::vector<FileUrl> opened;
    // Opening a folder changes the list that its button stands in.
    QObject::connect(&welcome, &ToolWelcome::recentRequested, &welcome, [&](const FileUrl& location) {
        opened.push_back(location);
        welcome.setRecents(folders(2));
    });
    welcome.setRecents(folders(8));
    EXPECT_TRUE(showsRecents(welcome));
    const auto buttons = shownButtons(welcome);
    ASSERT_EQ(buttons.size(), 6U);
    QTest::mouseClick(buttons.back(), Qt::LeftButton);
    EXPECT_THAT(opened, testing::ElementsAre(FileUrl{"/home/moi/dossier5"}));
    EXPECT_EQ(shownButtons(welcome).size(), 3U);
    const FileUrl odd{"/home/moi/\xff<b>\n"};
    welcome.setRecents({odd});
    QPushButton* const button = shownButtons(welcome).back();
    EXPECT_FALSE(button->toolTip().contains(QStringLiteral("<b>"))) << "a name is no markup";
    button->setFocus();
    welcome.setRecents({odd});
    EXPECT_EQ(shownButtons(welcome).back(), button) << "the same ones keep their buttons, and the focus";
    button->click();
    EXPECT_EQ(opened.back(), odd);
    welcome.setRecents({});
    EXPECT_FALSE(showsRecents(welcome));
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
