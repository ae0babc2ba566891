#include "FileSystem/DiskPace.h"

#include "Support/OneDisk.h"

#include <gtest/gtest.h>
#include <utility>
#include <vector>

namespace tallyroom {

namespace {

using namespace std::chrono_literals;

TEST(DiskPace, FollowsTheHeadAndNotTheProcessor)
{
    constexpr DiskUse shortReads{1ms, 1ms, 10, 10};
    constexpr DiskUse sleepsElsewhere{1ms, 20ms, 1, 0};

    struct Row {
        const char* what;
        std::vector<std::pair<int, DiskUse>> notes; ///< each so many times
        bool isOrdered;
    };

    const std::vector<Row> rows{
        {"a head that moves now and then", {{20, shortReads}, {1, headMoves}, {20, shortReads}}, true},
        {"a solid disk that says it rotates", {{30, shortReads}}, false},
        {"a short rest", {{2, inMemory}, {1, headMoves}, {2, inMemory}}, true},
        {"memory", {{3, inMemory}}, false},
        {"a lock, or a dead server", {{1, sleepsElsewhere}}, false},
        {"all readers, who wait long", {{3, inMemory}, {12, headMoves}}, true},
        {"one of them waits once", {{3, inMemory}, {1, headMoves}, {60, inMemory}}, false},
        {"the same stretch of memory soon after", {{3, inMemory}, {12, headMoves}, {3, inMemory}}, true},
        {"a longer one", {{3, inMemory}, {12, headMoves}, {6, inMemory}}, false}};
    for (const Row& row : rows) {
        DiskPace pace;
        for (const auto& [times, use] : row.notes) {
            for (int i = 0; i < times; ++i) {
                pace.note(use);
            }
        }
        EXPECT_EQ(pace.isOrdered(), row.isOrdered) << row.what;
    }
}

} // namespace

} // namespace tallyroom
