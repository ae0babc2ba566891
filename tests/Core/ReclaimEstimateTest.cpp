#include "Removal/ReclaimEstimate.h"

#include "FileSystem/FileAttributes.h"
#include "FileSystem/FileDescriptor.h"
#include "Support/TemporaryTree.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/fs.h>
#include <sys/ioctl.h>

namespace tallyroom {

namespace {

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
    const TemporaryTree tree{file("store/a", 64_KiB),
                             hardLink("project/a", "store/a"),
                             hardLink("project/again", "store/a"),
                             file("project/own", 8_KiB),
                             file("project/deep/own", 16_KiB),
                             link("project/way", "../store/a"),
                             sparseFile("project/hole", 1_MiB),
                             file("project b/c", 4_KiB)};
    const std::int64_t way = allocated(tree.path("project/way")); // nothing on most file systems
    const Reclaim linked{24_KiB + way, 24_KiB + way, 64_KiB};
    EXPECT_EQ(reclaimOf(tree, {"project"}), linked);
    EXPECT_EQ(reclaimOf(tree, {"project", "project/deep", "project/own", "project/a"}), linked)
        << "what lies below another item counts once";
    EXPECT_EQ(reclaimOf(tree, {"project", "store/a", "project b/c"}), (Reclaim{92_KiB + way, 92_KiB + way}));
    EXPECT_EQ(reclaimOf(tree, {"project/a", "project/again"}), (Reclaim{.linkedElsewhere = 64_KiB}));
    EXPECT_EQ(reclaimOf(tree, {"project/way", "gone", "project b"}), (Reclaim{4_KiB + way, 4_KiB + way}));
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
