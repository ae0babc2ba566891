#include "Components/Theme.h"
#include "Scanning/FileScanner.h"
#include "Tools/DiskUsage/DiskUsageView.h"

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QEventLoop>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>
#include <chrono>

namespace tallyroom {

namespace {

using Clock = std::chrono::steady_clock;

QApplication& application()
{
    static const QTemporaryDir settings;
    static QApplication& made = [&]() -> QApplication& {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        qputenv("XDG_CONFIG_HOME", settings.path().toLocal8Bit());
        static int count = 1;
        static char name[] = "ExplorerFillBench";
        static char* arguments[] = {name, nullptr};
        return *new QApplication(count, arguments);
    }();
    return made;
}

/// The longest time that the event loop worked without a pause.
class TurnWatch {
public:
    TurnWatch()
    {
        const auto* const dispatcher = QAbstractEventDispatcher::instance();
        QObject::connect(dispatcher, &QAbstractEventDispatcher::awake, &m_context,
                         [this] { m_awake = Clock::now(); });
        QObject::connect(dispatcher, &QAbstractEventDispatcher::aboutToBlock, &m_context,
                         [this] { m_longest = std::max(m_longest, Clock::now() - m_awake); });
    }

    [[nodiscard]] double longestMilliseconds() const
    {
        return std::chrono::duration<double, std::milli>(m_longest).count();
    }

private:
    QObject m_context;
    Clock::time_point m_awake = Clock::now();
    Clock::duration m_longest{};
};

/// Opens TALLYROOM_BENCH_FOLDER in the real screen and follows it to the end: how long the window is ever
/// busy.
void explorerFills(benchmark::State& state)
{
    application();
    Theme::shared().apply();
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
