#include "Treemap/TreemapLayout.h"

#include "Support/Cases.h"

#include <algorithm>
#include <cmath>
#include <gmock/gmock.h>
#include <limits>
#include <numeric>
#include <random>
#include <sstream>

namespace tallyroom {

namespace {

using TreemapLayout::Rectangle;
using TreemapLayout::Tile;
using TreemapLayout::tiles;

using Weights = std::vector<double>;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double largest = std::numeric_limits<double>::max();

double areaOf(const Tile& tile)
{
    return tile.rect.width * tile.rect.height;
}

/// Weights as folders have them: a few giants, a long tail, now and then nothing at all.
Weights folderSizes(unsigned seed, std::size_t count)
{
    std::mt19937 random{seed};
    std::lognormal_distribution<double> size{8, 3};
    Weights weights(count);
    std::ranges::generate(weights, [&] { return random() % 7 == 0 ? 0.0 : std::floor(size(random)); });
    return weights;
}

void expectTilesCover(const std::vector<Tile>& laidOut, const Weights& weights, const Rectangle& whole)
{
    const double total = std::accumulate(weights.begin(), weights.end(), 0.0);
    const double area = whole.width * whole.height;
    double covered = 0;
    for (const Tile& tile : laidOut) {
        ASSERT_NEAR(areaOf(tile), area * (weights[tile.index] / total), area * 1e-6) << "tile " << tile.index;
        ASSERT_GE(tile.rect.x, whole.x - 1e-6);
        ASSERT_GE(tile.rect.y, whole.y - 1e-6);
        ASSERT_LE(tile.rect.x + tile.rect.width, whole.x + whole.width + 1e-6);
        ASSERT_LE(tile.rect.y + tile.rect.height, whole.y + whole.height + 1e-6);
        covered += areaOf(tile);
    }
    EXPECT_NEAR(covered, area, area * 1e-6);
}

double overlap(const Rectangle& left, const Rectangle& right)
{
    const double width = std::min(left.x + left.width, right.x + right.width) - std::max(left.x, right.x);
    const double height = std::min(left.y + left.height, right.y + right.height) - std::max(left.y, right.y);
    return std::max(width, 0.0) * std::max(height, 0.0);
}

TEST(TreemapLayout, LaysOutWhatIsWorkedOutByHand)
{
    const auto numbers = [](const std::string& text) {
        std::istringstream words{text};
        Weights values;
        for (std::string word; words >> word;) {
            values.push_back(std::stod(word));
        }
        return values;
    };
    for (const auto& row : cases("treemaps worked out by hand")) {
        SCOPED_TRACE(row[0] + ": " + row[1]);
        const Weights whole = numbers(row[0]);
        Weights laidOut;
        for (const auto& [index, rect] : tiles(numbers(row[1]), {whole[0], whole[1], whole[2], whole[3]})) {
            laidOut.insert(laidOut.end(),
                           {static_cast<double>(index), rect.x, rect.y, rect.width, rect.height});
        }
        std::string expected = row[2];
        std::ranges::replace(expected, ',', ' ');
        EXPECT_THAT(laidOut, testing::Pointwise(testing::DoubleNear(1e-12), numbers(expected)));
    }
    for (const auto& [width, height] : std::vector<std::pair<double, double>>{
             {0, 5}, {5, 0}, {-5, 5}, {5, -5}, {-5, -5}, {nan, 5}, {5, infinity}}) {
        EXPECT_TRUE(tiles(Weights{1, 2}, {0, 0, width, height}).empty()) << width << " × " << height;
    }
}

TEST(TreemapLayout, CoversTheRectangleInProportionWithoutOverlap)
{
    const std::vector<Rectangle> rectangles{
        {0, 0, 1400, 900}, {-50, 30, 300, 1200}, {0, 0, 1, 1}, {5, 5, 4000, 3}};
    for (unsigned seed = 0; seed < 12; ++seed) {
        Weights weights = folderSizes(seed, 300);
        if (seed % 2 == 0) {
            std::ranges::sort(weights, std::greater{});
        }
        for (const Rectangle& whole : rectangles) {
            SCOPED_TRACE(testing::Message() << "seed " << seed << ", width " << whole.width);
            const auto laidOut = tiles(weights, whole);
            ASSERT_EQ(laidOut.size(), static_cast<std::size_t>(
                                          std::ranges::count_if(weights, [](double w) { return w > 0; })));
            expectTilesCover(laidOut, weights, whole);
            for (std::size_t left = 0; left < laidOut.size(); ++left) {
                for (std::size_t right = left + 1; right < laidOut.size(); ++right) {
                    ASSERT_LE(overlap(laidOut[left].rect, laidOut[right].rect),
                              whole.width * whole.height * 1e-9);
                }
            }
        }
    }
}

TEST(TreemapLayout, WeightsWhoseSumOverflowsKeepTheirProportions)
{
    const Rectangle square{0, 0, 10, 10};
    const auto giants = tiles(Weights{largest, largest, largest / 2}, square);
    ASSERT_EQ(giants.size(), 3U);
    EXPECT_NEAR(areaOf(giants[0]), 40, 1e-6);
    EXPECT_NEAR(areaOf(giants[2]), 20, 1e-6);

    const auto endless = tiles(Weights{infinity, infinity, 1}, square);
    ASSERT_GE(endless.size(), 2U);
    EXPECT_NEAR(areaOf(endless[0]), 50, 1e-6);
    EXPECT_NEAR(areaOf(endless[1]), 50, 1e-6);
}

TEST(TreemapLayout, LongRowsAndGiantsLeaveNobodyOut)
{
    // Judging a row from scratch for every item would take minutes here, and sums drift in long rows. After
    // a giant the remaining rectangle is exhausted, and a strip in it would be endlessly thick.
    for (const double first : {4096.0, 1e18, 1e200}) {
        const bool hasGiant = first > 4096;
        Weights weights(hasGiant ? 1000 : 100'000, hasGiant ? 1 : 4096);
        weights.front() = first;
        for (const Rectangle& whole : {Rectangle{0, 0, 1400, 900}, Rectangle{0, 0, 100, 50},
                                       Rectangle{0, 0, 50, 100}, Rectangle{0, 0, 1e6, 1e-3}}) {
            const auto laidOut = tiles(weights, whole);
            ASSERT_TRUE(hasGiant || laidOut.size() == weights.size());
            expectTilesCover(laidOut, weights, whole);
        }
    }
}

} // namespace

} // namespace tallyroom
