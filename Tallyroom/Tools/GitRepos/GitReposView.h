#pragma once

#include "Tools/Frame/ListToolScreen.h"
#include "Tools/GitRepos/GitReposViewModel.h"

namespace tallyroom {

/// The screen of the Git histories, each by the name of its repository. Main thread.
class GitReposView : public ListToolScreen {
    Q_OBJECT

public:
    /// `tool` must outlive the screen.
    explicit GitReposView(GitReposViewModel& tool, QWidget* parent = nullptr);
};

} // namespace tallyroom
