#include "Tools/DiskUsage/Treemap/TreemapPainter.h"
#include "Tools/DiskUsage/Treemap/TreemapScene.h"

#include <QApplication>

#include <array>
#include <benchmark/benchmark.h>
#include <cmath>
#include <numeric>
#include <random>

namespace {

using namespace tallyroom;

/// A folder's children: sizes spread by `spread` around one, every kind of file, ranked already as a list on
/// screen is.
EntryList children(std::size_t count, double spread)
{
    static constexpr std::array<const char*, 11> endings{"",     ".jpg", ".mov", ".flac", ".zip", ".cpp",
                                                         ".pdf", ".csv", ".sql", ".iso",  ".xyz"};
    std::mt19937 random{2000}; // NOLINT: the same folder every time
    std::lognormal_distribution<double> size{12, spread};
    EntryList::Builder builder;
    for (std::size_t index = 0; index < count; ++index) {
        const std::size_t kind = random() % endings.size();
        const std::string name = "fichier-" + std::to_string(index) + endings.at(kind);
        builder.append({FileUrl{"/home/moi/Projets/" + name},
                        name,
                        static_cast<std::int64_t>(std::ceil(size(random))),
                        kind == 0,
                        {}});
    }
    EntryList list = builder.snapshot();
    benchmark::DoNotOptimize(list.front());
    return list;
}

/// What a new list costs until its map is a picture: tiles, kinds, pixels and labels.
void treemapDraw(benchmark::State& state)
{
    const auto count = static_cast<std::size_t>(state.range(0));
    const EntryList entries = children(count, static_cast<double>(state.range(1)) / 10);
    std::vector<std::uint32_t> all(count);
    std::iota(all.begin(), all.end(), 0U);
    const QSize size{1400, 900};
    const TreemapPainter painter{1};
    std::size_t tiles = 0;
    for (auto _ : state) {
        const TreemapScene scene{entries, all, {QPoint{}, size}, 1};
        benchmark::DoNotOptimize(painter.paint(scene, size, [](std::size_t) { return false; }));
        tiles = scene.tiles().size();
    }
    state.counters["tiles"] = static_cast<double>(tiles);
}

} // namespace

// The second argument is the spread in tenths: none, files of one program, a downloads folder.
BENCHMARK(treemapDraw)
    ->ArgsProduct({{1'000, 100'000}, {0, 10, 25}})
    ->ArgNames({"entries", "spread"})
    ->Unit(benchmark::kMillisecond);

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application{argc, argv};
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
