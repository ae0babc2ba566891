#pragma once

#include "App/EventWait.h"
#include "App/ScreenWords.h"
#include "Theme/Theme.h"
#include "Tools/Dashboard/DashboardView.h"
#include "Tools/Dashboard/DashboardViewModel.h"
#include "Tools/Dashboard/VolumeCard.h"
#include "Tools/Dashboard/VolumeGrid.h"

#include <QTest>

#include <gtest/gtest.h>
#include <memory>

namespace tallyroom {

/// Streams that the test feeds by hand; the newest is the last one.
template <class Record>
struct HandFedStreams {
    [[nodiscard]] ProgressStream<Record> begin()
    {
        auto [sender, stream] = makeProgressStream<Record>();
        senders.push_back(std::make_unique<ProgressSender<Record>>(std::move(sender)));
        return std::move(stream);
    }

    void send(Record record) { senders.back()->send(std::move(record)); }

    void end() { senders.back().reset(); }

    [[nodiscard]] bool isCancelled(std::size_t stream) const
    {
        return senders[stream]->stopToken().stop_requested();
    }

    std::vector<std::unique_ptr<ProgressSender<Record>>> senders;
};

/// A dashboard without disks: volumes and breakdowns come when the test sends them.
class DashboardScene : public testing::Test {
protected:
    using Progress = FolderAnalyzer::Progress;

    static constexpr std::int64_t gigabyte = 1'000'000'000;

    DashboardScene()
    {
        Theme::shared().apply();
        view.resize(900, 600);
        view.show();
        activate(view);
    }

    bool refreshed()
    {
        return waitUntil(&dashboard, &DashboardViewModel::isRefreshingChanged,
                         [this] { return !dashboard.isRefreshing(); });
    }

    /// Sends a report, the first volume as the main one, and waits until it is shown.
    bool report(std::vector<VolumeUsage> list, std::int64_t unanswered = 0)
    {
        const auto main = list.empty() ? std::nullopt : std::optional{list.front()};
        readings.send({std::move(list), main, unanswered});
        readings.end();
        return refreshed();
    }

    /// Sends a record of the newest breakdown and waits until its count is shown.
    bool count(std::int64_t files, const std::optional<FolderSummary>& summary = {})
    {
        analyses.send({files, summary, summary ? Progress::Phase::done : Progress::Phase::scanning});
        return waitUntil(&dashboard, &DashboardViewModel::analysisScannedChanged,
                         [&] { return dashboard.analysisScanned() == files; });
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

    static VolumeUsage volume(const std::string& mountPoint, std::int64_t total, std::int64_t available,
                              bool isInternal = true)
    {
        const FileUrl url{mountPoint};
        return {std::string{url.lastPathComponent()}, url, total, available, isInternal};
    }

    static std::vector<VolumeUsage> volumes(int count)
    {
        std::vector<VolumeUsage> result;
        for (int serial = 1; serial <= count; ++serial) {
            result.push_back(volume("/mnt/" + std::to_string(serial), 100 * gigabyte, serial * gigabyte));
        }
        return result;
    }

    [[nodiscard]] std::vector<VolumeCard*> cards() const { return view.findChild<VolumeGrid*>()->cards(); }

    [[nodiscard]] QStringList texts() const { return visibleTexts(view); }

    [[nodiscard]] QAbstractButton* button(const QString& text) const { return visibleButton(view, text); }

    void press(Qt::Key pressed) { QTest::keyClick(view.focusWidget(), pressed); }

    HandFedStreams<VolumeReport> readings;
    HandFedStreams<Progress> analyses;
    TrashViewModel::Source trashes = [](const FileUrl&) {
        return makeProgressStream<TrashContents>().second;
    };
    DeletionRunner deletions;
    DashboardViewModel dashboard{deletions,
                                 {[this] { return readings.begin(); },
                                  [this](const FileUrl&) { return analyses.begin(); },
                                  [this](const FileUrl& mountPoint) { return trashes(mountPoint); }}};
    DashboardView view{dashboard};
    const VolumeUsage root = volume("/", 500, 100);
    const VolumeUsage large = volume("/mnt/large", 900, 100);
    const VolumeUsage key = volume("/media/key", 50, 1, false);
    const CategorySize videos{FileKind::video, 30, 2};
    const CategorySize code{FileKind::code, 10, 5};
};

} // namespace tallyroom
