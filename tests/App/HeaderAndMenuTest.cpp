#include "App/ToolScene.h"
#include "Controls/OptionMenu.h"
#include "Controls/SearchField.h"
#include "Rows/EntryTable.h"
#include "Theme/Theme.h"
#include "Tools/Frame/ListToolScreen.h"
#include "Tools/Frame/ToolHeader.h"
#include "Tools/NodeModules/NodeModules.h"

#include <QAccessible>
#include <QMenu>
#include <QPushButton>
#include <QTest>

#include <gtest/gtest.h>
#include <memory>

namespace tallyroom {

namespace {

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
