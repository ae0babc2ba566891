#include "Removal/TrashFolders.h"

#include "Support/Isolation.h"
#include "Support/TemporaryTree.h"

#include <gtest/gtest.h>

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

TEST(TrashFolders, ARelativeDataFolderCountsAsUnset)
{
    const ScopedVariable home{"HOME", "/home/somebody"};
    const ScopedVariable data{"XDG_DATA_HOME", "data"};
    EXPECT_EQ(TrashFolders::home(), FileUrl{"/home/somebody/.local/share/Trash"});
}

} // namespace

} // namespace tallyroom
