#include "Git/RepositoryState.h"

#include "Support/GitTree.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <unistd.h>

namespace tallyroom {

void PrintTo(const RepositoryState& state, std::ostream* out)
{
    *out << "remote " << state.hasRemote << ", unpushed " << state.unpushed.value_or(-1) << ", stashes "
         << state.stashes << ", worktrees " << state.worktrees.size();
}

namespace {

TEST(RepositoryState, TellsWhatNoRemoteHas)
{
    const GitTree tree;
    ASSERT_TRUE(tree.isMade());
    const std::map<std::string, std::optional<RepositoryState>> truth{
        {"pushed", RepositoryState{true, 0, 0, {}}},
        {"ahead", RepositoryState{true, 2, 0, {}}},
        {"other-branch", RepositoryState{true, 1, 0, {}}},
        {"detached", RepositoryState{true, 1, 0, {}}},
        {"lonely", RepositoryState{false, 1, 0, {}}},
        {"empty", RepositoryState{false, 0, 0, {}}},
        {"never-pushed", RepositoryState{true, 1, 0, {}}},
        {"stashes", RepositoryState{true, 0, 2, {}}},
        {"worktrees", RepositoryState{true, 0, 0, {tree.url("second-tree")}}},
        {"broken", std::nullopt},
        {"hooked", RepositoryState{true, 0, 0, {}}},
        {"no-repository", std::nullopt}};
    for (const auto& [name, state] : truth) {
        EXPECT_EQ(RepositoryState::read(tree.url(name + "/.git")), state) << name;
    }
    EXPECT_FALSE(tree.exists("ran")) << "something of the repository's own was run";
}

TEST(RepositoryState, ARepositoryOfSomebodyElseIsNotTrusted)
{
    if (::geteuid() != 0) {
        GTEST_SKIP() << "needs root to give a file away";
    }
    const GitTree tree;
    ASSERT_TRUE(tree.isMade());
    EXPECT_NE(RepositoryState::read(tree.url("foreign/.git")), std::nullopt);
    for (const auto& item : std::filesystem::recursive_directory_iterator{tree.path("foreign")}) {
        ASSERT_EQ(::lchown(item.path().c_str(), 12'345, 12'345), 0);
    }
    ASSERT_EQ(::lchown(tree.path("foreign").c_str(), 12'345, 12'345), 0);
    EXPECT_EQ(RepositoryState::read(tree.url("foreign/.git")), std::nullopt);
}

} // namespace

} // namespace tallyroom
