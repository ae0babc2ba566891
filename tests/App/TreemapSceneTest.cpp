#include "Tools/DiskUsage/Treemap/TreemapScene.h"

#include "App/OutlineMaker.h"
#include "Scanning/FileScanner.h"
#include "Scanning/TreeOutline.h"
#include "Support/AllRecords.h"
#include "Support/TemporaryTree.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <numeric>
#include <random>
#include <sys/stat.h>

namespace tallyroom {

namespace {

/// A home folder of any shape: deep ones, flat ones, large ones beside tiny ones, rests here and there.
DrawnTree anyTree(std::mt19937& random, const std::string& name, std::size_t files, int depth)
{
    std::lognormal_distribution<double> size{8, 2};
    DrawnTree tree{name};
    const std::size_t folders = depth > 0 ? 1 + random() % 4 : 0;
    for (std::size_t index = 0; index < folders; ++index) {
        tree.children.push_back(anyTree(random, "d" + std::to_string(index), files / 2, depth - 1));
    }
    for (std::size_t index = 0; index < 1 + random() % files; ++index) {
        tree.children.push_back({"f" + std::to_string(index) + ".jpg", std::int64_t(size(random)) + 1});
    }
    if (random() % 2 == 0) {
        tree.restCount = static_cast<std::uint32_t>(1 + random() % 100);
        tree.restBytes = std::int64_t(size(random)) * 3;
    }
    return tree;
}

TreemapScene sceneOf(const EntryList& entries, std::vector<SharedOutline> outlines, const QRect& area,
                     double scale)
{
    std::vector<std::uint32_t> all(entries.size());
    std::iota(all.begin(), all.end(), 0U);
    SteadyLayout layout;
    return {{entries, std::move(all), std::move(outlines)}, {area, area, scale}, layout};
}

/// The cells directly in an open folder, or on the first level.
std::vector<QRect> cellsIn(const TreemapScene& scene, std::uint32_t folder)
{
    std::vector<QRect> cells;
    for (const TreemapScene::Tile& tile : scene.tiles()) {
        if (tile.parent == folder) {
            cells.push_back(tile.cell);
        }
    }
    for (const TreemapScene::Rest& rest : scene.rests()) {
        if (rest.parent == folder) {
            cells.insert(cells.end(), rest.cells.begin(), rest.cells.end());
        }
    }
    return cells;
}

/// Whether every pixel of the area belongs to one of the cells.
testing::AssertionResult ownEveryPixelOnce(const std::vector<QRect>& cells, const QRect& area)
{
    std::vector<int> owners(static_cast<std::size_t>(area.width()) * static_cast<std::size_t>(area.height()));
    for (const QRect& cell : cells) {
        const QRect inside = cell & area;
        for (int y = inside.top(); y <= inside.bottom(); ++y) {
            for (int x = inside.left(); x <= inside.right(); ++x) {
                ++owners[static_cast<std::size_t>((y - area.y()) * area.width() + x - area.x())];
            }
        }
    }
    const auto wrong = std::ranges::count_if(owners, [](int count) { return count != 1; });
    return wrong == 0 ? testing::AssertionSuccess()
                      : testing::AssertionFailure() << wrong << " of " << owners.size() << " pixels";
}

/// That siblings have the same area for each byte, but for what rounding takes and gives at their edges.
void expectTrueAreas(const TreemapScene& scene, std::uint32_t folder, const QRect& area, double bytes,
                     double scale)
{
    // Each cell ends with a gap, the last ones beyond the area.
    const double gap = 2 * scale;
    const double perByte = (area.width() + gap) * (area.height() + gap) / bytes;
    for (std::size_t tile = 0; tile < scene.tiles().size(); ++tile) {
        const TreemapScene::Tile& one = scene.tiles()[tile];
        if (one.parent == folder) {
            const QSize size = one.cell.size();
            EXPECT_NEAR(double(size.width()) * size.height(), perByte * double(scene.entry(tile).sizeBytes),
                        size.width() + size.height() + 1)
                << scene.entry(tile).url.path();
        }
    }
}

/// That each level is covered, siblings in proportion, and that all tiles together are `bytes`.
void expectTheWhole(const TreemapScene& scene, const QRect& area, std::int64_t bytes, double scale)
{
    EXPECT_TRUE(ownEveryPixelOnce(cellsIn(scene, TreemapScene::none), area));
    expectTrueAreas(scene, TreemapScene::none, area, double(bytes), scale);
    std::int64_t leaves = 0;
    std::size_t open = 0;
    for (std::uint32_t tile = 0; tile < scene.tiles().size(); ++tile) {
        if (!scene.isOpen(tile)) {
            leaves += scene.entry(tile).sizeBytes;
            continue;
        }
        ++open;
        const QRect content = scene.tiles()[tile].content;
        EXPECT_TRUE(scene.painted(tile).contains(content));
        EXPECT_TRUE(ownEveryPixelOnce(cellsIn(scene, tile), content));
        expectTrueAreas(scene, tile, content, double(scene.entry(tile).sizeBytes), scale);
    }
    EXPECT_GT(open, 1U);
    for (const TreemapScene::Rest& rest : scene.rests()) {
        leaves += rest.sizeBytes;
    }
    EXPECT_EQ(leaves, bytes);
    const auto kinds = scene.bytesByKind();
    EXPECT_EQ(std::accumulate(kinds.begin(), kinds.end(), std::int64_t{0}), bytes);
}

/// What each folder and file takes, each of a file's names for itself: `du -l` without the folders' own
/// blocks.
std::map<std::filesystem::path, std::int64_t> blocksIn(const std::filesystem::path& folder)
{
    std::map<std::filesystem::path, std::int64_t> bytes;
    for (const auto& item : std::filesystem::recursive_directory_iterator{folder}) {
        struct stat status {};

        if (::lstat(item.path().c_str(), &status) == 0 && !S_ISDIR(status.st_mode)) {
            for (auto path = item.path(); path != folder.parent_path(); path = path.parent_path()) {
                bytes[path] += status.st_blocks * 512;
            }
        }
    }
    return bytes;
}

TEST(TreemapScene, EachLevelIsCoveredInProportionAndNothingIsLost)
{
    for (const double scale : {1.0, 1.5, 2.0}) {
        for (unsigned seed = 0; seed < 6; ++seed) {
            SCOPED_TRACE(testing::Message() << "seed " << seed << " at " << scale);
            std::mt19937 random{seed};
            DrawnTree tree = anyTree(random, "moi", 60, 4);
            tree.restCount = 0; // a listing tells all
            tree.restBytes = 0;
            const SharedOutline outline = outlineOf(tree, "/home/moi");
            const QRect area{2, 2, int(701 * scale), int(403 * scale)};
            const TreemapScene scene = sceneOf(listingOf(outline), {outline}, area, scale);
            expectTheWhole(scene, area, tree.sizeBytes(), scale);
        }
    }
}

TEST(TreemapScene, TheTilesOfRealFoldersAreWhatTheirFilesTakeOnTheDisk)
{
    const TemporaryTree made{file("photos/2023/a.jpg", 3_MiB), file("photos/2023/b.jpg", 70'000),
                             file("photos/c.jpg", 1_MiB),      file("film.mov", 5_MiB),
                             link("lien", "film.mov"),         hardLink("photos/encore.mov", "film.mov")};
    for (const std::string& path :
         {made.url().path(), std::string{"/usr/include"}, std::string{"/usr/share/doc"}}) {
        SCOPED_TRACE(path);
        const FileUrl folder{path};
        const EntryList entries = FileScanner::directEntries(folder, false).get();
        auto outlines = allRecords(TreeOutline::read(folder, {}));
        const QRect area{0, 0, 1280, 800};
        const auto bytes = blocksIn(path);
        const TreemapScene scene = sceneOf(entries, {outlines.back().outline}, area, 1);
        expectTheWhole(scene, area, bytes.at(path), 1);
        for (std::size_t tile = 0; tile < scene.tiles().size(); ++tile) {
            const Entry& entry = scene.entry(tile);
            const auto found = bytes.find(entry.url.path());
            EXPECT_EQ(entry.sizeBytes, found == bytes.end() ? 0 : found->second) << entry.url.path();
        }
    }
}

TEST(TreemapScene, AFlatFolderOfAnySizeIsDrawnWithinTheLimit)
{
    for (const std::size_t count : {std::size_t{1}, std::size_t{300}, std::size_t{100'000}}) {
        EntryList::Builder builder;
        for (std::size_t index = 0; index < count; ++index) {
            const std::string name = std::to_string(index);
            const auto size = static_cast<std::int64_t>(1 + (index * 7919 % 1013) * (index % 17));
            builder.append({FileUrl{"/" + name}, name, size, false});
        }
        const EntryList entries = builder.snapshot();
        const QRect area{0, 0, 3840, 2000};
        const TreemapScene scene = sceneOf(entries, {}, area, 1);
        EXPECT_LE(scene.tiles().size(), TreemapScene::mostTiles);
        EXPECT_EQ(scene.tiles().size() + (scene.topRest() == nullptr ? 0 : scene.topRest()->count), count);
        EXPECT_TRUE(ownEveryPixelOnce(cellsIn(scene, TreemapScene::none), area)) << count;
    }
}

TEST(TreemapScene, AnOutlineThatBeginsFurtherDownTellsMore)
{
    const DrawnTree closer{"projets", 0, {{"a.cpp", 60}, {"b.cpp", 40}}};
    const DrawnTree tree{"moi", 0, {{"projets", 0, {}, 100, 2}, {"film.mov", 700}}};
    const SharedOutline outline = outlineOf(tree, "/home/moi");
    const FileUrl deep{"/home/moi/projets/b.cpp"};
    EXPECT_FALSE(sceneOf(listingOf(outline), {outline}, {0, 0, 600, 400}, 1).find(deep));
    const SharedOutline more = outlineOf(closer, "/home/moi/projets");
    EXPECT_TRUE(sceneOf(listingOf(outline), {outline, more}, {0, 0, 600, 400}, 1).find(deep));
}

} // namespace

} // namespace tallyroom
