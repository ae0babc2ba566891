#include "App/EventWait.h"
#include "Controls/Spinner.h"
#include "Shell/ContentView.h"
#include "Shell/TallyroomApp.h"
#include "Theme/Theme.h"
#include "Tools/DiskUsage/DiskUsageView.h"

#include <QLabel>
#include <QListWidget>

#include <gmock/gmock.h>

namespace tallyroom {

namespace {

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
