#include "Git/RepositoryState.h"

#include "Git/GitLibrary.h"

#include <algorithm>
#include <git2.h>
#include <iterator>
#include <span>
#include <string_view>

namespace tallyroom {

namespace {

using HistoryWalk = std::unique_ptr<git_revwalk, GitRelease<git_revwalk_free>>;

using WorkTree = std::unique_ptr<git_worktree, GitRelease<git_worktree_free>>;
using Configuration = std::unique_ptr<git_config, GitRelease<git_config_free>>;

class NameList {
public:
    NameList() = default;
    NameList(const NameList&) = delete;
    NameList& operator=(const NameList&) = delete;

    ~NameList() { ::git_strarray_dispose(&m_names); }

    [[nodiscard]] git_strarray* out() { return &m_names; }

    [[nodiscard]] std::span<char* const> names() const { return {m_names.strings, m_names.count}; }

private:
    git_strarray m_names = {};
};

OpenRepository openRepository(const FileUrl& url)
{
    startGitLibrary();
    git_repository* repository = nullptr;
    ::git_repository_open_ext(&repository, url.path().c_str(), GIT_REPOSITORY_OPEN_NO_SEARCH, nullptr);
    return OpenRepository{repository};
}

bool isAbsent(int code)
{
    return code == GIT_ENOTFOUND || code == GIT_EUNBORNBRANCH;
}

/// Whether the configuration names a remote. `git_remote_list` searches it with an expression, and
/// version 1.5 of the library leaks 20 kB for each line that does not match.
std::optional<bool> namesRemote(git_repository* repository)
{
    git_config* opened = nullptr;
    if (::git_repository_config_snapshot(&opened, repository) != 0) {
        return std::nullopt;
    }
    const Configuration configuration{opened};
    const auto look = [](const git_config_entry* entry, void* found) {
        const std::string_view name = entry->name;
        if (name.starts_with("remote.") && (name.ends_with(".url") || name.ends_with(".pushurl"))) {
            *static_cast<bool*>(found) = true;
        }
        return 0;
    };
    bool found = false;
    return ::git_config_foreach(opened, look, &found) == 0 ? std::optional{found} : std::nullopt;
}

/// Where a work tree lies; its name where that cannot be read.
FileUrl placeOf(git_repository* repository, const char* name)
{
    git_worktree* opened = nullptr;
    ::git_worktree_lookup(&opened, repository, name);
    const WorkTree tree{opened};
    return FileUrl{opened == nullptr ? name : ::git_worktree_path(opened)};
}

/// Leads `walk` through what only this repository has. False when a part cannot be read.
bool leadThroughOwn(git_repository* repository, git_revwalk* walk)
{
    if (::git_revwalk_push_glob(walk, "refs/heads/*") != 0 ||
        ::git_revwalk_hide_glob(walk, "refs/remotes/*") != 0) {
        return false;
    }
    if (::git_repository_head_detached(repository) != 1) {
        return true; // HEAD is one of the branches, or none yet
    }
    const int pushed = ::git_revwalk_push_head(walk);
    return pushed == 0 || isAbsent(pushed);
}

/// False when the history cannot be walked.
bool countUnpushed(git_repository* repository, RepositoryState& state)
{
    git_revwalk* made = nullptr;
    if (::git_revwalk_new(&made, repository) != 0) {
        return false;
    }
    const HistoryWalk walk{made};
    if (!leadThroughOwn(repository, made)) {
        return false;
    }
    std::int64_t commits = 0;
    git_oid commit = {};
    int code = 0;
    while ((code = ::git_revwalk_next(&commit, made)) == 0) {
        if (++commits > RepositoryState::mostCommits) {
            state.unpushed.reset();
            return true;
        }
    }
    state.unpushed = commits;
    return code == GIT_ITEROVER;
}

int countStash(std::size_t /*index*/, const char* /*message*/, const git_oid* /*commit*/, void* count)
{
    ++*static_cast<std::int64_t*>(count);
    return 0;
}

} // namespace

std::optional<RepositoryState> RepositoryState::read(const FileUrl& url)
{
    const OpenRepository repository = openRepository(url);
    RepositoryState state;
    NameList worktrees;
    if (repository == nullptr || ::git_worktree_list(worktrees.out(), repository.get()) != 0 ||
        !countUnpushed(repository.get(), state)) {
        return std::nullopt;
    }
    const int stashes = ::git_stash_foreach(repository.get(), countStash, &state.stashes);
    if (stashes != 0 && !isAbsent(stashes)) {
        return std::nullopt;
    }
    const auto remote = namesRemote(repository.get());
    if (!remote) {
        return std::nullopt;
    }
    state.hasRemote = *remote;
    std::ranges::transform(worktrees.names(), std::back_inserter(state.worktrees),
                           [&](const char* name) { return placeOf(repository.get(), name); });
    std::ranges::sort(state.worktrees);
    return state;
}

} // namespace tallyroom
