#include "FileSystem/Digest.h"

#include "Concurrency/ParallelMap.h"
#include "Support/TemporaryTree.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <numeric>
#include <stdexcept>
#include <string_view>

namespace tallyroom {

namespace {

std::span<const std::byte> bytesOf(std::string_view text)
{
    return std::as_bytes(std::span{text});
}

TEST(Digest, GivesThePublishedDigestsOneAfterAnother)
{
    Digester digester;
    EXPECT_EQ(digester.digest(bytesOf("")).text(),
              "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    EXPECT_EQ(digester.digest(bytesOf("abc")).text(),
              "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(digester.digest(bytesOf(std::string(1'000'000, 'a'))).text(),
              "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
}

TEST(Digest, CoversASpanOfAFileExactlyAndNothingThatIsNotThere)
{
    const std::string content = std::string(3'000'000, 'x') + "abc" + std::string(10, 'y');
    const TemporaryTree tree{file("f", content)};
    const FileDescriptor opened{::open(tree.path("f").c_str(), O_RDONLY | O_CLOEXEC)};
    Digester digester;
    std::atomic<std::int64_t> digested = 0;
    const auto digest = [&](FileSpan span) { return digester.digest(opened.get(), span, {}, digested); };
    EXPECT_EQ(digest({3'000'000, 3}), digester.digest(bytesOf("abc")));
    EXPECT_EQ(digest({1, 3'000'000}),
              digester.digest(bytesOf(std::string_view{content}.substr(1, 3'000'000))))
        << "several chunks, and one that is not full";
    EXPECT_EQ(digested, 3'000'003);
    EXPECT_EQ(digest({0, 3'000'014}), std::nullopt) << "a file that ends early has no digest";
    std::stop_source stop;
    stop.request_stop();
    EXPECT_EQ(digester.digest(opened.get(), {0, 1}, stop.get_token(), digested), std::nullopt);
}

TEST(ParallelMap, KeepsTheOrderOfItsInputsWithinItsLanes)
{
    WorkerPool pool{8};
    std::vector<int> inputs(5000);
    std::iota(inputs.begin(), inputs.end(), 0);
    std::atomic<int> inside = 0;
    std::atomic<int> most = 0;
    ParallelMapOptions options;
    options.lanes = 3;
    const auto squares = parallelMap(
        pool, std::span<const int>{inputs},
        [&](int number, unsigned worker) {
            EXPECT_LT(worker, 8U);
            const int now = ++inside;
            for (int seen = most; seen < now && !most.compare_exchange_weak(seen, now);) {
            }
            --inside;
            return number * number;
        },
        options);
    ASSERT_EQ(squares.size(), inputs.size());
    for (const int number : inputs) {
        ASSERT_EQ(squares[static_cast<std::size_t>(number)], number * number);
    }
    EXPECT_LE(most, 3);
}

TEST(ParallelMap, AStopOrAnExceptionLeavesNoWorkerBehind)
{
    WorkerPool pool{4};
    const std::vector<int> inputs(1000, 1);
    for (int round = 0; round < 50; ++round) {
        std::stop_source stop;
        ParallelMapOptions options{.lanes = 4, .stop = stop.get_token(), .whileWaiting = {}};
        std::atomic<int> calls = 0;
        const auto results = parallelMap(
            pool, std::span<const int>{inputs},
            [&](int number, unsigned) {
                if (++calls == 10) {
                    stop.request_stop();
                }
                return number;
            },
            options);
        EXPECT_EQ(std::accumulate(results.begin(), results.end(), 0), calls);
        EXPECT_LT(calls, 1000);
        const auto failing = [&](int number, unsigned) -> int {
            if (++calls % 100 == 0) {
                throw std::runtime_error("broken");
            }
            return number;
        };
        EXPECT_THROW(static_cast<void>(parallelMap(pool, std::span<const int>{inputs}, failing,
                                                   {.lanes = 4, .stop = {}, .whileWaiting = {}})),
                     std::runtime_error);
    }
}

} // namespace

} // namespace tallyroom
