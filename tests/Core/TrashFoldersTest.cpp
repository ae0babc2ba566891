#include "Removal/TrashFolders.h"

#include "FileSystem/FolderReader.h"
#include "FileSystem/ScanRoots.h"
#include "Support/Isolation.h"
#include "Support/TemporaryTree.h"

#include <gtest/gtest.h>
#include <utility>

namespace tallyroom {

namespace {

TEST(TrashFolders, WhatLiesInATrashIsKnownHoweverItsPathIsSpelt)
{
    const TemporaryTree tree{
        // the person's own, with a name that tells nothing, reached by two links
        file("var/bin/files/a"), file("var/bin/files/folder/b"), folder("var/bin/info"), folder("var/data"),
        link("var/data/Trash", "../bin"), link("home", "var/data"),
        // those of others
        file("else/.local/share/Trash/files/c"), folder("else/.local/share/Trash/info"),
        file(".Trash-1000/files/d"), folder(".Trash-1000/info"), file(".Trash/1000/files/e"),
        folder(".Trash/1000/info"), link("way", "else/.local/share/Trash/files"),
        // folders that only look like one
        file("mail/Trash/files/f"), file("Trash/g"), folder("Trash/info"), folder("Trash/files"),
        file(".Trash-me/files/h"), folder(".Trash-me/info"), file(".Trash-/files/i"), folder(".Trash-/info"),
        file("1000/files/j"), folder("1000/info"), file(".Trash-1000/other/k")};
    const ScopedVariable data{"XDG_DATA_HOME", tree.path("home")};
    for (int round = 0; round < 2; ++round) { // the second one finds all folders known
        TrashFolders::Lookup trash;
        for (const char* const name :
             {"var/bin/files/a", "var/bin/files/folder/b", "home/Trash/files/a", "var/data/Trash/files/gone",
              "var/bin/info/a.trashinfo", "else/.local/share/Trash/files/c", "way/c", ".Trash-1000/files/d",
              ".Trash/1000/files/e", "home/../.Trash-1000/files/gone/too"}) {
            EXPECT_TRUE(trash.contains(tree.url(name))) << name;
        }
        for (const char* const name :
             {"mail/Trash/files/f", "Trash/g", "Trash/files", ".Trash-me/files/h", ".Trash-/files/i",
              "1000/files/j", ".Trash-1000/other/k", "var/bin", "way", "nothing/at/all"}) {
            EXPECT_FALSE(trash.contains(tree.url(name))) << name;
        }
    }
}

TEST(TrashFolders, WhatAScanFoundInATrashIsKnownWhereverTheScanBegan)
{
    const TemporaryTree tree{file("var/bin/files/a"),
                             folder("var/bin/info"),
                             folder("var/data"),
                             link("var/data/Trash", "../bin"),
                             folder("seen"),
                             folder("here/it"),
                             file("else/Trash/files/b"),
                             folder("else/Trash/info"),
                             link("way", "else"),
                             file("files/c"),
                             file("bin/c")};
    const ScopedVariable data{"XDG_DATA_HOME", tree.path("var/data")};
    const TemporaryMount parent = TemporaryMount::bind(tree.path("var"), tree.path("seen"));
    const TemporaryMount itself = TemporaryMount::bind(tree.path("var/bin/files"), tree.path("here/it"));
    const auto knows = [&tree](const char* root, const std::string& item) {
        const auto folder = openFolder(tree.url(root), FolderAccess::throughOnly);
        return TrashFolders::Lookup{ScanRoots::add(tree.url(root), folder->get())}.contains(tree.url(item));
    };
    for (const auto& [root, item] : {std::pair{"var", "var/bin/files/a"},
                                     {"var/bin/files", "var/bin/files/a"},
                                     {"var/data/Trash", "var/data/Trash/files/a"},
                                     {"else", "else/Trash/files/b"},
                                     {"way", "way/Trash/files/b"},
                                     {"way/Trash", "way/Trash/files/b"}}) {
        EXPECT_TRUE(knows(root, item)) << root << ", " << item;
    }
    for (const auto& [root, item] : {std::pair{"files", "files/c"}, {"bin", "bin/c"}, {"var", "var/b"}}) {
        EXPECT_FALSE(knows(root, item)) << root << ", " << item;
    }
    if (!parent.isMounted() || !itself.isMounted()) {
        GTEST_SKIP() << parent.refusal();
    }
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
