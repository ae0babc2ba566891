#include "Concurrency/ParallelFor.h"
#include "Concurrency/ProgressStream.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <future>
#include <gtest/gtest.h>
#include <iterator>
#include <latch>
#include <memory>
#include <stdexcept>
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

/// A job of as many pieces as it is told.
class Counted : public WorkerPool::Job {
public:
    explicit Counted(int pieces = 0) : m_left(pieces) {}

    void offer(int pieces) { m_left.fetch_add(pieces); }

    bool work(unsigned worker) override
    {
        int left = m_left;
        do {
            if (left <= 0) {
                return false;
            }
        } while (!m_left.compare_exchange_weak(left, left - 1));
        piece(worker);
        ++m_done;
        m_done.notify_all();
        return true;
    }

    void abandon() noexcept override {}

    void waitFor(int done) const
    {
        for (int now = m_done; now < done; now = m_done) {
            m_done.wait(now);
        }
    }

protected:
    virtual void piece(unsigned /*worker*/) {}

private:
    std::atomic<int> m_left;
    std::atomic<int> m_done = 0;
};

/// A job whose pieces do not come back before `answer`.
class Hanging final : public Counted {
public:
    using Counted::Counted;

    /// Waits until as many workers hang as the pool is wide.
    void waitForAll() { m_inside.wait(); }

    void answer() { m_answered.count_down(); }

    static constexpr unsigned width = 4;

private:
    void piece(unsigned worker) override
    {
        EXPECT_FALSE(m_busy.at(worker).test_and_set()) << "one worker's number belongs to one thread";
        m_inside.count_down();
        m_answered.wait();
        m_busy.at(worker).clear();
    }

    std::latch m_inside{width};
    std::latch m_answered{1};
    std::array<std::atomic_flag, 32> m_busy;
};

/// A job that always has more to do, until it is abandoned.
struct Endless final : WorkerPool::Job {
    bool work(unsigned /*worker*/) override { return !isAbandoned; }

    void abandon() noexcept override { isAbandoned = true; }

    std::atomic<bool> isAbandoned = false;
};

/// Adds a job of many pieces and waits for its end; hangs when others starve it.
void doJob(WorkerPool& pool)
{
    const auto job = std::make_shared<Counted>(1000);
    pool.add(job);
    job->waitFor(1000);
    pool.remove(*job);
}

TEST(WorkerPool, NoWakeUpIsLostBetweenLookingForWorkAndFallingAsleep)
{
    WorkerPool pool{4};
    const auto job = std::make_shared<Counted>();
    pool.add(job);
    for (int round = 1; round <= 5'000; ++round) {
        job->offer(1);
        pool.announce(1);
        job->waitFor(round); // hangs when the wake-up went missing
    }
    pool.remove(*job);
}

TEST(WorkerPool, AShortJobIsDoneWhileEndlessOnesRun)
{
    WorkerPool pool{2};
    pool.add(std::make_shared<Endless>());
    pool.add(std::make_shared<Endless>());
    pool.add(std::make_shared<Endless>());
    doJob(pool);
}

TEST(WorkerPool, AFinishedJobIsLetGoThoughThePoolLivesOn)
{
    WorkerPool pool{4};
    std::promise<void> gone;
    auto future = gone.get_future();
    auto job = std::shared_ptr<Counted>{new Counted{100}, [&gone](Counted* counted) {
                                            delete counted; // NOLINT(cppcoreguidelines-owning-memory)
                                            gone.set_value();
                                        }};
    pool.add(job);
    job->waitFor(100);
    pool.remove(*job);
    job.reset();
    future.wait(); // hangs when somebody keeps it
}

TEST(WorkerPool, ThePoolsEndAbandonsWhatStillRuns)
{
    const auto endless = std::make_shared<Endless>();
    {
        WorkerPool pool{3};
        pool.add(endless);
    }
    EXPECT_TRUE(endless->isAbandoned);
    EXPECT_EQ(endless.use_count(), 1) << "no thread holds a job any more";
}

TEST(WorkerPool, JobsThatHangLeaveWorkersToTheOthers)
{
    WorkerPool pool{Hanging::width, 28};
    std::vector<std::shared_ptr<Hanging>> hanging;
    for (int round = 1; round <= 3; ++round) {
        hanging.push_back(std::make_shared<Hanging>(100)); // more than there are workers
        pool.add(hanging.back());
        doJob(pool);
    }
    std::ranges::for_each(hanging, &Hanging::answer);
    doJob(pool);
}

TEST(WorkerPool, ItsEndDoesNotWaitForWorkersThatHang)
{
    const auto hanging = std::make_shared<Hanging>(Hanging::width);
    {
        WorkerPool pool{Hanging::width, 8};
        pool.add(hanging);
        hanging->waitForAll();
    }
    hanging->answer(); // the pool's end would hang when it waited for this
}

TEST(ParallelFor, TakesEveryNumberOnceWithinItsLanes)
{
    WorkerPool pool{8};
    std::vector<std::atomic<int>> calls(5000);
    std::atomic<int> inside = 0;
    std::atomic<int> most = 0;
    std::latch mayLeave{3};
    const ParallelForOptions options{.lanes = 3, .stop = {}, .whileWaiting = [&] {
                                         mayLeave.try_wait() ? void() : mayLeave.count_down();
                                     }};
    parallelFor(
        pool, calls.size(),
        [&](std::size_t number, unsigned worker) {
            EXPECT_LT(worker, 8U);
            const int now = ++inside;
            for (int seen = most; seen < now && !most.compare_exchange_weak(seen, now);) {
            }
            mayLeave.wait(); // so that others can come in
            --inside;
            ++calls[number];
        },
        options);
    EXPECT_TRUE(std::ranges::all_of(calls, [](const auto& count) { return count == 1; }));
    EXPECT_LE(most, 3);
}

TEST(ParallelFor, AStopOrAnExceptionLeavesNoWorkerBehind)
{
    WorkerPool pool{4};
    for (int round = 0; round < 50; ++round) {
        std::stop_source stop;
        std::atomic<int> begun = 0;
        std::atomic<int> ended = 0;
        const ParallelForOptions options{.lanes = 4, .stop = stop.get_token(), .whileWaiting = {}};
        const auto failing = [&](std::size_t, unsigned) {
            if (++begun % 100 == 0) {
                throw std::runtime_error("broken");
            }
        };
        EXPECT_THROW(parallelFor(pool, 1000, failing, options), std::runtime_error);
        begun = 0;
        const auto stopping = [&](std::size_t, unsigned) {
            if (++begun >= 10) {
                stop.request_stop(); // the first to ask may be slow: each of those after it asks too
            }
            ++ended;
        };
        parallelFor(pool, 1000, stopping, options);
        EXPECT_EQ(ended, begun);
        EXPECT_LT(begun, 10 + 4);
    }
}

} // namespace

} // namespace tallyroom
