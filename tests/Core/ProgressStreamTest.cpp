#include "Concurrency/ProgressStream.h"

#include <gtest/gtest.h>
#include <thread>

namespace tallyroom {

namespace {

TEST(ProgressStream, ACancelledReaderTakesWhatCameAndWaitsForNoProducer)
{
    auto [sender, stream] = makeProgressStream<int>();
    sender.send(1);
    sender.send(2);
    EXPECT_EQ(stream.nextUntilCancelled(), 1);
    stream.cancel();
    sender.send(3);
    EXPECT_EQ(stream.nextUntilCancelled(), 2) << "sent before";
    EXPECT_EQ(stream.nextUntilCancelled(), std::nullopt) << "the sender is still there";
}

TEST(ProgressStream, CancellingWakesAReaderThatWaits)
{
    for (int round = 0; round < 1000; ++round) {
        auto [sender, stream] = makeProgressStream<int>();
        const std::jthread canceller{[&stream = stream] { stream.cancel(); }};
        EXPECT_EQ(stream.nextUntilCancelled(), std::nullopt);
    }
}

} // namespace

} // namespace tallyroom
