#include "Concurrency/ProgressStream.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <iterator>
#include <memory>
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

TEST(ProgressStream, NothingThatArrivedIsLostOrToldTwiceHoweverItIsTaken)
{
    auto [sender, stream] = makeProgressStream<int>();
    for (const int record : {1, 2, 3}) {
        sender.send(record);
    }
    EXPECT_EQ(stream.next(), 1);
    sender.send(4);
    EXPECT_EQ(stream.takeArrived().records, (std::vector{2, 3, 4}));
    EXPECT_TRUE(stream.takeArrived().records.empty());
    sender.send(5);
    EXPECT_EQ(stream.next(), 5);
}

TEST(ProgressStream, AnotherStreamInItsPlaceStopsTheFormerProducers)
{
    auto [formerSender, stream] = makeProgressStream<int>();
    auto [sender, other] = makeProgressStream<int>();
    formerSender.send(1);
    formerSender.send(1);
    EXPECT_EQ(stream.next(), 1);
    stream = std::move(other);
    EXPECT_TRUE(formerSender.stopToken().stop_requested());
    EXPECT_FALSE(sender.stopToken().stop_requested());
    sender.send(2);
    EXPECT_EQ(stream.next(), 2);
}

TEST(ProgressStream, WakesItsReaderOnceForAllThatWaitsAndForTheEnd)
{
    auto [first, stream] = makeProgressStream<int>();
    auto sender = std::make_unique<ProgressSender<int>>(std::move(first));
    sender->send(1); // before anybody listens
    std::vector<ProgressStream<int>::Arrived> seen;
    stream.onWake([&seen, &stream = stream] { seen.push_back(stream.takeArrived()); }); // under no lock
    sender->send(2);
    stream.onWake([] {});
    sender->send(3);
    sender->send(4);
    stream.onWake([&seen, &stream = stream] { seen.push_back(stream.takeArrived()); });
    sender.reset();
    std::vector<std::vector<int>> records;
    std::ranges::transform(seen, std::back_inserter(records), &ProgressStream<int>::Arrived::records);
    EXPECT_EQ(records, (std::vector<std::vector<int>>{{1}, {2}, {3, 4}, {}}));
    EXPECT_TRUE(seen.back().ended);
}

} // namespace

} // namespace tallyroom
