#include "Analysis/DuplicateRemovalCheck.h"

#include "Analysis/DuplicateFinder.h"
#include "Support/Isolation.h"
#include "Support/TemporaryTree.h"

#include <array>
#include <cstdio>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tallyroom {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<DuplicateGroup> duplicatesIn(const TemporaryTree& tree)
{
    return DuplicateFinder::find(tree.url(), 1).get();
}

DuplicateRemovalCheck::Verdict check(const TemporaryTree& tree, const std::vector<DuplicateGroup>& groups,
                                     std::initializer_list<std::string_view> victims)
{
    std::unordered_set<FileUrl> urls;
    for (const std::string_view victim : victims) {
        urls.insert(tree.url(victim));
    }
    return DuplicateRemovalCheck::check(groups, urls);
}

std::vector<std::string> refusedIn(const TemporaryTree& tree, const DuplicateRemovalCheck::Verdict& verdict)
{
    std::vector<std::string> names;
    for (const auto& refusal : verdict.refused) {
        EXPECT_FALSE(refusal.reason.empty());
        names.push_back(refusal.url.path().substr(tree.path().size() + 1));
    }
    return names;
}

/// Writes another byte into a file and puts its modification time back.
void rewriteUnderItsTime(const std::string& path, off_t offset)
{
    const FileDescriptor file{::open(path.c_str(), O_WRONLY | O_CLOEXEC)};
    struct stat before = {};
    ASSERT_EQ(::fstat(file.get(), &before), 0);
    ASSERT_EQ(::pwrite(file.get(), "?", 1, offset), 1);
    const std::array times{before.st_atim, before.st_mtim};
    ASSERT_EQ(::futimens(file.get(), times.data()), 0);
}

TEST(DuplicateRemovalCheck, CopiesMayGoWhileAnotherOneStays)
{
    const TemporaryTree tree{file("a", "same"), file("b", "same"), file("c", "same"), file("x", "pair"),
                             file("y", "pair")};
    const auto groups = duplicatesIn(tree);
    const auto some = check(tree, groups, {"c", "b"});
    EXPECT_THAT(some.fine, ElementsAre(tree.url("b"), tree.url("c")));
    EXPECT_THAT(some.refused, IsEmpty());
    EXPECT_EQ(some.groupsLosingAllCopies, 0U);

    const auto all = check(tree, groups, {"a", "b", "c", "y", "stranger"});
    EXPECT_EQ(all.groupsLosingAllCopies, 1U);
    EXPECT_THAT(all.fine, ElementsAre(tree.url("a"), tree.url("b"), tree.url("c"), tree.url("y")));
    EXPECT_THAT(refusedIn(tree, all), ElementsAre("stranger"));
}

TEST(DuplicateRemovalCheck, AVictimThatChangedStays)
{
    TemporaryTree tree{file("a", "same"), file("edited", "same"), file("gone", "same"),
                       file("longer", "same"), file("replaced", "same")};
    const auto groups = duplicatesIn(tree);
    tree.add(file("edited", "SAME").modifiedAt(1'000'000'000));
    tree.add(file("longer", "same and more"));
    ::unlink(tree.path("gone").c_str());
    ::unlink(tree.path("replaced").c_str());
    tree.add(folder("replaced"));
    const auto verdict = check(tree, groups, {"edited", "gone", "longer", "replaced"});
    EXPECT_THAT(verdict.fine, IsEmpty());
    EXPECT_THAT(refusedIn(tree, verdict), ElementsAre("edited", "gone", "longer", "replaced"));
}

TEST(DuplicateRemovalCheck, NothingGoesWhenTheCopiesToKeepAreNoMore)
{
    TemporaryTree tree{file("a", "same"), file("b", "same"), file("c", "same")};
    const auto groups = duplicatesIn(tree);
    tree.add(file("a", "SAME").modifiedAt(1'000'000'000));
    EXPECT_THAT(check(tree, groups, {"c"}).fine, ElementsAre(tree.url("c"))) << "b is still there";
    EXPECT_THAT(refusedIn(tree, check(tree, groups, {"b", "c"})), ElementsAre("b", "c"));
    ::unlink(tree.path("a").c_str());
    EXPECT_THAT(refusedIn(tree, check(tree, groups, {"b", "c"})), ElementsAre("b", "c"));
}

TEST(DuplicateRemovalCheck, AFileThatWasMovedAwayAndBackIsTheSame)
{
    for (const std::int64_t size : {4_KiB, 100_KiB, 200_KiB}) { // as many digests as there are stages
        const TemporaryTree tree{file("a", size), file("b", size)};
        const auto groups = duplicatesIn(tree);
        ASSERT_EQ(::rename(tree.path("b").c_str(), tree.path("trash").c_str()), 0);
        ASSERT_EQ(::rename(tree.path("trash").c_str(), tree.path("b").c_str()), 0);
        EXPECT_THAT(check(tree, groups, {"b"}).fine, ElementsAre(tree.url("b"))) << size;
        std::stop_source stopped;
        stopped.request_stop();
        const auto verdict = DuplicateRemovalCheck::check(groups, {tree.url("b")}, stopped.get_token());
        EXPECT_THAT(refusedIn(tree, verdict), ElementsAre("b"));
    }
}

TEST(DuplicateRemovalCheck, AnotherContentUnderTheFormerTimeIsNoCopy)
{
    TemporaryTree tree{file("a", 200_KiB), file("b", 200_KiB), hardLink("b2", "b"), file("c", 200_KiB)};
    const auto groups = duplicatesIn(tree);
    rewriteUnderItsTime(tree.path("b"), 100'000);
    const auto verdict = check(tree, groups, {"b", "b2", "c"});
    EXPECT_THAT(verdict.fine, ElementsAre(tree.url("c"))) << "a stays";
    EXPECT_THAT(refusedIn(tree, verdict), ElementsAre("b", "b2"));
    EXPECT_THAT(refusedIn(tree, check(tree, groups, {"a", "c"})), ElementsAre("a", "c"));
}

TEST(DuplicateRemovalCheck, AHardLinkIsNoCopyToRelyOn)
{
    const TemporaryTree tree{file("a", "same"), hardLink("b", "a"), file("c", "same")};
    const auto groups = duplicatesIn(tree);
    ASSERT_EQ(groups.size(), 1U);
    EXPECT_THAT(refusedIn(tree, check(tree, groups, {"b", "c"})), ElementsAre("b"));
    EXPECT_THAT(check(tree, groups, {"b"}).fine, ElementsAre(tree.url("b"))) << "c is a copy of its own";
    EXPECT_THAT(check(tree, groups, {"a", "b"}).fine, ElementsAre(tree.url("a"), tree.url("b")));
}

TEST(DuplicateRemovalCheck, ACopyInATrashIsNoCopyToRelyOn)
{
    const TemporaryTree tree{file(".Trash-1000/files/a", "same"),
                             file("b", "same"),
                             file("c", "same"),
                             file(".Trash/0/files/x", "pair"),
                             file(".Trash/0/files/y", "pair"),
                             folder(".Trash-1000/info"),
                             folder(".Trash/0/info")};
    const auto groups = duplicatesIn(tree);
    const auto one = check(tree, groups, {"b", ".Trash/0/files/y"});
    EXPECT_THAT(one.fine, ElementsAre(tree.url("b"), tree.url(".Trash/0/files/y")));
    EXPECT_EQ(one.groupsLosingAllCopies, 0U);

    const auto all = check(tree, groups, {"b", "c"});
    EXPECT_EQ(all.groupsLosingAllCopies, 1U);
    EXPECT_THAT(all.fine, ElementsAre(tree.url("b"), tree.url("c")));

    ASSERT_EQ(::truncate(tree.url("c").path().c_str(), 1), 0);
    EXPECT_THAT(refusedIn(tree, check(tree, groups, {"b"})), ElementsAre("b"));
}

TEST(DuplicateRemovalCheck, AFileThatIsReachedByTwoRoutesIsNotRemovedThroughOneOfThem)
{
    const TemporaryTree tree{file("real/a", "same"), folder("route"), file("c", "same")};
    if (::mount(tree.path("real").c_str(), tree.path("route").c_str(), nullptr, MS_BIND, nullptr) != 0) {
        GTEST_SKIP() << "bind mounts need root";
    }
    const auto groups = duplicatesIn(tree);
    const auto verdict = check(tree, groups, {"route/a"});
    const auto all = check(tree, groups, {"route/a", "real/a"});
    ::umount(tree.path("route").c_str());
    ASSERT_EQ(groups.size(), 1U);
    EXPECT_EQ(groups[0].entries.size(), 3U);
    EXPECT_EQ(groups[0].wastedBytes(), 8);
    EXPECT_EQ(groups[0].reclaimableBytes(), 4);
    EXPECT_THAT(refusedIn(tree, verdict), ElementsAre("route/a"));
    EXPECT_THAT(all.refused, IsEmpty()) << "c stays";
}

TEST(DuplicateRemovalCheck, TheImageOfAFileInAnOverlayIsNoCopy)
{
    TemporaryTree tree{folder("layers"), folder("merged"), file("c", "same").modifiedAt(1'000'000'000)};
    const auto layers = TemporaryMount::memory(tree.path("layers"));
    if (layers.isMounted()) {
        tree.add({file("layers/upper/a", "same"), folder("layers/lower")});
    }
    const auto overlay =
        TemporaryMount::overlay(tree.path("layers/upper"), tree.path("layers/lower"), tree.path("merged"));
    if (!overlay.isMounted()) {
        GTEST_SKIP() << overlay.refusal();
    }
    const auto groups = duplicatesIn(tree);
    ASSERT_EQ(groups.size(), 1U);
    ASSERT_EQ(groups[0].entries.size(), 3U);
    EXPECT_THAT(refusedIn(tree, check(tree, groups, {"c", "layers/upper/a"})), ElementsAre("layers/upper/a"));
    EXPECT_THAT(check(tree, groups, {"layers/upper/a"}).fine, ElementsAre(tree.url("layers/upper/a")))
        << "c stays";
}

} // namespace

} // namespace tallyroom
