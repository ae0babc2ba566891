#include "Tools/Dashboard/DashboardViewModel.h"

#include "FileSystem/HomeFolder.h"
#include "Settings/RecentFolders.h"
#include "Text/FileUrlText.h"
#include "Text/NumberText.h"
#include "Text/SizeText.h"

#include <algorithm>
#include <iterator>

namespace tallyroom {

DashboardViewModel::DashboardViewModel(DeletionRunner& deletions, DashboardSources sources)
    : m_sources(std::move(sources)), m_trash(deletions, m_sources.trash),
      m_recovery([this](const FileUrl& folder) { return volumeOf(folder); })
{
    connect(&deletions, &DeletionRunner::diskChanged, this, &DashboardViewModel::follow);
    refresh();
}

void DashboardViewModel::follow(const DiskChange& change)
{
    refresh();
    if (m_analyzedURL && change.folders.contains(*m_analyzedURL) && (m_summary || isScanning())) {
        PropertyUpdate update{this};
        update.assign(m_isOutdated, true, &DashboardViewModel::summaryChanged);
    }
}

double DashboardViewModel::fraction(const CategorySize& category) const
{
    if (!m_summary || m_summary->totalBytes < 1) {
        return 0;
    }
    return static_cast<double>(category.totalBytes) / static_cast<double>(m_summary->totalBytes);
}

QString DashboardViewModel::scanReport() const
{
    if (!m_summary) {
        return {};
    }
    return NumberText::files(m_summary->totalFiles) + QStringLiteral(" · ") + sizeText(m_summary->totalBytes);
}

void DashboardViewModel::refresh()
{
    m_volumesPump.reset();
    m_report = {};
    m_trash.beginRound();
    PropertyUpdate update{this};
    update.assign(m_isRefreshing, true, &DashboardViewModel::isRefreshingChanged);
    m_volumesPump = std::make_unique<StreamPump<VolumeReport>>(
        m_sources.volumes(), [this](VolumeReport report) { receive(std::move(report)); },
        [this] { endRefresh(); });
}

void DashboardViewModel::receive(VolumeReport report)
{
    m_report = std::move(report);
    lookIntoTrashes();
    PropertyUpdate update{this};
    show(update, completed(m_report));
}

void DashboardViewModel::endRefresh()
{
    m_volumesPump.reset();
    m_trash.endRound();
    PropertyUpdate update{this};
    show(update, m_report);
    update.assign(m_isRefreshing, false, &DashboardViewModel::isRefreshingChanged);
}

/// Into those of the volumes that have answered: a silent one would not tell this either.
void DashboardViewModel::lookIntoTrashes()
{
    for (const VolumeUsage& volume : m_report.volumes) {
        m_trash.look(volume.url);
    }
    if (m_report.mainVolume) {
        m_trash.look(m_report.mainVolume->url);
    }
}

/// A report with the volumes on screen that have yet to answer again: no card goes only to come back.
VolumeReport DashboardViewModel::completed(VolumeReport report) const
{
    if (report.unanswered == 0) {
        return report;
    }
    const auto hasAnswered = [answers = report.volumes](const VolumeUsage& volume) {
        return std::ranges::find(answers, volume.url, &VolumeUsage::url) != answers.end();
    };
    std::ranges::remove_copy_if(m_volumes, std::back_inserter(report.volumes), hasAnswered);
    std::ranges::stable_sort(report.volumes, &VolumeUsage::isListedBefore);
    if (!report.mainVolume) {
        report.mainVolume = m_mainVolume;
    }
    return report;
}

void DashboardViewModel::show(PropertyUpdate& update, const VolumeReport& report)
{
    update.assign(m_volumes, report.volumes, &DashboardViewModel::volumesChanged);
    update.assign(m_mainVolume, report.mainVolume, &DashboardViewModel::mainVolumeChanged);
    update.assign(m_unansweredVolumes, report.unanswered, &DashboardViewModel::unansweredVolumesChanged);
}

std::optional<VolumeUsage> DashboardViewModel::volumeOf(const FileUrl& folder) const
{
    if (m_mainVolume && folder == HomeFolder::current()) {
        return m_mainVolume; // though a link may lead there
    }
    std::optional<VolumeUsage> nearest;
    const auto consider = [&](const VolumeUsage& volume) {
        if (isWithin(folder.path(), volume.url.path()) &&
            (!nearest || nearest->url.path().size() < volume.url.path().size())) {
            nearest = volume;
        }
    };
    std::ranges::for_each(m_volumes, consider);
    if (m_mainVolume) {
        consider(*m_mainVolume);
    }
    return nearest;
}

void DashboardViewModel::handleImport(const FolderChoice& choice)
{
    if (choice) {
        if (!choice->empty()) {
            analyze(choice->front());
        }
        return;
    }
    PropertyUpdate update{this};
    update.assign(m_analysisState,
                  AnalysisState::error(QStringLiteral("Sélection impossible : ") + choice.error()),
                  &DashboardViewModel::stateChanged);
}

void DashboardViewModel::analyze(FileUrl folder)
{
    m_scopedRoot.reset();
    m_scopedRoot = SecurityScope::take(folder);
    RecentFolders::shared().add(folder);
    m_scanTask.reset();
    m_scanScope = ScanScope::current();
    m_analysisEnd = {};
    m_unread.reset();
    m_unreadPlaces.reset();
    m_volumeAccount.reset();
    PropertyUpdate update{this};
    update.assign(m_analyzedFolder, FileUrlText::display(folder.lastPathComponent()),
                  &DashboardViewModel::analyzedFolderChanged);
    update.assign(m_analysisState, AnalysisState{AnalysisState::Phase::scanning, {}},
                  &DashboardViewModel::stateChanged);
    update.assign(m_summary, std::nullopt, &DashboardViewModel::summaryChanged);
    update.assign(m_isOutdated, false, &DashboardViewModel::summaryChanged);
    update.assign(m_analysisScanned, 0, &DashboardViewModel::analysisScannedChanged);
    m_scanTask = std::make_unique<StreamPump<FolderAnalyzer::Progress>>(
        m_sources.analysis(folder), [this](const FolderAnalyzer::Progress& record) { receive(record); },
        [this] { endAnalysis(); });
    m_analyzedURL = std::move(folder);
}

void DashboardViewModel::receive(const FolderAnalyzer::Progress& record)
{
    m_unread = record.unread;
    m_unreadPlaces = record.unreadPlaces;
    m_volumeAccount = record.volume;
    PropertyUpdate update{this};
    update.assign(m_analysisScanned, record.scanned, &DashboardViewModel::analysisScannedChanged);
    if (record.summary) {
        update.assign(m_summary, record.summary, &DashboardViewModel::summaryChanged);
    }
}

void DashboardViewModel::endAnalysis()
{
    m_scanTask.reset();
    m_analysisEnd = ScanEnd::reached(m_unread, m_unreadPlaces);
    PropertyUpdate update{this};
    update.assign(m_analysisState, AnalysisState{AnalysisState::Phase::loaded, {}},
                  &DashboardViewModel::stateChanged);
}

void DashboardViewModel::cancelAnalysis()
{
    if (!isScanning()) {
        return;
    }
    m_scanTask.reset();
    m_analysisEnd = ScanEnd::stopped();
    PropertyUpdate update{this};
    update.assign(m_analysisState,
                  AnalysisState{m_summary ? AnalysisState::Phase::loaded : AnalysisState::Phase::none, {}},
                  &DashboardViewModel::stateChanged);
}

void DashboardViewModel::followScanRules()
{
    if (m_analyzedURL && m_scanScope != ScanScope::current()) {
        analyze(FileUrl{*m_analyzedURL});
    }
    m_recovery.followScanRules();
}

void DashboardViewModel::resumeAnalysis()
{
    if (m_analyzedURL && !isScanning() && (m_isOutdated || m_analysisEnd.kind == ScanEnd::Kind::stopped)) {
        analyze(FileUrl{*m_analyzedURL});
    }
}

} // namespace tallyroom
