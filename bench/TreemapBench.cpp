#include "Treemap/TreemapLayout.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cmath>
#include <random>

namespace {

/// Sizes as a folder's children have them, larger first.
std::vector<double> folderSizes(std::size_t count)
{
    std::mt19937 random{2000}; // NOLINT: the same folder every time
    std::lognormal_distribution<double> size{10, 2.5};
    std::vector<double> weights(count);
    std::ranges::generate(weights, [&] { return std::ceil(size(random)); });
    std::ranges::sort(weights, std::greater{});
    return weights;
}

void treemapLayout(benchmark::State& state)
{
    const auto weights = folderSizes(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        benchmark::DoNotOptimize(tallyroom::TreemapLayout::tiles(weights, {0, 0, 1400, 900}));
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

} // namespace

BENCHMARK(treemapLayout)->Arg(1'000)->Arg(100'000)->Unit(benchmark::kMicrosecond);

BENCHMARK_MAIN();
