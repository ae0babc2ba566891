#pragma once

#include "Tools/Frame/ListToolViewModel.h"

namespace tallyroom {

class ListToolScreen;

/// The Git histories (".git" folders) below a folder of projects. Main thread.
class GitReposViewModel : public ListToolViewModel {
    Q_OBJECT

public:
    explicit GitReposViewModel(DeletionRunner& deletions) : ListToolViewModel(deletions) {}

protected:
    [[nodiscard]] FileScanner::ScanStream startStream() override
    {
        return FileScanner::findDirectoriesStream({".git"}, *rootURL());
    }
};

/// The screen of the Git histories, each by the name of its repository.
/// `tool` must outlive it. Main thread.
[[nodiscard]] ListToolScreen* makeGitReposScreen(GitReposViewModel& tool);

} // namespace tallyroom
