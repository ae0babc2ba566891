#include "Kinds/FolderAnalyzer.h"

#include <benchmark/benchmark.h>
#include <cstdlib>

namespace tallyroom {

namespace {

/// The tree to analyse: TALLYROOM_BENCH_FOLDER, else /usr. To be read beside `floor` on the same tree.
FileUrl analysedFolder()
{
    const char* const path = std::getenv("TALLYROOM_BENCH_FOLDER");
    return FileUrl{path == nullptr ? "/usr" : path};
}

void summary(benchmark::State& state)
{
    const FileUrl url = analysedFolder();
    std::int64_t files = 0;
    for (auto _ : state) {
        files = FolderAnalyzer::summarize(url).get().totalFiles;
    }
    state.counters["files"] = static_cast<double>(files);
}

BENCHMARK(summary)->Unit(benchmark::kMillisecond)->UseRealTime();

void streamedSummary(benchmark::State& state)
{
    const FileUrl url = analysedFolder();
    std::size_t records = 0;
    for (auto _ : state) {
        records = 0;
        for (auto stream = FolderAnalyzer::stream(url); stream.next().has_value();) {
            ++records;
        }
    }
    state.counters["records"] = static_cast<double>(records);
}

BENCHMARK(streamedSummary)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace

} // namespace tallyroom
