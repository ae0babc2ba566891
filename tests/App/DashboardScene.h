#pragma once

#include "App/EventWait.h"
#include "Tools/Dashboard/DashboardViewModel.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tallyroom {

/// A stream that the test feeds by hand.
template <class Record>
class HandFedStream {
public:
    /// Begins a new stream; the earlier ones can still be fed.
    [[nodiscard]] ProgressStream<Record> begin()
    {
        auto [sender, stream] = makeProgressStream<Record>();
        m_senders.emplace_back(std::move(sender));
        return std::move(stream);
    }

    [[nodiscard]] std::size_t count() const { return m_senders.size(); }

    void send(Record record) { m_senders.back()->send(std::move(record)); }

    void sendFrom(std::size_t stream, Record record) { m_senders[stream]->send(std::move(record)); }

    void end() { m_senders.back().reset(); }

    [[nodiscard]] bool isCancelled(std::size_t stream) const
    {
        return m_senders[stream]->stopToken().stop_requested();
    }

private:
    std::vector<std::optional<ProgressSender<Record>>> m_senders;
};

/// A dashboard without disks: volumes and breakdowns come when the test sends them.
struct DashboardScene {
    using Progress = FolderAnalyzer::Progress;

    HandFedStream<VolumeReport> volumes;
    HandFedStream<Progress> analyses;
    DashboardViewModel dashboard{
        {[this] { return volumes.begin(); }, [this](const FileUrl&) { return analyses.begin(); }}};

    static VolumeUsage volume(const std::string& mountPoint, std::int64_t total, std::int64_t available,
                              bool isInternal = true)
    {
        const FileUrl url{mountPoint};
        return {std::string{url.lastPathComponent()}, url, total, available, isInternal};
    }

    /// Sends a report, the first volume as the main one, and waits until it is shown.
    bool report(std::vector<VolumeUsage> list, std::int64_t unanswered = 0)
    {
        const auto main = list.empty() ? std::nullopt : std::optional{list.front()};
        volumes.send({std::move(list), main, unanswered});
        volumes.end();
        return waitUntil(&dashboard, &DashboardViewModel::isRefreshingChanged,
                         [this] { return !dashboard.isRefreshing(); });
    }

    /// Ends the newest breakdown with these kinds, and waits until it is shown.
    bool finish(std::vector<CategorySize> categories)
    {
        FolderSummary summary;
        for (const CategorySize& category : categories) {
            summary.totalBytes += category.totalBytes;
            summary.totalFiles += category.fileCount;
        }
        summary.categories = std::move(categories);
        analyses.send({summary.totalFiles, summary, Progress::Phase::done});
        analyses.end();
        return waitUntil(&dashboard, &FolderTool::stateChanged,
                         [this] { return dashboard.analysisState().phase == AnalysisState::Phase::loaded; });
    }
};

} // namespace tallyroom
