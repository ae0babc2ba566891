#include "Scanning/FileScanner.h"
#include "Scanning/TreeOutline.h"

#include <benchmark/benchmark.h>
#include <cstdlib>

namespace tallyroom {

namespace {

/// The totals known, an outline of so many nodes: TALLYROOM_BENCH_FOLDER, else /usr.
void warmOutline(benchmark::State& state)
{
    const char* const path = std::getenv("TALLYROOM_BENCH_FOLDER");
    const FileUrl url{path == nullptr ? "/usr" : path};
    benchmark::DoNotOptimize(FileScanner::directorySize(url));
    const auto most = static_cast<std::size_t>(state.range(0));
    std::size_t nodes = 0;
    for (auto _ : state) {
        auto stream =
            TreeOutline::read(url, {.leastShare = 1.0 / static_cast<double>(most), .mostNodes = most});
        while (const auto record = stream.next()) {
            nodes = record->outline->nodes.size();
        }
    }
    state.counters["nodes"] = static_cast<double>(nodes);
}

BENCHMARK(warmOutline)
    ->Arg(2'000)
    ->Arg(20'000)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->MeasureProcessCPUTime();

} // namespace

} // namespace tallyroom
