#pragma once

#include "Tools/Dashboard/RecoveryGain.h"
#include "Tools/Frame/ScanToolViewModel.h"
#include "Volumes/VolumeUsage.h"

#include <QObject>
#include <QString>
#include <QTimer>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tallyroom {

/// A tool that takes part in the search for room; it must outlive the search.
struct RecoveryTool {
    QString id;   ///< as the window knows it
    QString name; ///< what the sidebar shows
    std::string icon;
    ScanToolViewModel* tool = nullptr;
};

/// What one tool has found so far.
struct RecoveryRow {
    /// `elsewhere`: the tool has been led to another folder since.
    enum class Phase { waiting, running, complete, stopped, unread, elsewhere };

    Phase phase = Phase::waiting;
    Recovery recovery;
    QString words;                    ///< what stands below the name
    std::optional<Reclaim> reclaim{}; ///< what comes back with what may go; nothing while it is not known

    /// Whether there is something that may go now.
    [[nodiscard]] bool proposes() const
    {
        return phase == Phase::complete && recovery.isKnown && !recovery.safe.empty();
    }

    friend bool operator==(const RecoveryRow&, const RecoveryRow&) = default;
};

/// The search for room: opens one folder in several tools, two at a time, and gathers what may go and what is
/// worth a look. What it proposes is removed by the tools themselves. Main thread.
class RecoveryViewModel : public QObject {
    Q_OBJECT

public:
    static constexpr std::size_t mostAtOnce = 2;

    using VolumeOf = std::function<std::optional<VolumeUsage>(const FileUrl& folder)>;

    /// `volumeOf` tells the volume of a folder, as it is known.
    explicit RecoveryViewModel(VolumeOf volumeOf);

    /// The tools, in the order in which they are asked. Once, before the first search.
    void setTools(std::vector<RecoveryTool> tools);

    [[nodiscard]] const std::vector<RecoveryTool>& tools() const { return m_tools; }

    /// One a tool; empty before the first search.
    [[nodiscard]] const std::vector<RecoveryRow>& rows() const { return m_rows; }

    /// The folder of the last search.
    [[nodiscard]] const std::optional<FileUrl>& folder() const { return m_folder; }

    /// Whether a tool still searches or waits for its turn.
    [[nodiscard]] bool isSearching() const;

    /// Why the last folder could not be taken; empty in general.
    [[nodiscard]] const QString& error() const { return m_error; }

    /// Takes the outcome of a folder chooser: searches its first folder, or tells why there is none.
    void handleImport(const FolderChoice& choice);

    /// Takes a folder that may be gone, once another thread has looked at it.
    void examine(const FileUrl& folder);

    /// Searches `folder`, instead of the search under way. By value: the recent folders change under way.
    void search(FileUrl folder);

    /// Searches again where other folders were left out than now, but for the tools that have been led to
    /// another folder since.
    void followScanRules();

    /// Stops the tools that this search has started, and starts no other.
    void stop();

    /// What the tool at `place` proposes at this moment; the rows lag behind it.
    [[nodiscard]] RecoveryRow proposalOf(std::size_t place) const { return rowOf(place); }

    /// Removes `entries`, which the tool at `place` has found, by the plan that it made for them.
    void remove(std::size_t place, const std::vector<Entry>& entries, bool permanently,
                ScanToolViewModel::RemovalPlan plan);

    /// The tool that has removed last from here; null before.
    [[nodiscard]] ScanToolViewModel* remover() const { return m_remover; }

    /// Stops the deletion or undo that was asked for here. Whether one ran.
    bool stopRemoval();

    /// Puts back what the last removal from here moved to the trash, if it still can.
    void undoRemoval();

    /// The folder's volume as it was before the first removal since the search began.
    [[nodiscard]] const std::optional<VolumeUsage>& volumeBefore() const { return m_before; }

    /// Keeps the state of the folder's volume, before something there is removed.
    void keepBefore();

Q_SIGNALS:
    /// The rows, or whether a search runs.
    void changed();
    void searchBegan();
    /// The tool that removed last has news of it.
    void removalChanged();

private:
    [[nodiscard]] bool isOurs(std::size_t place) const;
    void begin();
    void startNext();
    void follow(std::size_t place);
    void show();
    [[nodiscard]] RecoveryRow rowOf(std::size_t place) const;

    VolumeOf m_volumeOf;
    std::vector<RecoveryTool> m_tools;
    std::vector<RecoveryRow> m_rows;
    std::vector<std::unique_ptr<RecoveryGain>> m_gains; // one a tool
    std::size_t m_next = 0;                             // the tool whose turn it is
    bool m_isStopped = false;
    bool m_isStarting = false;
    std::optional<FileUrl> m_folder;
    bool m_isRepeating = false;                   // the search before, by other rules
    std::shared_ptr<const ScanScope> m_scanScope; // of the last search
    QString m_error;
    QTimer m_pace; // what a running scan finds is told a few times a second
    ScanToolViewModel* m_remover = nullptr;
    std::optional<VolumeUsage> m_before;
};

} // namespace tallyroom
