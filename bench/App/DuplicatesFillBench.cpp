#include "MainThread.h"
#include "Rows/Selection.h"
#include "Settings/Settings.h"
#include "Tools/Duplicates/DuplicatesView.h"

#include <QEventLoop>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <benchmark/benchmark.h>
#include <filesystem>
#include <fstream>
#include <functional>

namespace tallyroom {

namespace {

/// `groups` pairs of small files, each with a content of its own.
void makePairs(const std::filesystem::path& folder, int groups)
{
    for (int group = 0; group < groups; ++group) {
        for (const char* const copy : {"un dossier", "un autre dossier"}) {
            const auto place = folder / copy / std::to_string(group % 100);
            std::filesystem::create_directories(place);
            std::ofstream{place / ("document numéro " + std::to_string(group) + ".txt")} << group;
        }
    }
}

/// Runs the event loop until it is done, and at least for a tenth of a second.
void settle(const std::function<bool()>& isDone)
{
    QEventLoop loop;
    QTimer timer;
    int ticks = 0;
    QObject::connect(&timer, &QTimer::timeout, &loop, [&] {
        if (++ticks >= 5 && isDone()) {
            loop.quit();
        }
    });
    timer.start(20);
    loop.exec();
}

/// 20 000 groups in the real screen: how long the window is ever busy while they come, are checked, filtered
/// and removed.
void duplicatesFill(benchmark::State& state)
{
    startApplication();
    const QTemporaryDir folder;
    const auto groups = static_cast<int>(state.range(0));
    for (auto _ : state) {
        state.PauseTiming();
        makePairs(folder.path().toStdString(), groups);
        state.ResumeTiming();
        DeletionRunner deletions;
        DuplicatesViewModel tool{deletions};
        tool.setMinimumSize(1);
        DuplicatesView view{tool};
        view.resize(1180, 760);
        view.show();
        const auto longestDuring = [](const std::function<void()>& act, const std::function<bool()>& isDone) {
            const TurnWatch watch;
            QTimer::singleShot(0, act);
            settle(isDone);
            return watch.longestMilliseconds();
        };
        const auto always = [] { return true; };
        state.counters["scanMs"] = longestDuring([&] { tool.open(FileUrl{folder.path().toStdString()}); },
                                                 [&] { return tool.state() == ToolState::loaded(); });
        state.counters["groups"] = static_cast<double>(tool.groups().size());
        state.counters["checkMs"] =
            longestDuring([&] { view.selection().setUrls(tool.redundantURLs()); }, always);
        state.counters["filterMs"] =
            longestDuring([&] { tool.setSearchText(QStringLiteral("éro 19")); }, always);
        state.counters["unfilterMs"] = longestDuring([&] { tool.setSearchText({}); }, always);
        state.counters["removeMs"] = longestDuring([&] { tool.deleteSelected(tool.redundantURLs(), true); },
                                                   [&] { return !tool.removal() && tool.groups().empty(); });
    }
}

BENCHMARK(duplicatesFill)->Arg(20'000)->Iterations(3)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace

} // namespace tallyroom
