#pragma once

#include "Tools/Frame/TopListViewModel.h"

#include <array>

namespace tallyroom {

class ListToolScreen;

/// The largest files anywhere below a folder, of all kinds and ages or of some. Main thread.
class LargeFilesViewModel : public TopListViewModel {
    Q_OBJECT

public:
    /// The limits that the screen offers.
    static constexpr std::array<std::int64_t, 4> offeredLimits{50, 100, 250, 500};

    explicit LargeFilesViewModel(DeletionRunner& deletions);

    /// Nothing is safe: these are people's own files.
    [[nodiscard]] Recovery recovery() const override;

protected:
    [[nodiscard]] FileScanner::ScanStream startSearch(const Narrowing& narrowing) override;
};

/// Their screen.
/// `tool` must outlive it. Main thread.
[[nodiscard]] ListToolScreen* makeLargeFilesScreen(LargeFilesViewModel& tool);

} // namespace tallyroom
