#pragma once

#include "Concurrency/WorkerPool.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <span>
#include <stop_token>
#include <type_traits>
#include <utility>
#include <vector>

namespace tallyroom {

/// How a parallel map goes about its work.
struct ParallelMapOptions {
    /// How many workers take part at most. Each keeps at it until nothing is left, so leave some of the pool
    /// to the other jobs.
    unsigned lanes = 1;
    /// Inputs that are not begun when it comes are left out.
    std::stop_token stop;
    /// Called on the caller's thread about every `interval` while it waits.
    std::function<void()> whileWaiting;
    std::chrono::milliseconds interval{100};
};

namespace detail {

/// The workers' side of a parallel map. It refers to what lives in the caller's frame: the caller stays until
/// no worker is inside.
template <class Input, class Result, class Function>
class ParallelMapJob final : public WorkerPool::Job {
public:
    ParallelMapJob(std::span<const Input> inputs, Function& function, const ParallelMapOptions& options)
        : m_inputs(inputs), m_function(function), m_stop(options.stop), m_lanes(options.lanes),
          m_results(inputs.size())
    {}

    bool work(unsigned worker) override
    {
        if (!enter()) {
            return false;
        }
        for (std::size_t index = 0; !isGivenUp() && (index = m_next.fetch_add(1)) < m_inputs.size();) {
            try {
                m_results[index] = m_function(m_inputs[index], worker);
            } catch (...) {
                const std::scoped_lock lock{m_mutex};
                m_failure = std::current_exception();
                m_next = m_inputs.size();
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

    /// Lets nobody in any more and waits until nobody is inside.
    void close()
    {
        abandon();
        std::unique_lock lock{m_mutex};
        m_changed.wait(lock, [this] { return m_inside == 0; });
    }

    std::vector<Result> wait(const ParallelMapOptions& options)
    {
        std::unique_lock lock{m_mutex};
        const auto isDone = [this] { return m_isOver && m_inside == 0; };
        while (!m_changed.wait_for(lock, options.interval, isDone)) {
            lock.unlock();
            if (options.whileWaiting) {
                options.whileWaiting();
            }
            lock.lock();
        }
        if (m_failure != nullptr) {
            std::rethrow_exception(m_failure);
        }
        return std::move(m_results);
    }

private:
    bool isGivenUp() const { return m_stop.stop_requested() || m_abandoned.load(); }

    bool enter()
    {
        const std::scoped_lock lock{m_mutex};
        if (m_isOver || m_inside == m_lanes) {
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

    const std::span<const Input> m_inputs;
    Function& m_function;
    const std::stop_token m_stop;
    const unsigned m_lanes;
    std::atomic<std::size_t> m_next = 0;
    std::atomic<bool> m_abandoned = false;
    std::vector<Result> m_results; // a slot a piece of work, no lock needed
    std::mutex m_mutex;
    std::condition_variable m_changed;
    unsigned m_inside = 0;        // guarded by m_mutex
    bool m_isOver = false;        // guarded by m_mutex: nobody enters any more
    std::exception_ptr m_failure; // guarded by m_mutex
};

/// A parallel map's job on its pool: gone, with everybody out of it, at the end of this object's life.
template <class Job>
class RunningJob {
public:
    RunningJob(WorkerPool& pool, std::shared_ptr<Job> job) : m_pool(pool), m_job(std::move(job))
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
    const std::shared_ptr<Job> m_job;
};

} // namespace detail

/// Applies `function(input, worker)` to every input on the pool's workers and returns the results in the
/// order of the inputs; `worker` is below the pool's capacity and belongs to one thread at a time. The caller
/// waits, so it must not be a worker of that pool. An input that a stop left out has a default result. The
/// first exception of `function` is passed on.
template <class Input, class Function>
[[nodiscard]] auto parallelMap(WorkerPool& pool, std::span<const Input> inputs, Function function,
                               const ParallelMapOptions& options)
{
    using Result = std::invoke_result_t<Function&, const Input&, unsigned>;
    if (inputs.empty()) {
        return std::vector<Result>{};
    }
    const auto job =
        std::make_shared<detail::ParallelMapJob<Input, Result, Function>>(inputs, function, options);
    const detail::RunningJob running{pool, job}; // also when `whileWaiting` throws
    return job->wait(options);
}

} // namespace tallyroom
