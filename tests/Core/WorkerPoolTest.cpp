#include "Concurrency/WorkerPool.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <condition_variable>
#include <future>
#include <gtest/gtest.h>
#include <latch>
#include <mutex>

namespace tallyroom {

namespace {

/// A job of as many pieces as it is told, and a way to wait for the last one.
class Counted final : public WorkerPool::Job {
public:
    void offer(int pieces) { m_left.fetch_add(pieces); }

    bool work(unsigned /*worker*/) override
    {
        int left = m_left.load();
        do {
            if (left <= 0) {
                return false;
            }
        } while (!m_left.compare_exchange_weak(left, left - 1));
        const std::scoped_lock lock{m_mutex};
        ++m_done;
        m_changed.notify_all();
        return true;
    }

    void abandon() noexcept override {}

    void waitFor(int done)
    {
        std::unique_lock lock{m_mutex};
        m_changed.wait(lock, [&] { return m_done >= done; });
    }

private:
    std::atomic<int> m_left = 0;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    int m_done = 0; // guarded by m_mutex
};

/// A job that always has more to do, until it is abandoned.
class Endless final : public WorkerPool::Job {
public:
    bool work(unsigned /*worker*/) override { return !m_abandoned; }

    void abandon() noexcept override { m_abandoned = true; }

    [[nodiscard]] bool isAbandoned() const { return m_abandoned; }

private:
    std::atomic<bool> m_abandoned = false;
};

/// A job whose pieces do not come back before `answer`.
class Hanging final : public WorkerPool::Job {
public:
    explicit Hanging(int pieces) : m_left(pieces) {}

    bool work(unsigned worker) override
    {
        if (m_left.fetch_sub(1) <= 0) {
            return false;
        }
        EXPECT_FALSE(m_busy.at(worker).test_and_set()) << "one worker's number belongs to one thread";
        m_inside.count_down();
        m_answered.wait();
        m_busy.at(worker).clear();
        return true;
    }

    void abandon() noexcept override {}

    /// Waits until as many workers hang as the pool is wide.
    void waitForAll() { m_inside.wait(); }

    void answer() { m_answered.count_down(); }

    static constexpr unsigned width = 4;

private:
    std::atomic<int> m_left;
    std::latch m_inside{width};
    std::latch m_answered{1};
    std::array<std::atomic_flag, 32> m_busy;
};

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
    const auto shortJob = std::make_shared<Counted>();
    shortJob->offer(1000);
    pool.add(shortJob);
    shortJob->waitFor(1000); // hangs when the others starve it
}

TEST(WorkerPool, AFinishedJobIsLetGoThoughThePoolLivesOn)
{
    WorkerPool pool{4};
    std::promise<void> gone;
    auto future = gone.get_future();
    auto job = std::shared_ptr<Counted>{new Counted, [&gone](Counted* counted) {
                                            delete counted; // NOLINT(cppcoreguidelines-owning-memory)
                                            gone.set_value();
                                        }};
    job->offer(100);
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
    EXPECT_TRUE(endless->isAbandoned());
    EXPECT_EQ(endless.use_count(), 1) << "no thread holds a job any more";
}

TEST(WorkerPool, JobsThatHangLeaveWorkersToTheOthers)
{
    WorkerPool pool{Hanging::width, 28};
    std::vector<std::shared_ptr<Hanging>> hanging;
    for (int round = 1; round <= 3; ++round) {
        hanging.push_back(std::make_shared<Hanging>(100)); // more than there are workers
        pool.add(hanging.back());
        const auto job = std::make_shared<Counted>();
        job->offer(1000);
        pool.add(job);
        job->waitFor(1000); // hangs when nobody stands in for those that do
        pool.remove(*job);
    }
    std::ranges::for_each(hanging, &Hanging::answer);
    const auto job = std::make_shared<Counted>();
    job->offer(1000);
    pool.add(job);
    job->waitFor(1000);
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

} // namespace

} // namespace tallyroom
