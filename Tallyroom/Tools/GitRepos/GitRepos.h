#pragma once

#include "Text/RepositoryText.h"
#include "Tools/Frame/EntryFacts.h"

namespace tallyroom {

class ListToolScreen;

/// The Git histories (".git" folders) below a folder of projects, and what would be lost with each. Main
/// thread.
class GitReposViewModel : public ListToolViewModel {
    Q_OBJECT

public:
    /// Nothing for a repository that cannot be read.
    using State = RepositoryText::State;

    explicit GitReposViewModel(DeletionRunner& deletions);

    /// The state of the repository whose history is at `url`; null while it is not known. It comes after the
    /// entry.
    [[nodiscard]] const State* repositoryState(const FileUrl& url) const { return m_states.find(url); }

    /// Nothing is safe: whether the remotes still have what they had, only they know.
    [[nodiscard]] Recovery recovery() const override;

protected:
    [[nodiscard]] FileScanner::ScanStream startStream() override;

private:
    EntryFacts<State> m_states;
};

/// The screen of the Git histories, each by the name of its repository.
/// `tool` must outlive it. Main thread.
[[nodiscard]] ListToolScreen* makeGitReposScreen(GitReposViewModel& tool);

} // namespace tallyroom
