#include "MainThread.h"
#include "Scanning/FileScanner.h"
#include "Tools/DiskUsage/DiskUsageView.h"

#include <QEventLoop>

#include <algorithm>
#include <benchmark/benchmark.h>

namespace tallyroom {

namespace {

/// Opens TALLYROOM_BENCH_FOLDER in the real screen and follows it to the end: how long the window is ever
/// busy.
void explorerFills(benchmark::State& state)
{
    startApplication();
    const FileUrl folder{
        qEnvironmentVariable("TALLYROOM_BENCH_FOLDER", QStringLiteral("/usr/bin")).toStdString()};
    double longest = 0;
    std::size_t entries = 0;
    for (auto _ : state) {
        FileScanner::clearCache();
        DeletionRunner deletions;
        FolderNavigatorViewModel navigator{deletions};
        DiskUsageView view{navigator};
        view.resize(1180, 760);
        view.show();
        QEventLoop loop;
        QObject::connect(&navigator, &FolderTool::stateChanged, &loop, [&] {
            if (!navigator.isScanning()) {
                loop.quit();
            }
        });
        const TurnWatch watch;
        navigator.open(folder);
        loop.exec();
        longest = std::max(longest, watch.longestMilliseconds());
        entries = navigator.entries().size();
    }
    state.counters["longestTurnMs"] = longest;
    state.counters["entries"] = static_cast<double>(entries);
}

BENCHMARK(explorerFills)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace

} // namespace tallyroom
