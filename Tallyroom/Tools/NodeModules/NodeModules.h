#pragma once

#include "Recovery/SafeRemoval.h"
#include "Tools/Frame/EntryFacts.h"

namespace tallyroom {

class ListToolScreen;

/// The `node_modules` folders below a folder of projects, the old ones told apart. Main thread.
class NodeModulesViewModel : public ListToolViewModel {
    Q_OBJECT
    Q_PROPERTY(tallyroom::AgeThreshold threshold READ threshold WRITE setThreshold NOTIFY remarksChanged)

public:
    explicit NodeModulesViewModel(DeletionRunner& deletions);

    /// The age beyond which a folder is old; survives a restart.
    [[nodiscard]] AgeThreshold threshold() const { return m_threshold.value(); }

    /// Stores the threshold. Never scans: it only tells which entries count as old.
    void setThreshold(AgeThreshold threshold) { m_threshold.set(threshold); }

    /// The old ones among all `entries`, those included that the filter hides, as of now.
    [[nodiscard]] std::vector<Entry> oldEntries() const;

    [[nodiscard]] std::int64_t oldTotalSize() const { return tallyroom::totalSize(oldEntries()); }

    /// What is known of the project around an entry; it comes after the entry.
    [[nodiscard]] SafeRemoval::NodeProject project(const Entry& entry) const { return m_projects.of(entry); }

    [[nodiscard]] ScanLine scanLine() const override;
    [[nodiscard]] Recovery recovery() const override;

protected:
    [[nodiscard]] FileScanner::ScanStream startStream() override;

private:
    ToolOption<AgeThreshold> m_threshold;
    EntryFacts<SafeRemoval::NodeProject> m_projects;
};

/// Their screen, with the way to delete all old ones in one go.
/// `tool` must outlive it. Main thread.
[[nodiscard]] ListToolScreen* makeNodeModulesScreen(NodeModulesViewModel& tool);

} // namespace tallyroom
