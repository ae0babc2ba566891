#pragma once

#include "Recovery/SafeRemoval.h"
#include "Tools/Frame/EntryFacts.h"
#include "Tools/Frame/ListToolViewModel.h"

namespace tallyroom {

class ListToolScreen;

/// The `node_modules` folders below a folder of projects, the old ones told apart. Main thread.
class NodeModulesViewModel : public ListToolViewModel {
    Q_OBJECT
    Q_PROPERTY(tallyroom::AgeThreshold threshold READ threshold WRITE setThreshold NOTIFY thresholdChanged)

public:
    explicit NodeModulesViewModel(DeletionRunner& deletions);

    /// The age beyond which a folder is old; survives a restart.
    [[nodiscard]] AgeThreshold threshold() const { return m_threshold; }

    /// Stores the threshold. Never scans: it only tells which entries count as old.
    void setThreshold(AgeThreshold threshold);

    /// The old ones among all `entries`, those included that the filter hides, as of now. Those of installed
    /// programs are left out.
    [[nodiscard]] std::vector<Entry> oldEntries() const;

    [[nodiscard]] std::int64_t oldTotalSize() const { return tallyroom::totalSize(oldEntries()); }

    [[nodiscard]] ScanLine scanLine() const override;

    /// When the project around `nodeModules` last changed, by the newest of its own files; nothing where none
    /// was found, null while it is not known. It comes after the entry.
    [[nodiscard]] const std::optional<Timestamp>* projectDate(const Entry& nodeModules) const
    {
        const SafeRemoval::NodeProject* const project = m_projects.find(nodeModules.url);
        return project != nullptr ? &project->changedAt : nullptr;
    }

    [[nodiscard]] Recovery recovery() const override;

Q_SIGNALS:
    void thresholdChanged();

protected:
    [[nodiscard]] FileScanner::ScanStream startStream() override;

private:
    AgeThreshold m_threshold;
    EntryFacts<SafeRemoval::NodeProject> m_projects;
};

/// The progress line of a search: the number of folders found, then of those measured.
struct NodeModulesProgress {
    bool isDiscovering = false;
    std::int64_t found = 0;
    std::int64_t sized = 0;
    double fraction = 0; ///< 0 to 1

    [[nodiscard]] QString text() const;
};

/// Their screen: the common frame, the age threshold, and the way to delete all old ones in one go.
/// `tool` must outlive it. Main thread.
[[nodiscard]] ListToolScreen* makeNodeModulesScreen(NodeModulesViewModel& tool);

} // namespace tallyroom
