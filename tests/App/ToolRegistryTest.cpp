#include "Shell/ToolRegistry.h"

#include "App/EventWait.h"
#include "Components/Spinner.h"
#include "Components/Theme.h"
#include "Shell/ContentView.h"
#include "Shell/TallyroomApp.h"
#include "Tools/DiskUsage/DiskUsageView.h"

#include <QLabel>
#include <QListWidget>

#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tallyroom {

namespace {

TEST(ToolRegistry, ToolsStandInTheGivenOrderUnderTheirNames)
{
    struct Place {
        QString id;
        QString name;
        std::string icon;
    };

    const std::vector<Place> places{
        {QStringLiteral("dashboard"), QStringLiteral("Tableau de bord"), "chart.pie"},
        {QStringLiteral("disk-usage"), QStringLiteral("Espace disque"), "internaldrive"},
        {QStringLiteral("node-modules"), QStringLiteral("node_modules"), "shippingbox"},
        {QStringLiteral("large-files"), QStringLiteral("Gros fichiers"), "doc.text.magnifyingglass"},
        {QStringLiteral("duplicates"), QStringLiteral("Doublons"), "doc.on.doc"},
        {QStringLiteral("build-caches"), QStringLiteral("Caches de build"), "hammer"},
        {QStringLiteral("git-repos"), QStringLiteral("Dépôts Git"), "arrow.triangle.branch"},
    };
    // Tools join one by one; those that are there keep the order.
    auto place = places.begin();
    for (const ToolDescriptor& tool : ToolRegistry::all()) {
        place = std::ranges::find(place, places.end(), tool.id, &Place::id);
        ASSERT_NE(place, places.end()) << tool.id.toStdString();
        EXPECT_EQ(tool.name, place->name);
        EXPECT_EQ(tool.icon, place->icon);
    }
}

TEST(ContentView, StartsOnTheFirstToolAndShowsAPlaceholderWithoutOne)
{
    ContentView window;
    EXPECT_EQ(window.selectedToolID(), QStringLiteral("dashboard"));
    window.selectTool({});
    QStringList texts;
    for (const QLabel* const label : window.findChildren<QLabel*>()) {
        texts << label->text();
    }
    EXPECT_TRUE(texts.contains(QStringLiteral("Aucun outil sélectionné")));
    EXPECT_TRUE(texts.contains(QStringLiteral("Choisissez un outil dans la barre latérale.")));
    EXPECT_TRUE(window.findChild<QListWidget*>()->selectedItems().isEmpty());
}

TEST(ContentView, GoingToAnotherToolAndBackKeepsTheScreen)
{
    ContentView window;
    window.selectTool(QStringLiteral("disk-usage"));
    auto* const screen = window.findChild<DiskUsageView*>();
    window.selectTool({});
    window.findChild<QListWidget*>()->setCurrentRow(0);
    EXPECT_EQ(window.selectedToolID(), QStringLiteral("dashboard"));
    window.selectTool(QStringLiteral("disk-usage"));
    EXPECT_EQ(window.findChildren<DiskUsageView*>(), QList{screen});
}

TEST(ContentView, ASpinnerTurnsBesideAToolWhileItScans)
{
    Theme::shared().apply();
    ContentView window;
    window.show();
    const auto spinners = window.findChild<QListWidget*>()->findChildren<Spinner*>();
    const std::vector<FolderTool*> tools{&window.store().dashboard, &window.store().diskUsage};
    for (std::size_t row = 0; row < tools.size(); ++row) {
        const Spinner* const spinner = spinners[static_cast<qsizetype>(row)];
        FolderTool* const tool = tools[row];
        EXPECT_FALSE(spinner->isVisible());
        tool->handleImport(std::vector{FileUrl{"/nowhere"}});
        EXPECT_TRUE(spinner->isVisible());
        EXPECT_FALSE(spinner->visibleRegion().isEmpty());
        ASSERT_TRUE(waitUntil(tool, &FolderTool::stateChanged, [&] { return !tool->isScanning(); }));
        EXPECT_FALSE(spinner->isVisible());
    }
}

TEST(TallyroomApp, ReadsItsArgumentsAsBytes)
{
    using TallyroomApp::Invocation;

    struct Case {
        std::vector<const char*> arguments;
        Invocation::Kind kind;
        std::optional<FileUrl> folder;
    };

    const std::vector<Case> cases{
        {{}, Invocation::Kind::window, {}},
        {{"sub"}, Invocation::Kind::window, FileUrl{"/here/sub"}},
        {{"\xff"}, Invocation::Kind::window, FileUrl{"/here/\xff"}},
        {{"file:///a%FF"}, Invocation::Kind::window, FileUrl{"/a\xff"}},
        {{"--", "-x"}, Invocation::Kind::window, FileUrl{"/here/-x"}},
        {{"/a", "--help"}, Invocation::Kind::help, {}},
        {{"--version"}, Invocation::Kind::version, {}},
        {{"--unknown"}, Invocation::Kind::mistake, {}},
        {{"/a", "/b"}, Invocation::Kind::mistake, FileUrl{"/a"}},
        {{"file://elsewhere/a"}, Invocation::Kind::mistake, {}},
    };
    for (const Case& one : cases) {
        const Invocation invocation = TallyroomApp::parse(one.arguments, FileUrl{"/here"});
        EXPECT_EQ(invocation.kind, one.kind) << (one.arguments.empty() ? "" : one.arguments.front());
        if (one.kind == Invocation::Kind::window) {
            EXPECT_EQ(invocation.folder, one.folder);
        }
        EXPECT_EQ(invocation.mistake.isEmpty(), one.kind != Invocation::Kind::mistake);
    }
}

} // namespace

} // namespace tallyroom
