#include "Git/RepositoryState.h"

#include "Support/Cases.h"
#include "Support/GitTree.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <ranges>
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
    for (const auto& row : cases("states of repositories")) {
        std::optional<RepositoryState> state;
        if (row[1] != "none") {
            state = {row[1] == "remote", std::stoi(row.at(2)), std::stoi(row.at(3)), {}};
            for (const std::string& name : row | std::views::drop(4)) {
                state->worktrees.push_back(tree.url(name));
            }
        }
        EXPECT_EQ(RepositoryState::read(tree.url(row[0] + "/.git")), state) << row[0];
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
