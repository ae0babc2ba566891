#include "Removal/TrashFolders.h"

#include "FileSystem/FolderReader.h"
#include "FileSystem/ScanRoots.h"
#include "Support/Cases.h"
#include "Support/Isolation.h"

#include <gtest/gtest.h>
#include <utility>

namespace tallyroom {

namespace {

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
