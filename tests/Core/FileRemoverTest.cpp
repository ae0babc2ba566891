#include "Removal/FileRemover.h"

#include "FileSystem/FileAttributes.h"
#include "FileSystem/FileDescriptor.h"
#include "FileSystem/ScanScope.h"
#include "Removal/ProtectedLocations.h"
#include "Removal/ReclaimEstimate.h"
#include "Support/Cases.h"
#include "Support/Interception.h"
#include "Support/Isolation.h"
#include "Support/ListWords.h"

#include <fcntl.h>
#include <future>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/fs.h>
#include <regex>
#include <sys/ioctl.h>
#include <unistd.h>

namespace tallyroom {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::SizeIs;

class FileRemoverTest : public testing::Test {
protected:
    FileRemover::RemovalResult remove(const std::vector<FileUrl>& urls, bool permanently)
    {
        return FileRemover::remove(urls, permanently, [this](std::size_t completed, std::size_t total) {
            progress.emplace_back(completed, total);
        });
    }

    TemporaryTree tree{file("home/me/photo", "p"), folder("data")};
    ScopedVariable home{"HOME", tree.path("home/me")};
    ScopedVariable dataHome{"XDG_DATA_HOME", tree.path("data")};
    std::vector<std::pair<std::size_t, std::size_t>> progress;
};

TEST_F(FileRemoverTest, ALinkGoesAndItsTargetStays)
{
    for (const bool permanently : {false, true}) {
        for (const char* const name : {"shortcut", "shortcut/", "shortcut///"}) {
            tree.add({file("photos/a.jpg", 10_KiB), link("shortcut", "photos")});
            const auto result = remove({tree.url(name)}, permanently);
            EXPECT_TRUE(result.allSucceeded());
            EXPECT_TRUE(tree.exists("photos/a.jpg"));
            EXPECT_FALSE(tree.exists("shortcut"));
        }
    }
    tree.add({link("to-home", "home/me"), link("to-root", "/")});
    EXPECT_TRUE(remove({tree.url("to-home/"), tree.url("to-root/")}, true).allSucceeded());
    EXPECT_TRUE(tree.exists("home/me/photo"));
}

TEST_F(FileRemoverTest, TheRootTheHomeAndWhatHoldsItAreRefusedByAnyRoute)
{
    tree.add({link("to-homes", "home"), link("to-tree", "."), link("to-root", "/"), folder("other"),
              file("precious", "p"), file("spare/sub/photo", "p")});
    std::vector<FileUrl> urls;
    for (const auto& row : cases("what is never removed")) {
        urls.emplace_back(std::regex_replace(row[0], std::regex{"%"}, tree.path()));
    }
    for (const bool permanently : {false, true}) {
        const auto result = remove(urls, permanently);
        EXPECT_THAT(result.failures, SizeIs(urls.size()));
        EXPECT_THAT(result.removed, IsEmpty());
        EXPECT_THAT(tree.names(), ElementsAre("data", "home", "other", "precious", "spare", "to-homes",
                                              "to-root", "to-tree"));
        EXPECT_EQ(tree.content("home/me/photo") + tree.content("spare/sub/photo"), "pp");
    }
    const ScopedVariable homeByLink{"HOME", tree.path("to-homes/me")};
    EXPECT_THAT(remove({tree.url("to-homes"), tree.url("home")}, true).removed, IsEmpty());
    EXPECT_EQ(remove({tree.url("home")}, true).failures.front().message,
              "Ce dossier contient le dossier personnel.");
}

TEST_F(FileRemoverTest, MountPointsAndWhatHoldsThemAreRefusedByAnyRoute)
{
    tree.add(
        {folder("disks/my disk\\1\n"), file("album/photo", "p"), link("route", "disks"), folder("window")});
    const auto disk = TemporaryMount::bind(tree.path("album"), tree.path("disks/my disk\\1\n"));
    const auto homes = TemporaryMount::bind(tree.path("home"), tree.path("window"));
    SKIP_UNLESS_MOUNTED(disk);
    SKIP_UNLESS_MOUNTED(homes);
    const std::vector<FileUrl> urls{tree.url("disks/my disk\\1\n"), tree.url("route/my disk\\1\n/"),
                                    tree.url("disks"), tree.url("route/../disks"), tree.url("window/me")};
    for (const bool permanently : {false, true}) {
        EXPECT_THAT(remove(urls, permanently).removed, IsEmpty());
        EXPECT_EQ(tree.content("album/photo"), "p");
        EXPECT_EQ(tree.content("home/me/photo"), "p");
    }
    EXPECT_EQ(remove({urls.front()}, true).failures.front().message,
              "Un volume est monté à cet emplacement.");
    tree.add(folder("disks/my"));
    EXPECT_TRUE(remove({tree.url("disks/my")}, true).allSucceeded()) << "its name only begins like the other";
}

TEST_F(FileRemoverTest, WhatAMountShowsStaysAtItsOtherPlacesToo)
{
    tree.add({file("store/homes/real/photo", "p"), file("disk/album/photo", "p"), folder("window")});
    const auto homeShown = TemporaryMount::bind(tree.path("store/homes"), tree.path("home"));
    const auto album = TemporaryMount::bind(tree.path("disk/album"), tree.path("window"));
    SKIP_UNLESS_MOUNTED(homeShown);
    SKIP_UNLESS_MOUNTED(album);
    const ScopedVariable realHome{"HOME", tree.path("home/real")};
    for (const bool permanently : {false, true}) {
        for (const auto& row : cases("what mounts show elsewhere")) {
            EXPECT_THAT(told(tree, remove({tree.url(row[0])}, permanently).failures),
                        ElementsAre(row[0] + ": " + row[1]));
        }
        EXPECT_EQ(tree.content("store/homes/real/photo"), "p");
        EXPECT_EQ(tree.content("disk/album/photo"), "p");
    }
}

TEST_F(FileRemoverTest, WhatTheUserProtectsStaysWithAllInItAndAllAboveIt)
{
    tree.add({file("safe/inner/letter", "l"), file("safe-not", "n"), link("way", "safe/inner")});
    ProtectedLocations::protect({tree.url("way/"), tree.url("missing")});
    for (const bool permanently : {false, true}) {
        tree.add(file("safe/note", "o"));
        const auto result =
            remove({tree.url("safe"), tree.url("safe/inner"), tree.url("way/letter"),
                    tree.url("safe/inner/letter"), tree.url("safe/note"), tree.url("safe-not")},
                   permanently);
        EXPECT_THAT(told(tree, result.failures),
                    ElementsAre("safe: Un dossier protégé dans les préférences s'y trouve.",
                                "safe/inner: Ce dossier est protégé dans les préférences.",
                                "way/letter: Cet élément est dans un dossier protégé dans les préférences.",
                                "safe/inner/letter: Cet élément est dans un dossier protégé dans les "
                                "préférences."));
        EXPECT_THAT(result.removed, ElementsAre(tree.url("safe/note"), tree.url("safe-not")));
        EXPECT_TRUE(tree.exists("safe/inner/letter"));
        tree.add(file("safe-not", "n"));
    }
    ProtectedLocations::protect({});
    EXPECT_TRUE(remove({tree.url("safe")}, true).allSucceeded());
}

TEST_F(FileRemoverTest, AProtectedFolderThatDoesNotAnswerHoldsUpNoRemovalElsewhere)
{
    tree.add({file("plain", "p"), file("safe/letter", "l"), folder("share")});
    const TemporaryMount silent = TemporaryMount::silent(tree.path("share"));
    SKIP_UNLESS_MOUNTED(silent);
    ProtectedLocations::protect({tree.url("share/mine"), tree.url("safe")});
    auto removal = std::async(std::launch::async, [this] {
        return remove({tree.url("plain"), tree.url("safe/letter")}, true);
    });
    ASSERT_EQ(removal.wait_for(std::chrono::seconds{30}), std::future_status::ready);
    const auto result = removal.get();
    ProtectedLocations::protect({});
    EXPECT_THAT(result.removed, ElementsAre(tree.url("plain")));
    EXPECT_THAT(result.failures, SizeIs(1));
}

TEST_F(FileRemoverTest, WhatGoesInPartSaysWhatIsLeftAndWhatIsFreed)
{
    tree.add({file("out/1", 8_KiB), file("out/a/locked 2", 8_KiB), file("out/a/3", 8_KiB),
              file("out/b/locked 1", 8_KiB), hardLink("out/b/kept", "home/me/photo"),
              file("out/locked", 8_KiB), file("whole/locked", 8_KiB)});
    const Interception faults{[](const InterceptedCall& call) {
        const bool isLocked = std::string_view{call.name}.starts_with("locked");
        return call.kind == InterceptedCall::Kind::unlink && isLocked ? EPERM : 0;
    }};
    const auto result = remove({tree.url("out"), tree.url("whole/locked")}, true);
    EXPECT_THAT(told(tree, result.failures),
                ElementsAre("out: En partie supprimé : il reste « a/locked 2 » (Opération non permise) et 2 "
                            "autres.",
                            "whole/locked: Opération non permise."));
    EXPECT_EQ(result.failures.front().freedBytes, 16_KiB);
    EXPECT_THAT(tree.names("out"), ElementsAre("a", "b", "locked"));
    EXPECT_THAT(tree.names("out/b"), ElementsAre("locked 1"));
}

TEST_F(FileRemoverTest, EveryItemIsTriedOnceInTheOrderGiven)
{
    for (const bool permanently : {false, true}) {
        tree.add({file("b", "b"), file("a", "a"), file("dir/file", "c")});
        const std::vector<FileUrl> urls{tree.url("b"), tree.url("missing/x"),  tree.url("b"),
                                        tree.url("a"), tree.url("dir/file/x"), tree.url("dir")};
        progress.clear();
        const auto result = remove(urls, permanently);
        EXPECT_THAT(result.removed, ElementsAre(urls[0], urls[3], urls[5]));
        EXPECT_THAT(told(tree, result.failures),
                    ElementsAre("missing/x: Cet élément n'existe plus.", "b: Cet élément n'existe plus.",
                                "dir/file/x: Ce n'est pas un dossier."));
        EXPECT_EQ(result.canUndo(), !permanently);
        EXPECT_THAT(result.trashed, SizeIs(permanently ? 0 : 3));
        EXPECT_THAT(progress,
                    ElementsAre(Pair(1, 6), Pair(2, 6), Pair(3, 6), Pair(4, 6), Pair(5, 6), Pair(6, 6)));
    }
    EXPECT_EQ(remove({}, true), FileRemover::RemovalResult{});
}

Reclaim reclaimOf(const TemporaryTree& tree, const std::vector<std::string>& names)
{
    std::vector<Entry> entries;
    for (const std::string& name : names) {
        const auto found = fileAttributes(tree.url(name));
        entries.push_back(
            {.url = tree.url(name), .name = name, .isDirectory = found && found->type == EntryType::folder});
    }
    return measureReclaim(entries, {});
}

TEST(ReclaimEstimate, AFileComesBackWithTheLastOfItsNames)
{
    TemporaryTree tree{sparseFile("project/hole", 1_MiB)};
    addCases(tree, "files of several names");
    const std::int64_t way = allocated(tree.path("project/way")); // nothing on most file systems
    const Reclaim linked{24_KiB + way, 24_KiB + way, 64_KiB};
    EXPECT_EQ(reclaimOf(tree, {"project"}), linked);
    EXPECT_EQ(reclaimOf(tree, {"project", "project/deep", "project/own", "project/a"}), linked)
        << "what lies below another item counts once";
    EXPECT_EQ(reclaimOf(tree, {"project", "store/a", "project b/c"}), (Reclaim{92_KiB + way, 92_KiB + way}));
    EXPECT_EQ(reclaimOf(tree, {"project/a", "project/again"}), (Reclaim{.linkedElsewhere = 64_KiB}));
    EXPECT_EQ(reclaimOf(tree, {"project/way", "gone", "project b"}), (Reclaim{4_KiB + way, 4_KiB + way}));
    ScanScope::use({.names = {"deep"}, .folders = {}});
    EXPECT_EQ(reclaimOf(tree, {"project"}), linked) << "what scans leave out goes too";
    ScanScope::use({});
}

TEST(ReclaimEstimate, WhatCannotBeExaminedIsNotTakenForNothing)
{
    const TemporaryTree tree{file("dir/known", 8_KiB), file("dir/broken", 8_KiB), file("broken", 4_KiB)};
    const Interception faults{[](const InterceptedCall& call) {
        const bool isBroken = std::string_view{call.name} == "broken";
        return call.kind == InterceptedCall::Kind::statx && isBroken ? EIO : 0;
    }};
    EXPECT_EQ(reclaimOf(tree, {"dir", "broken"}),
              (Reclaim{.atLeast = 8_KiB, .atMost = 8_KiB, .unread = 2, .hasUnreadItems = true}));
}

TEST(ReclaimEstimate, SharedBlocksMayStay)
{
    const TemporaryTree tree{file("original", 256_KiB), file("own", 64_KiB), folder("copies")};
    const FileDescriptor original{::open(tree.path("original").c_str(), O_RDONLY | O_CLOEXEC)};
    const FileDescriptor copy{::open(tree.path("copies/copy").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600)};
    if (::ioctl(copy.get(), FICLONE, original.get()) != 0) {
        GTEST_SKIP() << "files share no blocks here";
    }
    ASSERT_EQ(::fsync(copy.get()), 0);
    EXPECT_EQ(reclaimOf(tree, {"copies", "own"}), (Reclaim{64_KiB, 320_KiB}));
}

} // namespace

} // namespace tallyroom
