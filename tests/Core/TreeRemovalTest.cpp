#include "Removal/TreeRemoval.h"

#include "FileSystem/FileAttributes.h"
#include "FileSystem/FolderReader.h"
#include "Scanning/FileScanner.h"
#include "Support/Interception.h"
#include "Support/Isolation.h"
#include "Support/TemporaryTree.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace tallyroom {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TreeRemoval::Outcome removeFrom(const TemporaryTree& tree, const std::string& name)
{
    const FileDescriptor parent{::open(tree.path().c_str(), O_PATH | O_DIRECTORY)};
    return TreeRemoval::removeItem(parent.get(), name);
}

int errorOf(const TreeRemoval::Outcome& outcome)
{
    return outcome.error ? outcome.error->code : 0;
}

/// Enough names for several threads to share the work.
void addLargeTree(TemporaryTree& tree, const std::string& name)
{
    for (int i = 0; i < 1200; ++i) {
        const std::string folderName = name + "/" + std::to_string(i / 20) + "/" + std::to_string(i % 4);
        tree.add(file(folderName + "/file" + std::to_string(i), 100));
    }
}

TEST(TreeRemoval, RemovesEveryKindOfItemAndNothingBesideIt)
{
    TemporaryTree tree{file("kept/photo", "p"),
                       file("out/plain", 10_KiB),
                       hardLink("out/second", "kept/photo"),
                       link("out/to-kept", "../kept"),
                       link("out/dangling", "nowhere"),
                       fifo("out/pipe"),
                       socket("out/socket"),
                       folder("out/empty"),
                       file("out/-rf", "x"),
                       file("out/new\nline", "x"),
                       file("out/\xff\xfe", "x"),
                       file("out/" + std::string(255, 'n') + "/" + std::string(255, 'm'), "x")};
    addLargeTree(tree, "out/large");
    EXPECT_EQ(errorOf(removeFrom(tree, "out")), 0);
    EXPECT_THAT(tree.names(), ElementsAre("kept"));
    EXPECT_EQ(tree.content("kept/photo"), "p");
    EXPECT_EQ(errorOf(removeFrom(tree, "out")), ENOENT);
}

TEST(TreeRemoval, ATreeOfTenThousandLevelsIsMeasuredAndRemoved)
{
    // In memory: a disk's journal that others write to as well makes a minute of it.
    const std::string memory = "/dev/shm";
    const bool hasMemory = ::access(memory.c_str(), W_OK) == 0;
    const ScopedVariable place{"TMPDIR",
                               hasMemory ? memory : std::filesystem::temp_directory_path().string()};
    TemporaryTree tree{file("out/" + chain(std::string(250, 'l'), 40) + "/leaf", "x")};
    FileDescriptor level = std::move(*openFolder(tree.url("out"), FolderAccess::listing));
    for (int depth = 0; depth < 10'000; ++depth) {
        // Now and then a level waits for a second folder while the deep one is emptied.
        ASSERT_TRUE(depth % 3 != 0 || ::mkdirat(level.get(), "sibling", 0755) == 0);
        ASSERT_EQ(::mkdirat(level.get(), "d", 0755), 0);
        level = std::move(*openChildFolder(level.get(), "d"));
    }
    FileDescriptor bottom{::openat(level.get(), "f", O_CREAT | O_WRONLY | O_CLOEXEC, 0644)};
    ASSERT_EQ(::write(bottom.get(), "x", 1), 1);
    const auto blocks = fileAttributes(bottom.get())->allocatedBytes;
    EXPECT_EQ(FileScanner::directorySize(tree.url()), 2 * blocks);
    level.reset();
    EXPECT_EQ(errorOf(removeFrom(tree, "out")), 0);
    EXPECT_THAT(tree.names(), IsEmpty());
}

TEST(TreeRemoval, KeepsFewDescriptorsOpen)
{
    TemporaryTree tree{};
    for (int branch = 0; branch < 40; ++branch) {
        const std::string path = "out/" + std::to_string(branch) + "/" + chain("d", 100);
        for (int i = 0; i < 20; ++i) {
            tree.add(folder(path + "/" + std::to_string(i)));
        }
    }
    const int code = inChildProcess([&tree] {
        const rlimit few{300, 300};
        ::setrlimit(RLIMIT_NOFILE, &few);
        return errorOf(removeFrom(tree, "out"));
    });
    EXPECT_EQ(code, 0);
    EXPECT_THAT(tree.names(), IsEmpty());
}

TEST(TreeRemoval, WhatResistsStaysAndTheRestGoes)
{
    const int code = asUnprivilegedUser([] {
        TemporaryTree own{file("out/a/locked/secret", "x"), file("out/a/other", "x"),
                          file("out/b/sealed/kept", "x"), folder("out/c/empty")};
        addLargeTree(own, "out/large");
        own.add({folder("out/a/locked").withMode(0), folder("out/b/sealed").withMode(0500),
                 folder("out/c/empty").withMode(0)});
        const int error = errorOf(removeFrom(own, "out"));
        const bool isRight = own.names("out") == std::vector<std::string>{"a", "b"} &&
                             own.names("out/a") == std::vector<std::string>{"locked"} &&
                             own.names("out/b/sealed") == std::vector<std::string>{"kept"};
        return isRight ? error : 0;
    });
    EXPECT_EQ(code, EACCES);
}

TEST(TreeRemoval, DoesNotEnterWhatIsMountedInside)
{
    TemporaryTree tree{folder("out/a/mounted"), file("out/a/other", "x"), file("precious/photo", "p")};
    const auto mount = TemporaryMount::bind(tree.path("precious"), tree.path("out/a/mounted"));
    SKIP_UNLESS_MOUNTED(mount);
    EXPECT_EQ(errorOf(removeFrom(tree, "out")), EXDEV);
    EXPECT_EQ(tree.content("precious/photo"), "p");
    EXPECT_THAT(tree.names("out/a"), ElementsAre("mounted"));
}

TEST(TreeRemoval, AFolderSwappedForALinkLeadsNobodyOutside)
{
    for (int moment = 1; moment < 80; ++moment) {
        TemporaryTree tree{file("precious/sub/photo", "p")};
        tree.add(link("bait", tree.path("precious")));
        for (int i = 0; i < 10; ++i) {
            tree.add({file("out/" + std::to_string(i)), file("out/a/sub/" + std::to_string(i)),
                      file("out/b/" + std::to_string(i) + "/sub/file")});
        }
        int calls = 0;
        const Interception intruder{[&](const InterceptedCall&) {
            if (++calls == moment) { // or there is nothing left to swap
                ::renameat2(AT_FDCWD, tree.path("bait").c_str(), AT_FDCWD, tree.path("out/a").c_str(),
                            RENAME_EXCHANGE);
            }
            return 0;
        }};
        static_cast<void>(removeFrom(tree, "out"));
        ASSERT_EQ(tree.content("precious/sub/photo"), "p") << moment;
    }
}

TEST(TreeRemoval, AnotherFolderInThePlaceOfOneThatWasLeftForADeepOneStaysWhole)
{
    const std::string deep = "/" + chain("d", 60) + "/bottom";
    TemporaryTree tree{file("out/x/1" + deep), file("out/x/2" + deep), file("mine/1/photo", "p"),
                       file("mine/2/photo", "p")};
    bool isSwapped = false;
    const auto intruder = Interception::at(InterceptedCall::Kind::unlink, "bottom", [&] {
        if (!std::exchange(isSwapped, true)) {
            tree.exchange("out/x", "mine");
        }
    });
    EXPECT_NE(errorOf(removeFrom(tree, "out")), 0);
    EXPECT_EQ(tree.content("out/x/1/photo") + tree.content("out/x/2/photo"), "pp");
}

TEST(TreeRemoval, AFolderThatFillsUpMeanwhileIsEmptiedAgain)
{
    TemporaryTree tree{folder("out/busy")};
    int times = 0;
    const auto writer = Interception::at(InterceptedCall::Kind::unlink, "busy", [&] {
        if (++times < 6) {
            tree.add(file("out/busy/" + std::to_string(times)));
        }
    });
    EXPECT_EQ(errorOf(removeFrom(tree, "out")), 0);
    EXPECT_THAT(tree.names(), IsEmpty());
}

TEST(TreeRemoval, TwoRemovalsOfOneTreeDoNotDisturbEachOther)
{
    TemporaryTree tree{};
    addLargeTree(tree, "out");
    TreeRemoval::Outcome other;
    std::jthread second{[&] { other = removeFrom(tree, "out"); }};
    const auto first = removeFrom(tree, "out");
    second.join();
    EXPECT_THAT(tree.names(), IsEmpty());
    for (const int code : {errorOf(first), errorOf(other)}) {
        EXPECT_TRUE(code == 0 || code == ENOENT) << code;
    }
}

} // namespace

} // namespace tallyroom
