#include "Scanning/BoundedTopHeap.h"
#include "Scanning/FileScanner.h"

#include <benchmark/benchmark.h>
#include <cstdlib>

namespace tallyroom {

namespace {

constexpr std::int64_t limit = 100;

/// A heap that is full of large files.
BoundedTopHeap& fullHeap()
{
    static BoundedTopHeap& heap = *[] {
        auto* const made = new BoundedTopHeap{limit}; // NOLINT: shared by the threads of a benchmark
        for (std::int64_t i = 0; i < limit; ++i) {
            made->offer(
                {FileUrl{"/large/" + std::to_string(i)}, std::to_string(i), 1'000'000 + i, false, {}});
        }
        return made;
    }();
    return heap;
}

/// What nearly every file of a scan costs once the ranking is full. Ideal: no lock, so two threads do twice
/// the work of one.
void offersThatCannotEnter(benchmark::State& state)
{
    BoundedTopHeap& heap = fullHeap();
    std::int64_t size = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(heap.mayTake(size++ % 500'000));
    }
    state.SetItemsProcessed(state.iterations());
}

/// Files as large as the worst one kept: under the lock, decided by their paths without spelling them out.
void offersThatTie(benchmark::State& state)
{
    BoundedTopHeap& heap = fullHeap();
    const FileUrl folder{"/larger/a/folder/of/usual/depth"};
    const std::vector<BoundedTopHeap::Candidate> files(256, {"a file of usual length.txt", 1'000'000});
    for (auto _ : state) {
        heap.offer(folder, files);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(files.size()));
}

/// The folder to search: TALLYROOM_BENCH_FOLDER, else /usr.
FileUrl searchedFolder()
{
    const char* const path = std::getenv("TALLYROOM_BENCH_FOLDER");
    return FileUrl{path == nullptr ? "/usr" : path};
}

void largestFiles(benchmark::State& state)
{
    for (auto _ : state) {
        benchmark::DoNotOptimize(FileScanner::findLargestFiles(searchedFolder(), limit).get().size());
    }
}

void directorySearch(benchmark::State& state)
{
    for (auto _ : state) {
        benchmark::DoNotOptimize(FileScanner::locateNodeModules(searchedFolder()).get().size());
    }
}

BENCHMARK(offersThatCannotEnter)->Threads(1)->Threads(2)->UseRealTime();
BENCHMARK(offersThatTie)->Threads(1)->Threads(2)->UseRealTime();
BENCHMARK(largestFiles)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(directorySearch)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace

} // namespace tallyroom
