#pragma once

#include "Tools/Frame/ListToolViewModel.h"

#include <array>

namespace tallyroom {

class ListToolScreen;

/// The largest files anywhere below a folder. Main thread.
class LargeFilesViewModel : public ListToolViewModel {
    Q_OBJECT
    Q_PROPERTY(std::int64_t limit READ limit WRITE setLimit NOTIFY limitChanged)

public:
    /// The limits that the screen offers.
    static constexpr std::array<std::int64_t, 4> offeredLimits{50, 100, 250, 500};

    explicit LargeFilesViewModel(DeletionRunner& deletions);

    /// How many files are kept; survives a restart.
    [[nodiscard]] std::int64_t limit() const { return m_limit; }

    /// Stores a new limit and scans again with it.
    void setLimit(std::int64_t limit);

    [[nodiscard]] ScanLine scanLine() const override;

Q_SIGNALS:
    void limitChanged();

protected:
    [[nodiscard]] FileScanner::ScanStream startStream() override;

private:
    std::int64_t m_limit;
};

/// Their screen: the common frame and the choice of how many.
/// `tool` must outlive it. Main thread.
[[nodiscard]] ListToolScreen* makeLargeFilesScreen(LargeFilesViewModel& tool);

} // namespace tallyroom
