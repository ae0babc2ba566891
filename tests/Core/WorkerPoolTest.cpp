#include "Concurrency/WorkerPool.h"

#include <atomic>
#include <condition_variable>
#include <gtest/gtest.h>
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

} // namespace

} // namespace tallyroom
