#pragma once

#include "Model/FileUrl.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace tallyroom {

/// What would be lost with a Git history, as far as the disk knows: whether the remotes still have it, only
/// they know.
struct RepositoryState {
    /// How many commits are counted at most.
    static constexpr std::int64_t mostCommits = 10'000;

    bool hasRemote = false;
    /// The commits of local branches, and of a detached HEAD, that no remote-tracking branch has; nothing
    /// when there are more than `mostCommits`.
    std::optional<std::int64_t> unpushed = 0;
    std::int64_t stashes = 0;
    /// The further work trees that use this history, in order.
    std::vector<FileUrl> worktrees;

    /// Whether deleting the history loses something that is nowhere else.
    [[nodiscard]] bool wouldLoseWork() const
    {
        return !hasRemote || unpushed != 0 || stashes > 0 || !worktrees.empty();
    }

    friend bool operator==(const RepositoryState&, const RepositoryState&) = default;

    /// Reads the state of the repository whose ".git" folder is at `url`; nothing when it cannot be read or
    /// is not to be trusted ("safe.directory"). Only reads, runs nothing of the repository's own. Blocks for
    /// some milliseconds. Any thread.
    [[nodiscard]] static std::optional<RepositoryState> read(const FileUrl& url);
};

} // namespace tallyroom
