#include "App/WindowScene.h"
#include "Deletion/DeleteConfirmation.h"
#include "Settings/ScanRules.h"
#include "Support/CacheTree.h"
#include "Text/SizeText.h"
#include "Tools/Dashboard/KindRow.h"
#include "Tools/Dashboard/RecoveryPanel.h"

#include <QProcess>
#include <QPushButton>
#include <QScopeGuard>

#include <algorithm>
#include <filesystem>
#include <gmock/gmock.h>

namespace tallyroom {

namespace {

using testing::ElementsAre;
using testing::IsSubsetOf;
using testing::UnorderedElementsAre;

/// A home with what may go and what must not, searched from the dashboard.
class RecoveryFlowTest : public WindowScene {
protected:
    RecoveryFlowTest()
    {
        const std::string picture(90'000, 'p');
        tree.add({file("old/package.json", "{}"), file("old/src.js", 10), file("old/node_modules/x", 50'000),
                  file("old/dist/page.png", picture), file("bare/node_modules/x", 60'000),
                  file("live/package.json", "{}"), file("live/node_modules/x", 70'000),
                  file("crate/Cargo.toml", 9), file("crate/target/app", 200'000),
                  file("crate/.venv/pyvenv.cfg", 9), file("Maison/build/permis.pdf", 40'000),
                  file(".tool/package.json", "{}"), file(".tool/dist/x", 30'000),
                  file(".tool/page.png", picture), file("photos/a.png", picture),
                  file("photos/b.png", picture), file("film.mp4", 900'000), folder("repo/.git/objects"),
                  file("repo/.git/objects/x", 5'000)});
        dateAll(tree, 1'600'000'000);
        tree.add(file("live/main.js", 10));
        Settings::write(QStringLiteral("dup.minSize"), 1000);
        open(); // which reads the smallest size
    }

    [[nodiscard]] const RecoveryViewModel& recovery() const { return store().dashboard.recovery(); }

    [[nodiscard]] bool isComplete() const
    {
        return waitUntil(&recovery(), &RecoveryViewModel::changed, [this] {
            const auto& rows = recovery().rows();
            return !rows.empty() && std::ranges::all_of(rows, [](const RecoveryRow& row) {
                return row.phase == RecoveryRow::Phase::complete && row.recovery.isKnown;
            });
        });
    }

    void search() const
    {
        click("Chercher dans le dossier personnel");
        ASSERT_TRUE(isComplete());
    }

    /// Presses the button of a tool's line.
    void ask(const char* tool) const
    {
        const auto& tools = recovery().tools();
        const auto found = std::ranges::find(tools, QString::fromUtf8(tool), &RecoveryTool::name);
        ASSERT_NE(found, tools.end());
        const Recovery& safe = recovery().rows()[static_cast<std::size_t>(found - tools.begin())].recovery;
        const QString name = found->name + QStringLiteral(" : Libérer ");
        for (auto* const one : window->findChildren<QPushButton*>()) {
            if (one->isVisible() && one->accessibleName().startsWith(name)) {
                QTest::mouseClick(one, Qt::LeftButton);
            }
        }
        const auto* const asked = dialog<DeleteConfirmation>();
        ASSERT_NE(asked, nullptr) << tool;
        EXPECT_EQ(asked->pending().urls.size(), safe.safe.size());
    }

    void free(const char* tool) const
    {
        ask(tool);
        answer<DeleteConfirmation>("Mettre à la corbeille");
        waitForRemoval();
    }

    /// All files and links below the home, by their relative paths.
    [[nodiscard]] std::vector<std::string> files() const
    {
        std::vector<std::string> paths;
        for (const auto& item : std::filesystem::recursive_directory_iterator{tree.path()}) {
            if (!item.is_directory()) {
                paths.push_back(item.path().string().substr(tree.path().size() + 1));
            }
        }
        std::ranges::sort(paths);
        return paths;
    }

    /// What has gone since `before`.
    [[nodiscard]] std::vector<std::string> lostSince(const std::vector<std::string>& before) const
    {
        std::vector<std::string> lost;
        std::ranges::set_difference(before, files(), std::back_inserter(lost));
        return lost;
    }

    TemporaryTree tree;
    ScopedVariable home{"HOME", tree.path()};
};

TEST_F(RecoveryFlowTest, OnlyWhatIsMadeAgainAndFurtherCopiesGoAndNothingElse)
{
    const std::vector<std::string> before = files();
    search();
    EXPECT_EQ(files(), before);
    free("Caches de build");
    activate(*window); // after the question
    QTest::keyClick(window.get(), Qt::Key_Z, Qt::ControlModifier);
    waitForRemoval();
    EXPECT_EQ(files(), before);
    free("Caches de build");
    EXPECT_THAT(lostSince(before), ElementsAre("crate/target/app")) << "dist may be a person's own";
    free("node_modules");
    EXPECT_THAT(lostSince(before), ElementsAre("crate/target/app", "old/node_modules/x"));
    free("Doublons");
    EXPECT_THAT(lostSince(before), ElementsAre("crate/target/app", "old/node_modules/x", "photos/b.png"));
    EXPECT_THAT(trash.names("Trash/files"), UnorderedElementsAre("target", "node_modules", "b.png"));
    click("Annuler la suppression");
    waitForRemoval();
    EXPECT_TRUE(tree.exists("photos/b.png")) << "the last one is taken back from here too";
}

TEST_F(RecoveryFlowTest, WhatOtherNamesKeepIsNotPromised)
{
    tree.add({file("old/node_modules/own", 8_KiB), hardLink("store/x", "old/node_modules/x"),
              hardLink("store/app", "crate/target/app")});
    dateAll(tree, 1'600'000'000);
    tree.add(file("live/other.js", 10));
    search();
    const auto offer = [this](const char* tool) {
        const QString name = QString::fromUtf8(tool) + QStringLiteral(" : Libérer ");
        for (const auto* const one : window->findChildren<QPushButton*>()) {
            if (one->isVisible() && one->accessibleName().startsWith(name)) {
                return one->accessibleName().mid(name.size());
            }
        }
        return QString{};
    };
    const QString own = sizeText(allocated(tree.path("old/node_modules/own"))) + QStringLiteral("…");
    EXPECT_TRUE(waitUntil(&recovery(), &RecoveryViewModel::changed,
                          [&] { return offer("node_modules") == own && offer("Caches de build").isEmpty(); }))
        << offer("node_modules").toStdString() << ", " << offer("Caches de build").toStdString();
}

TEST_F(RecoveryFlowTest, WhatAProgramHasBegunToUseSinceTheSearchStaysAndSaysWhy)
{
    search();
    ask("Caches de build");
    QProcess program;
    program.setWorkingDirectory(QString::fromStdString(tree.path("crate/target")));
    program.start(QStringLiteral("sleep"), {QStringLiteral("60")});
    ASSERT_TRUE(program.waitForStarted());
    answer<DeleteConfirmation>("Mettre à la corbeille");
    waitForRemoval();
    program.kill();
    program.waitForFinished();
    EXPECT_TRUE(tree.exists("crate/target/app"));
    const auto& failures = store().buildCaches.failures();
    ASSERT_EQ(failures.size(), 1U);
    EXPECT_EQ(failures.front().message, "un programme s'en sert maintenant");
    free("Caches de build");
    EXPECT_FALSE(tree.exists("crate/target/app")) << "the program has ended";
}

TEST_F(RecoveryFlowTest, WhatIsProposedStaysWhereTheCopyBesideItGoesDuringTheQuestion)
{
    const std::string song(80'000, 's');
    tree.add({file("music/a.ogg", song), file("music/b.ogg", song), file("music/c.ogg", song)});
    search();
    scan(store().diskUsage, tree.url("music"));
    ask("Doublons");
    remove(store().diskUsage, {tree.url("music/a.ogg")}, true);
    answer<DeleteConfirmation>("Mettre à la corbeille");
    waitForRemoval();
    EXPECT_FALSE(tree.exists("music/a.ogg") || tree.exists("photos/b.png"));
    EXPECT_TRUE(tree.exists("music/b.ogg") && tree.exists("music/c.ogg"));
}

TEST_F(RecoveryFlowTest, NothingIsProposedThatIsExcludedOrHoldsWhatIs)
{
    const QScopeGuard clean{[] { ScanRules::shared().setRules({}); }};
    tree.add(file("old/node_modules/mine/letter", 9));
    dateAll(tree, 1'600'000'000);
    tree.add(file("live/other.js", 10));
    search();
    EXPECT_EQ(std::ranges::count_if(recovery().rows(), &RecoveryRow::proposes), 3);
    ScanRules::shared().setRules(
        {{}, {tree.url("old/node_modules/mine"), tree.url("crate"), tree.url("photos")}, false});
    ASSERT_TRUE(isComplete());
    for (const RecoveryRow& row : recovery().rows()) {
        EXPECT_FALSE(row.proposes()) << row.words.toStdString();
    }
}

TEST_F(RecoveryFlowTest, ALineLeadsToItsToolWithWhatItProposesAndFromThereToAll)
{
    search();
    store().buildCaches.setSearchText(QStringLiteral("nothing"));

    struct Way {
        const char* line;
        const char* id;
        ScanToolViewModel& tool;
        std::vector<std::string> shown;
    };

    const std::vector<std::string> repositories{"repo"};
    for (const Way& way : {Way{"Caches de build", "build-caches", store().buildCaches, {"crate / target"}},
                           Way{"node_modules", "node-modules", store().nodeModules, {"old"}},
                           Way{"Dépôts Git", "git-repos", store().gitRepos, repositories}}) {
        window->selectTool(QStringLiteral("dashboard"));
        click((way.line + std::string{" : voir dans l’outil"}).c_str());
        EXPECT_EQ(window->selectedToolID(), QString::fromLatin1(way.id));
        EXPECT_FALSE(way.tool.isScanning()) << "it was searched already";
        EXPECT_TRUE(QTest::qWaitFor([&] { return rows() == way.shown; })) << way.id;
        if (way.shown != repositories) {
            click("Tout afficher");
        }
        EXPECT_TRUE(QTest::qWaitFor([&] { return rows().size() == way.tool.entryCount(); })) << way.id;
        EXPECT_EQ(button(QStringLiteral("Tout afficher")), nullptr) << way.id;
    }
    EXPECT_GT(store().buildCaches.entryCount(), 4U);
}

TEST_F(RecoveryFlowTest, GroupsWithoutAProposalAreHiddenUntilAllAreWantedAndWhatIsGoneIsNoLongerShown)
{
    const std::string page(70'000, 'w');
    tree.add({file("old/dist/a.html", page), file("bare/dist/a.html", page)});
    search();
    const DuplicatesViewModel& tool = store().duplicates;
    click("Doublons : voir dans l’outil");
    EXPECT_EQ(tool.groups().size(), 2U);
    EXPECT_EQ(tool.filteredGroups().size(), 1U);
    scan("duplicates", tree.url("photos"));
    EXPECT_FALSE(tool.isFiltering()) << "another folder";

    window->selectTool(QStringLiteral("dashboard"));
    click("Caches de build : voir dans l’outil");
    EXPECT_TRUE(QTest::qWaitFor([this] { return rows().size() == 1; }));
    remove(store().buildCaches, {tree.url("crate/target")});
    EXPECT_TRUE(QTest::qWaitFor([this] { return shows("Aucun élément ne correspond au filtre."); }));
    click("Effacer le filtre");
    EXPECT_TRUE(QTest::qWaitFor([this] { return rows().size() == store().buildCaches.entryCount(); }));
}

TEST_F(RecoveryFlowTest, AKindOfTheBreakdownLeadsToTheLargestFilesOfThatKind)
{
    scan(store().dashboard, tree.url());
    auto* const film = window->findChild<KindRow*>(); // of the largest kind
    ASSERT_TRUE(QTest::qWaitFor([&] { return film->isVisible(); }));
    QTest::mouseClick(film, Qt::LeftButton);
    EXPECT_EQ(window->selectedToolID(), QStringLiteral("large-files"));
    EXPECT_TRUE(hasScanned(store().largeFiles, tree.url()));
    EXPECT_TRUE(QTest::qWaitFor([this] { return rows() == std::vector<std::string>{"film.mp4"}; }));
}

TEST_F(RecoveryFlowTest, TwoToolsSearchAtOnceAStopEndsAllAndNothingIsProposed)
{
    std::size_t most = 0;
    RecoveryViewModel& search = store().dashboard.recovery();
    for (const RecoveryTool& one : search.tools()) {
        QObject::connect(one.tool, &FolderTool::stateChanged, &search, [&] {
            const auto running = std::ranges::count_if(
                search.tools(), [](const RecoveryTool& tool) { return tool.tool->isScanning(); });
            most = std::max(most, static_cast<std::size_t>(running));
        });
    }
    search.search(tree.url());
    EXPECT_EQ(most, RecoveryViewModel::mostAtOnce);
    press(Qt::Key_Escape);
    EXPECT_FALSE(search.isSearching());
    for (const RecoveryRow& row : search.rows()) {
        EXPECT_EQ(row.phase, RecoveryRow::Phase::stopped);
        EXPECT_FALSE(row.proposes());
    }
    EXPECT_FALSE(store().duplicates.rootURL()) << "its turn had not come";

    this->search();
    EXPECT_EQ(most, RecoveryViewModel::mostAtOnce);
    scan(store().nodeModules, tree.url("old"));
    EXPECT_TRUE(waitUntil(&search, &RecoveryViewModel::changed, [&] {
        return std::ranges::count(search.rows(), RecoveryRow::Phase::elsewhere, &RecoveryRow::phase) == 1;
    })) << "another folder was opened in a tool";
}

TEST_F(RecoveryFlowTest, AFolderThatCannotBeReadIsNotCalledEmpty)
{
    store().dashboard.recovery().search(tree.url("gone"));
    ASSERT_TRUE(
        waitUntil(&recovery(), &RecoveryViewModel::changed, [this] { return !recovery().isSearching(); }));
    for (const RecoveryRow& row : recovery().rows()) {
        EXPECT_EQ(row.phase, RecoveryRow::Phase::unread);
        EXPECT_TRUE(row.words.startsWith(QStringLiteral("Ce dossier ne peut pas être lu")))
            << row.words.toStdString();
    }
    EXPECT_FALSE(shows("Rien à proposer dans ce dossier : il n’y a rien qui parte sans risque."));
}

} // namespace

} // namespace tallyroom
