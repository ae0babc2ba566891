#include "Concurrency/ParallelFor.h"

#include <atomic>
#include <condition_variable>
#include <exception>
#include <memory>
#include <mutex>
#include <utility>

namespace tallyroom {

namespace {

/// The workers' side of a loop. It refers to what lives in the caller's frame: the caller stays until
/// no worker is inside.
class LoopJob final : public WorkerPool::Job {
public:
    using Action = std::function<void(std::size_t, unsigned)>;

    LoopJob(std::size_t count, const Action& action, const ParallelForOptions& options)
        : m_count(count), m_action(action), m_options(options)
    {}

    bool work(unsigned worker) override
    {
        if (!enter()) {
            return false;
        }
        for (std::size_t index = 0; !isGivenUp() && (index = m_next.fetch_add(1)) < m_count;) {
            try {
                m_action(index, worker);
            } catch (...) {
                const std::scoped_lock lock{m_mutex};
                m_failure = std::current_exception();
                m_next = m_count;
            }
        }
        leave();
        return true;
    }

    void abandon() noexcept override
    {
        m_abandoned = true;
        const std::scoped_lock lock{m_mutex};
        m_isOver = true;
        m_changed.notify_all();
    }

    /// Lets no more workers in and waits until all have left.
    void close()
    {
        abandon();
        std::unique_lock lock{m_mutex};
        m_changed.wait(lock, [this] { return m_inside == 0; });
    }

    void wait()
    {
        std::unique_lock lock{m_mutex};
        const auto isDone = [this] { return m_isOver && m_inside == 0; };
        while (!m_changed.wait_for(lock, m_options.interval, isDone)) {
            lock.unlock();
            if (m_options.whileWaiting) {
                m_options.whileWaiting();
            }
            lock.lock();
        }
        if (m_failure != nullptr) {
            std::rethrow_exception(m_failure);
        }
    }

private:
    bool isGivenUp() const { return m_options.stop.stop_requested() || m_abandoned.load(); }

    bool enter()
    {
        const std::scoped_lock lock{m_mutex};
        if (m_isOver || m_inside == m_options.lanes) {
            return false;
        }
        ++m_inside;
        return true;
    }

    /// A worker leaves only when nothing is left to begin.
    void leave()
    {
        const std::scoped_lock lock{m_mutex};
        --m_inside;
        m_isOver = true;
        if (m_inside == 0) {
            m_changed.notify_all();
        }
    }

    const std::size_t m_count;
    const Action& m_action;
    const ParallelForOptions& m_options;
    std::atomic<std::size_t> m_next = 0;
    std::atomic<bool> m_abandoned = false;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    unsigned m_inside = 0;        // guarded by m_mutex
    bool m_isOver = false;        // guarded by m_mutex: no worker enters any more
    std::exception_ptr m_failure; // guarded by m_mutex
};

/// A job on its pool: gone, with everybody out of it, at the end of this object's life.
class RunningJob {
public:
    RunningJob(WorkerPool& pool, std::shared_ptr<LoopJob> job) : m_pool(pool), m_job(std::move(job))
    {
        m_pool.add(m_job);
    }

    RunningJob(const RunningJob&) = delete;
    RunningJob& operator=(const RunningJob&) = delete;

    ~RunningJob()
    {
        m_job->close();
        m_pool.remove(*m_job);
    }

private:
    WorkerPool& m_pool;
    const std::shared_ptr<LoopJob> m_job;
};

} // namespace

void parallelFor(WorkerPool& pool, std::size_t count,
                 const std::function<void(std::size_t, unsigned)>& action, const ParallelForOptions& options)
{
    if (count > 0) {
        const auto job = std::make_shared<LoopJob>(count, action, options);
        const RunningJob running{pool, job}; // also when `whileWaiting` throws
        job->wait();
    }
}

} // namespace tallyroom
