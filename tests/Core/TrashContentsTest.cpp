#include "Removal/TrashContents.h"

#include "FileSystem/FolderReader.h"
#include "FileSystem/ScanRoots.h"
#include "FileSystem/ScanScope.h"
#include "Removal/TrashFolders.h"
#include "Support/Cases.h"
#include "Support/Isolation.h"
#include "Support/ListWords.h"
#include "Support/TemporaryTree.h"

#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>
#include <utility>

namespace tallyroom {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

/// A volume of its own with the home folder and its trash: no test comes near the real ones.
class TrashContentsTest : public testing::Test {
protected:
    void SetUp() override
    {
        SKIP_UNLESS_MOUNTED(volume);
        tree.add({folder("v/home"), folder("v/data")});
    }

    /// An item of a trash, with a record that tells its place.
    void trashed(const std::string& trash, const TreeItem& item, const std::string& place)
    {
        TreeItem inTrash = item;
        inTrash.path = trash + "/files/" + item.path;
        const std::string name = item.path.substr(0, item.path.find('/'));
        tree.add({inTrash, file(trash + "/info/" + name + ".trashinfo",
                                "[Trash Info]\nPath=" + place + "\nDeletionDate=2026-01-02T03:04:05\n")});
    }

    /// Runs a program in the volume, in a language that has no surprises.
    [[nodiscard]] int run(const std::string& command) const
    {
        const std::string line =
            "cd " + tree.path("v") + " && LC_ALL=C.UTF-8 " + command + " >/dev/null 2>&1";
        return std::system(
            line.c_str()); // NOLINT(concurrency-mt-unsafe, cert-env33-c): other programs' trash
    }

    [[nodiscard]] TrashContents look() const
    {
        return TrashContents::read(tree.url("v")).value_or(TrashContents{});
    }

    /// "name < original place" of each, as the list has them.
    [[nodiscard]] std::vector<std::string> items(const TrashContents& contents) const
    {
        std::vector<std::string> lines;
        for (const TrashContents::Item& item : contents.items) {
            lines.push_back(item.entry.name + " < " + item.original.path());
        }
        return lines;
    }

    const std::string user = std::to_string(::getuid());
    const std::string own = "v/data/Trash";
    TemporaryTree tree{folder("v"), folder("other")};
    TemporaryMount volume = TemporaryMount::memory(tree.path("v"));
    ScopedVariable home{"HOME", tree.path("v/home")};
    ScopedVariable dataHome{"XDG_DATA_HOME", tree.path("v/data")};
};

TEST_F(TrashContentsTest, EmptyingTakesWhatWasSeenWithItsRecordsAndNothingElse)
{
    tree.add(
        {file("v/keep/kept", 4096), file("v/home/by-gio", 8192), file("v/home/by-trash-cli/inner", 4096)});
    const bool hasGio = run("dbus-run-session -- gio trash home/by-gio") == 0;
    const bool hasTrashCli = run("trash-put home/by-trash-cli") == 0;
    trashed(own, file("film.2", 65536), "/a/le%20film");
    trashed(own, file("dossier/sub/x", 16384), "/a/dossier");
    trashed(own, link("lien", tree.path("v/keep")), "/a/lien");
    trashed(own, file("swapped", 4096), "/a/swapped");
    trashed(own, file("replaced/old", 4096), "/a/replaced");
    const std::string record = "[Trash Info]\nPath=/a/x\nDeletionDate=2026-01-02T03:04:05\n";
    tree.add({file(own + "/files/bare", 4096), file(own + "/info/left.trashinfo", record),
              file(own + "/info/coming.trashinfo", record), file(own + "/info/notes.txt", "n"),
              file(own + "/info/odd.trashinfo", "no record")});

    ScanScope::use({.names = {"sub"}, .folders = {}}); // what scans leave out is emptied too
    const TrashContents seen = look();
    ScanScope::use({});
    std::vector<std::string> expected{"film.2 < /a/le film",  "dossier < /a/dossier",   "lien < /a/lien",
                                      "swapped < /a/swapped", "replaced < /a/replaced", "bare < "};
    if (hasGio) {
        expected.push_back("by-gio < " + tree.path("v/home/by-gio"));
    }
    if (hasTrashCli) {
        expected.push_back("by-trash-cli < " + tree.path("v/home/by-trash-cli"));
    }
    EXPECT_THAT(items(seen), testing::UnorderedElementsAreArray(expected));
    EXPECT_THAT(items(seen).front() + items(seen).back(), testing::HasSubstr("film.2 < /a/le film"))
        << "by size";
    EXPECT_EQ(seen.totalBytes, 65536 + 16384 + 3 * 4096 + (hasGio ? 8192 : 0) + (hasTrashCli ? 4096 : 0));
    EXPECT_EQ(seen.unread, 0U);
    EXPECT_THAT(below(tree, seen.leftRecords),
                UnorderedElementsAre(own + "/info/left.trashinfo", own + "/info/coming.trashinfo"));

    // Other programs do not wait for the answer to the question.
    trashed(own, file("later", 4096), "/a/later");
    tree.add(
        {file("v/new", "new"), folder("v/new-folder"), file(own + "/files/coming", "came"),
         folder(own + "/files/late-folder"),
         file(own + "/directorysizes", "16384 1 dossier\n4096 2 late-folder\n4096 3 long%20gone\nodd\n")});
    tree.exchange("v/new", own + "/files/swapped");
    tree.exchange("v/new-folder", own + "/files/replaced");
    std::vector<std::size_t> told;
    FileRemover::BatchOptions options;
    options.progress = [&told](std::size_t done, std::size_t /*total*/) { told.push_back(done); };
    const auto result = seen.empty(options);

    EXPECT_EQ(result.removed.size(), expected.size() - 2);
    EXPECT_EQ(told.size(), expected.size());
    std::vector<std::string> failed;
    for (const FileRemover::RemovalFailure& failure : result.failures) {
        failed.emplace_back(failure.url.lastPathComponent());
        EXPECT_EQ(failure.message, "Cet élément a changé depuis l'analyse.");
    }
    EXPECT_THAT(failed, UnorderedElementsAre("swapped", "replaced"));
    EXPECT_THAT(tree.names(own + "/files"),
                ElementsAre("coming", "late-folder", "later", "replaced", "swapped"));
    EXPECT_THAT(tree.names(own + "/info"),
                ElementsAre("coming.trashinfo", "later.trashinfo", "notes.txt", "odd.trashinfo",
                            "replaced.trashinfo", "swapped.trashinfo"));
    EXPECT_EQ(tree.content(own + "/directorysizes"), "4096 2 late-folder\nodd\n");
    EXPECT_THAT(tree.names(own), ElementsAre("directorysizes", "files", "info")) << "no draft is left";
    EXPECT_EQ(tree.content("v/new").size() + tree.content("v/keep/kept").size(), 8192U);
}

TEST_F(TrashContentsTest, OnlySafeTrashFoldersOfThisUserOnThisVolumeCount)
{
    const std::string personal = "v/.Trash-" + user;
    const std::string shared = "v/.Trash/" + user;
    const TemporaryMount other = TemporaryMount::memory(tree.path("other"));
    ASSERT_TRUE(other.isMounted()) << other.refusal();
    trashed("other/.Trash-" + user, file("elsewhere", 4096), "elsewhere");
    trashed(personal, file("p", 4096), "sub/p%C3%A9");
    tree.add({folder(own + "/files"), folder("v/.Trash-" + user + "9/files/x")});
    EXPECT_THAT(items(look()), ElementsAre("p < " + tree.path("v/sub/pé")));

    trashed(shared, file("s", 4096), "s");
    EXPECT_THAT(items(look()), ElementsAre("p < " + tree.path("v/sub/pé"))) << "not sticky";
    tree.add(folder("v/.Trash").withMode(01777));
    EXPECT_THAT(look().items, testing::SizeIs(2));
    ASSERT_TRUE(look().empty({}).allSucceeded());
    EXPECT_THAT(tree.names(personal + "/files"), IsEmpty());
    EXPECT_THAT(tree.names(shared + "/info"), IsEmpty());
    EXPECT_EQ(tree.names("other/.Trash-" + user + "/files").size(), 1U);
    tree.rename("v/.Trash", "v/aside");

    // Links, at each of the steps.
    for (const std::string& step : {personal, personal + "/files", own, own + "/files"}) {
        trashed(step == personal || step == personal + "/files" ? personal : own, file("bait", 4096), "bait");
        EXPECT_THAT(look().items, testing::SizeIs(1));
        tree.rename(step, "v/real");
        tree.add(link(step, tree.path("v/real")));
        EXPECT_THAT(look().items, IsEmpty()) << step;
        tree.remove(step);
        tree.rename("v/real", step);
        ASSERT_TRUE(look().empty({}).allSucceeded());
    }
    if (::getuid() == 0) {
        trashed(personal, file("bait", 4096), "bait");
        for (const std::string& step : {personal, personal + "/files"}) {
            ASSERT_EQ(::chown(tree.path(step).c_str(), unprivilegedUser, unprivilegedUser), 0);
            EXPECT_THAT(look().items, IsEmpty()) << step;
            ASSERT_EQ(::chown(tree.path(step).c_str(), 0, 0), 0);
        }
    }
}

TEST_F(TrashContentsTest, AFolderInsteadOfTheOneThatWasExaminedIsNotEmptied)
{
    trashed(own, file("a", 4096), "/a");
    const TrashContents seen = look();
    tree.rename(own, "v/data/former");
    tree.add(file("v/mine/files/a", 4096));
    tree.add(link(own, tree.path("v/mine")));
    EXPECT_THAT(seen.empty({}).removed, IsEmpty());
    EXPECT_TRUE(tree.exists("v/mine/files/a"));
    EXPECT_TRUE(tree.exists("v/data/former/files/a"));
}

TEST_F(TrashContentsTest, AStoppedEmptyingLeavesTheRestWithItsRecords)
{
    trashed(own, file("first", 8192), "/first");
    trashed(own, file("second", 4096), "/second");
    tree.add(file(own + "/info/left.trashinfo", "[Trash Info]\n"));
    std::stop_source stop;
    FileRemover::BatchOptions options;
    options.stop = stop.get_token();
    options.progress = [&stop](std::size_t, std::size_t) { stop.request_stop(); };
    EXPECT_EQ(look().empty(options).removed.size(), 1U);
    EXPECT_THAT(tree.names(own + "/files"), ElementsAre("second"));
    EXPECT_THAT(tree.names(own + "/info"), ElementsAre("left.trashinfo", "second.trashinfo"));
    EXPECT_EQ(TrashContents::read(tree.url("v"), options.stop), std::nullopt);
}

TEST_F(TrashContentsTest, TheTableOfSizesFollowsUndoAndDeletionInAnyTrash)
{
    tree.add({file("v/back/x", 1), file("v/gone/x", 1), file("v/stays/x", 1)});
    const std::vector urls{tree.url("v/back"), tree.url("v/gone"), tree.url("v/stays")};
    const auto result = FileRemover::moveToTrash(urls);
    ASSERT_EQ(result.trashed.size(), 3U);
    tree.add(file(own + "/directorysizes", "1 1 back\n1 1 gone\n1 1 stays\n"));
    ASSERT_TRUE(FileRemover::restore(std::span{&result.trashed[0], 1}).allSucceeded());
    EXPECT_EQ(tree.content(own + "/directorysizes"), "1 1 gone\n1 1 stays\n");
    ASSERT_TRUE(FileRemover::deletePermanently(result.trashed[1].inTrash));
    EXPECT_EQ(tree.content(own + "/directorysizes"), "1 1 stays\n");
}

TEST_F(TrashContentsTest, AVolumeThatDoesNotAnswerHoldsUpNoOther)
{
    const TemporaryMount silent = TemporaryMount::silent(tree.path("other"));
    SKIP_UNLESS_MOUNTED(silent);
    trashed(own, file("a", 4096), "/a");
    std::vector<ProgressStream<TrashContents>> waiting;
    for (int asked = 0; asked < 20; ++asked) { // more than there are threads
        waiting.push_back(TrashContents::stream(tree.url("other")));
    }
    auto answering = TrashContents::stream(tree.url("v"));
    const auto contents = answering.next();
    ASSERT_TRUE(contents);
    EXPECT_THAT(contents->items, testing::SizeIs(1));
    EXPECT_THAT(waiting.front().takeArrived().records, IsEmpty());
}

TEST(TrashFolders, WhatLiesInATrashIsKnownHoweverItsPathIsSpelt)
{
    TemporaryTree tree;
    addCases(tree, "folders in a trash");
    const ScopedVariable data{"XDG_DATA_HOME", tree.path("home")};
    for (int round = 0; round < 2; ++round) { // the second one finds all folders known
        TrashFolders::Lookup trash;
        for (const auto& row : cases("what lies in a trash")) {
            EXPECT_EQ(trash.contains(tree.url(row[0])), row[1] == "yes") << row[0];
        }
    }
}

TEST(TrashFolders, WhatAScanFoundInATrashIsKnownWhereverTheScanBegan)
{
    TemporaryTree tree{folder("seen"), folder("here/it"), file("bin/c")};
    addCases(tree, "folders in a trash");
    const ScopedVariable data{"XDG_DATA_HOME", tree.path("var/data")};
    const TemporaryMount parent = TemporaryMount::bind(tree.path("var"), tree.path("seen"));
    const TemporaryMount itself = TemporaryMount::bind(tree.path("var/bin/files"), tree.path("here/it"));
    const auto knows = [&tree](const std::string& root, const std::string& item) {
        const auto folder = openFolder(tree.url(root), FolderAccess::throughOnly);
        return TrashFolders::Lookup{ScanRoots::add(tree.url(root), folder->get())}.contains(tree.url(item));
    };
    for (const auto& row : cases("where a scan begins, and what it finds in a trash")) {
        EXPECT_EQ(knows(row[0], row[1]), row[2] == "yes") << row[0] << ", " << row[1];
    }
    SKIP_UNLESS_MOUNTED(parent);
    SKIP_UNLESS_MOUNTED(itself);
    EXPECT_TRUE(knows("seen", "seen/bin/files/a"));
    EXPECT_TRUE(knows("here", "here/it/a"));
    EXPECT_TRUE(knows("here/it", "here/it/a"));
}

TEST(TrashFolders, ARelativeDataFolderCountsAsUnset)
{
    const ScopedVariable home{"HOME", "/home/somebody"};
    const ScopedVariable data{"XDG_DATA_HOME", "data"};
    EXPECT_EQ(TrashFolders::home(), FileUrl{"/home/somebody/.local/share/Trash"});
}

} // namespace

} // namespace tallyroom
