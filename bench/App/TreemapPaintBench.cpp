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

TreemapScene sceneOf(const EntryList& entries, std::vector<SharedOutline> outlines, const QSize& size,
                     SteadyLayout& layout)
{
    std::vector<std::uint32_t> all(entries.size());
    std::iota(all.begin(), all.end(), 0U);
    return {{entries, std::move(all), std::move(outlines)}, {{QPoint{}, size}, {QPoint{}, size}, 1}, layout};
}

/// What a new list costs until its map is a picture: tiles, kinds, pixels and labels.
void treemapDraw(benchmark::State& state)
{
    const EntryList entries =
        children(static_cast<std::size_t>(state.range(0)), static_cast<double>(state.range(1)) / 10);
    const QSize size{1400, 900};
    const TreemapPainter painter{1};
    SteadyLayout layout;
    std::size_t tiles = 0;
    for (auto _ : state) {
        const TreemapScene scene = sceneOf(entries, {}, size, layout);
        benchmark::DoNotOptimize(
            painter.paint(scene, size, [](std::size_t) { return TreemapPainter::Look{}; }));
        tiles = scene.tiles().size();
    }
    state.counters["tiles"] = static_cast<double>(tiles);
}

/// A tree of many levels, as an outline tells it: each folder holds six files for each folder, and the sizes
/// are spread as in a home folder.
SharedOutline nested(std::size_t count)
{
    std::mt19937 random{2000}; // NOLINT: the same tree every time
    std::lognormal_distribution<double> size{12, 1};
    constexpr std::array<const char*, 6> endings{".jpg", ".mov", ".cpp", ".zip", ".pdf", ".xyz"};
    constexpr std::uint32_t folders = 6;
    constexpr std::uint32_t files = 30;
    auto outline = std::make_shared<Outline>();
    outline->nodes.push_back({.entry = {FileUrl{"/home/moi"}, "moi", 0, true}});
    for (std::uint32_t place = 0; outline->nodes.size() + folders + files <= count; ++place) {
        if (!outline->nodes[place].entry.isDirectory) {
            continue;
        }
        const FileUrl url = outline->nodes[place].entry.url;
        const auto first = static_cast<std::uint32_t>(outline->nodes.size());
        for (std::uint32_t child = 0; child < folders + files; ++child) {
            const bool isFolder = child < folders;
            const std::string name = (isFolder ? "dossier-" : "fichier-") + std::to_string(child) +
                                     (isFolder ? "" : endings.at(random() % 6));
            outline->nodes.push_back({.entry = {url.appending(name), name,
                                                static_cast<std::int64_t>(std::ceil(size(random))), isFolder},
                                      .parent = place});
        }
        outline->nodes[place].firstChild = first;
        outline->nodes[place].childCount = folders + files;
        outline->nodes[place].isExpanded = true;
    }
    for (std::size_t place = outline->nodes.size(); place-- > 1;) { // folders come before what they hold
        const Outline::Node& node = outline->nodes[place];
        outline->nodes[node.parent].entry.sizeBytes += node.entry.sizeBytes;
    }
    return outline;
}

EntryList listing(const Outline& outline)
{
    EntryList::Builder builder;
    const Outline::Node& root = outline.nodes.front();
    for (std::uint32_t place = 0; place < root.childCount; ++place) {
        builder.append(outline.nodes[root.firstChild + place].entry);
    }
    return builder.snapshot();
}

/// The same for a whole tree on a screen of its own, where all of it is large enough to be drawn.
void nestedMap(benchmark::State& state)
{
    const SharedOutline outline = nested(static_cast<std::size_t>(state.range(0)));
    const EntryList entries = listing(*outline);
    const QSize size{2560, 1440};
    const TreemapPainter painter{1};
    SteadyLayout layout;
    std::size_t tiles = 0;
    for (auto _ : state) {
        const TreemapScene scene = sceneOf(entries, {outline}, size, layout);
        benchmark::DoNotOptimize(
            painter.paint(scene, size, [](std::size_t) { return TreemapPainter::Look{}; }));
        tiles = scene.tiles().size();
    }
    state.counters["tiles"] = static_cast<double>(tiles);
}

/// What the pointer costs at each of many places: the tile there, and its frames over the map.
void nestedHover(benchmark::State& state)
{
    const SharedOutline outline = nested(20'000);
    const QSize size{2560, 1440};
    const TreemapPainter painter{1};
    SteadyLayout layout;
    const TreemapScene scene = sceneOf(listing(*outline), {outline}, size, layout);
    const QImage map = painter.paint(scene, size, [](std::size_t) { return TreemapPainter::Look{}; });
    QImage screen = map;
    std::mt19937 random{2000}; // NOLINT: the same places every time
    for (auto _ : state) {
        const QPoint place{static_cast<int>(random() % 2560), static_cast<int>(random() % 1440)};
        if (const auto tile = scene.tileAt(place)) {
            QPainter overlay{&screen};
            overlay.setClipRegion(painter.hoverRegion(scene, *tile));
            overlay.drawImage(QPoint{}, map);
            painter.paintHover(overlay, scene, *tile, {});
        }
    }
}

} // namespace

// The second argument is the spread in tenths: none, files of one program, a downloads folder.
BENCHMARK(treemapDraw)
    ->ArgsProduct({{1'000, 100'000}, {0, 10, 25}})
    ->ArgNames({"entries", "spread"})
    ->Unit(benchmark::kMillisecond);
BENCHMARK(nestedMap)->Arg(2'000)->Arg(20'000)->ArgName("items")->Unit(benchmark::kMillisecond);
BENCHMARK(nestedHover)->Unit(benchmark::kMicrosecond);

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application{argc, argv};
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
