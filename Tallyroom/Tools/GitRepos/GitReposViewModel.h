#pragma once

#include "Tools/Frame/ListToolViewModel.h"

namespace tallyroom {

/// The Git histories (".git" folders) below a folder of projects. Main thread.
class GitReposViewModel : public ListToolViewModel {
    Q_OBJECT

public:
    explicit GitReposViewModel(DeletionRunner& deletions);

protected:
    [[nodiscard]] FileScanner::ScanStream startStream() override;
};

} // namespace tallyroom
