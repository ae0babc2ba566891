#include "FileSystem/FileDescriptor.h"
#include "Kinds/FolderAnalyzer.h"
#include "Support/AllRecords.h"
#include "Support/Isolation.h"
#include "Support/TemporaryTree.h"
#include "Volumes/VolumesBelow.h"

#include <fcntl.h>
#include <gtest/gtest.h>

namespace tallyroom {

namespace {

TEST(VolumeAccount, TellsWhatLiesElsewhereTwiceOrOutOfReachFromWhatWasFound)
{
    TemporaryTree tree{folder("v")};
    const TemporaryMount volume = TemporaryMount::memory(tree.path("v"), "size=4m");
    SKIP_UNLESS_MOUNTED(volume);
    tree.add({file("v/a/one", 100 << 10), file("v/a/b/two", 20 << 10), file("v/.git/x", 40 << 10),
              file("v/deleted", 80 << 10), folder("v/other"), folder("v/again")});
    tree.add(hardLink("v/link", "v/a/one"));
    const FileDescriptor open{::open(tree.path("v/deleted").c_str(), O_RDONLY | O_CLOEXEC)};
    tree.remove("v/deleted");
    const TemporaryMount other = TemporaryMount::memory(tree.path("v/other"));
    tree.add(file("v/other/x/y", 60 << 10));
    const TemporaryMount again = TemporaryMount::bind(tree.path("v/a"), tree.path("v/again"));

    const auto accountOf = [&tree](const char* folder) {
        return allRecords(FolderAnalyzer::stream(tree.url(folder))).back().volume;
    };
    const VolumeAccount expected{.used = 240 << 10, // all but what lies on the other one
                                 .found = 120 << 10,
                                 .elsewhere = (60 + 120) << 10,
                                 .skipped = 1};
    const auto account = accountOf("v");
    ASSERT_TRUE(account);
    EXPECT_EQ(*account, expected);
    EXPECT_EQ(account->missing(), 120 << 10);
    EXPECT_EQ(usedBytesBelow(tree.url("v/")), expected.used);
    for (const char* const part : {"v/a", "v/again"}) { // not the top, and a part of a volume
        EXPECT_FALSE(accountOf(part)) << part;
        EXPECT_FALSE(usedBytesBelow(tree.url(part))) << part;
    }
}

} // namespace

} // namespace tallyroom
