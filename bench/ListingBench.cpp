#include "Scanning/FileScanner.h"
#include "Scanning/SizeCache.h"

#include <benchmark/benchmark.h>
#include <cstdlib>

namespace tallyroom {

namespace {

/// The folder to list: TALLYROOM_BENCH_FOLDER, for one that tree-maker has filled, else /usr/bin.
FileUrl listedFolder()
{
    const char* const path = std::getenv("TALLYROOM_BENCH_FOLDER");
    return FileUrl{path == nullptr ? "/usr/bin" : path};
}

void oneShotListing(benchmark::State& state)
{
    const FileUrl url = listedFolder();
    std::size_t entries = 0;
    for (auto _ : state) {
        FileScanner::clearCache();
        const EntryList list = FileScanner::directEntries(url, false).get();
        entries = list.size();
        benchmark::DoNotOptimize(entries == 0 ? 0 : list[0].sizeBytes);
    }
    state.counters["entries"] = static_cast<double>(entries);
}

BENCHMARK(oneShotListing)->Unit(benchmark::kMillisecond)->UseRealTime();

/// Every record is sent and taken, the newest of each look is read, as a window does.
void streamedListing(benchmark::State& state)
{
    const FileUrl url = listedFolder();
    std::size_t records = 0;
    for (auto _ : state) {
        FileScanner::clearCache();
        auto stream = FileScanner::directEntriesStream(url, false);
        records = 0;
        EntryList newest;
        while (auto record = stream.next()) {
            ++records;
            newest = std::move(record->entries);
        }
        benchmark::DoNotOptimize(newest.empty() ? 0 : newest[0].sizeBytes);
    }
    state.counters["records"] = static_cast<double>(records);
}

BENCHMARK(streamedListing)->Unit(benchmark::kMillisecond)->UseRealTime();

void cachedTotal(benchmark::State& state)
{
    const FileUrl url{"/usr/share"};
    benchmark::DoNotOptimize(FileScanner::directorySize(url));
    for (auto _ : state) {
        benchmark::DoNotOptimize(SizeCache::shared().find(url));
    }
}

BENCHMARK(cachedTotal);

} // namespace

} // namespace tallyroom
