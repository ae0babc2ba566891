#pragma once

#include "Model/AgeThreshold.h"
#include "Model/FileKind.h"
#include "Tools/Frame/ListToolViewModel.h"
#include "Tools/Frame/ToolOption.h"

#include <array>

namespace tallyroom {

class ListToolScreen;

/// The largest files anywhere below a folder, of all kinds and ages or of some. A list that holds no more
/// than the limit is searched again when another kind or age is wanted: it need not hold their largest.
/// Main thread.
class LargeFilesViewModel : public ListToolViewModel {
    Q_OBJECT
    Q_PROPERTY(std::int64_t limit READ limit WRITE setLimit NOTIFY remarksChanged)
    Q_PROPERTY(std::optional<tallyroom::AgeThreshold> age READ age WRITE setAge NOTIFY remarksChanged)

public:
    /// The limits that the screen offers.
    static constexpr std::array<std::int64_t, 4> offeredLimits{50, 100, 250, 500};

    explicit LargeFilesViewModel(DeletionRunner& deletions);

    /// How many files are kept; survives a restart.
    [[nodiscard]] std::int64_t limit() const { return m_limit.value(); }

    /// Stores a new limit and scans again with it.
    void setLimit(std::int64_t limit) { m_limit.set(limit); }

    /// The age that the files shown are beyond; none: all are shown.
    [[nodiscard]] const std::optional<AgeThreshold>& age() const { return m_age.value(); }

    void setAge(const std::optional<AgeThreshold>& age) { m_age.set(age); }

    /// Opens `folder`, which may be gone, for its largest files of one kind.
    void openLargestOf(const FileUrl& folder, FileKind kind);

    /// Those of the kinds that the scan left out are as they were before it.
    [[nodiscard]] CategoryCounts categoryCounts() const override;

    [[nodiscard]] std::function<bool(const Entry&)> filter() const override;
    [[nodiscard]] bool isFiltering() const override;

    [[nodiscard]] bool hasNarrowedScan() const override { return m_scanned != Narrowing{}; }

    void clearFilter() override;
    [[nodiscard]] ScanLine scanLine() const override;

    /// Nothing is safe: these are people's own files.
    [[nodiscard]] Recovery recovery() const override;

protected:
    [[nodiscard]] FileScanner::ScanStream startStream() override;
    void rootChosen(PropertyUpdate& update) override;
    void categoryChosen() override;

private:
    /// Which files a list is about.
    struct Narrowing {
        std::optional<std::string> kind{};
        std::optional<AgeThreshold> age{};

        [[nodiscard]] bool contains(const Narrowing& other) const;
        friend bool operator==(const Narrowing&, const Narrowing&) = default;
    };

    [[nodiscard]] Narrowing wanted() const { return {category(), age()}; }

    void scanWhereNeeded();

    ToolOption<std::optional<AgeThreshold>> m_age;
    ToolOption<std::int64_t> m_limit;
    Narrowing m_scanned;         // what the list was searched for
    Narrowing m_toScan;          // what the next one is to be searched for
    bool m_isCut = false;        // the list reached the limit: there may be more
    CategoryCounts m_kindCounts; // before the scan left kinds out
};

/// Their screen.
/// `tool` must outlive it. Main thread.
[[nodiscard]] ListToolScreen* makeLargeFilesScreen(LargeFilesViewModel& tool);

} // namespace tallyroom
