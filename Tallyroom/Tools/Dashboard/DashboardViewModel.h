#pragma once

#include "Bridge/Observable.h"
#include "Bridge/StreamPump.h"
#include "Kinds/FolderAnalyzer.h"
#include "Tools/Dashboard/RecoveryViewModel.h"
#include "Tools/Dashboard/TrashViewModel.h"
#include "Tools/Frame/FolderTool.h"
#include "Tools/Frame/ScanEnd.h"
#include "Volumes/VolumeInfo.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace tallyroom {

/// The phase of the breakdown. Two states are equal when the phase is, and for an error its message too.
struct AnalysisState {
    enum class Phase { none, scanning, loaded, error };

    Phase phase = Phase::none;
    QString message; ///< for people; empty but in the phase `error`

    [[nodiscard]] static AnalysisState error(QString message) { return {Phase::error, std::move(message)}; }

    friend bool operator==(const AnalysisState&, const AnalysisState&) = default;
};

/// Where the dashboard has its figures from; the real ones unless a test brings its own.
struct DashboardSources {
    std::function<ProgressStream<VolumeReport>()> volumes = [] { return VolumeInfo::stream(); };
    std::function<ProgressStream<FolderAnalyzer::Progress>(const FileUrl& folder)> analysis =
        FolderAnalyzer::stream;
    TrashViewModel::Source trash = TrashContents::stream;
};

/// The first tool: how full the volumes are, and, when asked, which kinds of files fill a folder. Nothing
/// here waits for a disk. Main thread.
class DashboardViewModel : public FolderTool {
    Q_OBJECT
    Q_PROPERTY(std::vector<tallyroom::VolumeUsage> volumes READ volumes NOTIFY volumesChanged)
    Q_PROPERTY(std::optional<tallyroom::VolumeUsage> mainVolume READ mainVolume NOTIFY mainVolumeChanged)
    Q_PROPERTY(std::int64_t unansweredVolumes READ unansweredVolumes NOTIFY unansweredVolumesChanged)
    Q_PROPERTY(bool isRefreshing READ isRefreshing NOTIFY isRefreshingChanged)
    Q_PROPERTY(tallyroom::AnalysisState analysisState READ analysisState NOTIFY stateChanged)
    Q_PROPERTY(std::optional<tallyroom::FolderSummary> summary READ summary NOTIFY summaryChanged)
    Q_PROPERTY(std::int64_t analysisScanned READ analysisScanned NOTIFY analysisScannedChanged)
    Q_PROPERTY(QString analyzedFolder READ analyzedFolder NOTIFY analyzedFolderChanged)

public:
    /// Starts reading the volumes, and reads them anew whenever `deletions`, which must outlive it, has
    /// changed the disk.
    explicit DashboardViewModel(DeletionRunner& deletions, DashboardSources sources = {});

    /// As `VolumeInfo::current` orders them; fills while the volumes answer.
    [[nodiscard]] const std::vector<VolumeUsage>& volumes() const { return m_volumes; }

    /// The volume that holds the home folder.
    [[nodiscard]] const std::optional<VolumeUsage>& mainVolume() const { return m_mainVolume; }

    /// How many volumes have not answered, so far or, once `isRefreshing` is over, at all.
    [[nodiscard]] std::int64_t unansweredVolumes() const { return m_unansweredVolumes; }

    /// Whether the volumes are being read.
    [[nodiscard]] bool isRefreshing() const { return m_isRefreshing; }

    /// What lies in the trash of these volumes.
    [[nodiscard]] TrashViewModel& trash() { return m_trash; }

    /// The search for room.
    [[nodiscard]] RecoveryViewModel& recovery() { return m_recovery; }

    /// The volume that holds `folder`, by its name, as far as the volumes are known.
    [[nodiscard]] std::optional<VolumeUsage> volumeOf(const FileUrl& folder) const;

    /// Asks for the largest files of a kind in the analysed folder.
    void openLargestOf(FileKind kind) { Q_EMIT largestRequested(*m_analyzedURL, kind); }

    /// Asks for the tool of that id to be shown.
    void view(const QString& toolID) { Q_EMIT toolRequested(toolID); }

    [[nodiscard]] const AnalysisState& analysisState() const { return m_analysisState; }

    /// How the last breakdown ended; changes with `analysisState` only.
    [[nodiscard]] const ScanEnd& analysisEnd() const { return m_analysisEnd; }

    /// The last breakdown; nothing until a walk has come to its end.
    [[nodiscard]] const std::optional<FolderSummary>& summary() const { return m_summary; }

    /// Whether something was removed there, or put back, since the breakdown was begun; changes with
    /// `summary`.
    [[nodiscard]] bool isOutdated() const { return m_isOutdated; }

    /// The account of the volume whose top was analysed; changes with `analysisState` only.
    [[nodiscard]] const std::optional<VolumeAccount>& volumeAccount() const { return m_volumeAccount; }

    /// The files that the running breakdown has counted.
    [[nodiscard]] std::int64_t analysisScanned() const { return m_analysisScanned; }

    /// The name of the analysed folder as it is drawn; empty before the first one.
    [[nodiscard]] const QString& analyzedFolder() const { return m_analyzedFolder; }

    /// Its location.
    [[nodiscard]] const std::optional<FileUrl>& analyzedURL() const { return m_analyzedURL; }

    /// The part of the breakdown that a kind takes, 0 to 1; 0 without a summary and for one of 0 bytes.
    [[nodiscard]] double fraction(const CategorySize& category) const;

    /// Reads the volumes anew, and leaves the breakdown alone. The old figures stay until newer ones come;
    /// a reading under way is replaced.
    void refresh();

    /// Analyses the first chosen folder. A choice of nothing changes nothing; a choice that failed is an
    /// error, and leaves a running breakdown and the last one alone.
    void handleImport(const FolderChoice& choice) override;

    /// Breaks `folder` down by kind, instead of the folder under way. By value: the recent folders
    /// change under way.
    void analyze(FileUrl folder);

    /// Stops a running breakdown, and forgets its counts.
    void cancelAnalysis();

    /// Begins a stopped or outdated analysis again.
    void resumeAnalysis();

    /// The breakdown and the search for room.
    void followScanRules() override;

    [[nodiscard]] bool isScanning() const override
    {
        return m_analysisState.phase == AnalysisState::Phase::scanning;
    }

    [[nodiscard]] QString scanReport() const override;

Q_SIGNALS:
    void volumesChanged();
    void mainVolumeChanged();
    void unansweredVolumesChanged();
    void isRefreshingChanged();
    void summaryChanged();
    void analysisScannedChanged();
    void analyzedFolderChanged();
    void toolRequested(const QString& toolID);

private:
    void receive(VolumeReport report);
    void endRefresh();
    void show(PropertyUpdate& update, const VolumeReport& report);
    void lookIntoTrashes();
    [[nodiscard]] VolumeReport completed(VolumeReport report) const;
    void receive(const FolderAnalyzer::Progress& record);
    void endAnalysis();
    void follow(const DiskChange& change);

    DashboardSources m_sources;
    TrashViewModel m_trash;
    RecoveryViewModel m_recovery;
    std::vector<VolumeUsage> m_volumes;
    std::optional<VolumeUsage> m_mainVolume;
    std::int64_t m_unansweredVolumes = 0;
    bool m_isRefreshing = false;
    AnalysisState m_analysisState;
    bool m_isOutdated = false;
    ScanEnd m_analysisEnd;
    std::optional<SystemError> m_unread; // of the running breakdown, as what follows
    SharedUnreadPlaces m_unreadPlaces;
    std::optional<VolumeAccount> m_volumeAccount;
    std::optional<FolderSummary> m_summary;
    std::int64_t m_analysisScanned = 0;
    QString m_analyzedFolder;
    std::optional<FileUrl> m_analyzedURL;
    std::shared_ptr<const ScanScope> m_scanScope; // of the last breakdown
    std::optional<SecurityScope> m_scopedRoot;
    VolumeReport m_report; // the newest of the refresh under way
    std::unique_ptr<StreamPump<VolumeReport>> m_volumesPump;
    std::unique_ptr<StreamPump<FolderAnalyzer::Progress>> m_scanTask;
};

} // namespace tallyroom
