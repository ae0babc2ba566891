#include "Concurrency/WorkerPool.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

namespace tallyroom {

namespace {

using Jobs = std::vector<std::shared_ptr<WorkerPool::Job>>;

/// How many pieces a worker does for one job before it looks at the next one.
constexpr int piecesInARow = 16;

/// Disks answer many requests at once: on a cold cache the walk keeps gaining up to about this many
/// threads, and on a warm one the surplus costs nothing measurable (bench/compare --threads).
constexpr unsigned leastWidth = 16;

/// How long the program's end waits for threads that hang in the kernel, on a dead network mount for one.
constexpr std::chrono::seconds patience{2};

} // namespace

class WorkerPool::Workers {
public:
    explicit Workers(unsigned width) : m_width(width) {}

    [[nodiscard]] unsigned width() const noexcept { return m_width; }

    void start(const std::shared_ptr<Workers>& self)
    {
        m_threads.reserve(m_width);
        for (unsigned worker = 0; worker < m_width; ++worker) {
            m_threads.emplace_back([self, worker] { self->run(worker); });
        }
    }

    void add(std::shared_ptr<Job> job)
    {
        {
            const std::scoped_lock lock{m_mutex};
            m_jobs.push_back(std::move(job));
            ++m_jobsVersion;
            ++m_announced;
        }
        m_wake.notify_all();
    }

    void remove(const Job& job)
    {
        std::shared_ptr<Job> last; // destroyed after the lock
        const std::scoped_lock lock{m_mutex};
        const auto found = std::ranges::find(m_jobs, &job, &std::shared_ptr<Job>::get);
        if (found != m_jobs.end()) {
            last = std::move(*found);
            m_jobs.erase(found);
            ++m_jobsVersion;
        }
    }

    void announce(std::size_t pieces)
    {
        // Sequentially consistent with the sleeper's own look: either it sees the new number and stays up,
        // or this thread sees it asleep.
        m_announced.fetch_add(1);
        const std::size_t sleeping = m_sleeping.load();
        if (sleeping == 0 || pieces == 0) {
            return;
        }
        {
            const std::scoped_lock lock{m_mutex};
        }
        for (std::size_t woken = 0; woken < std::min(pieces, sleeping); ++woken) {
            m_wake.notify_one();
        }
    }

    void leave()
    {
        Jobs jobs;
        {
            const std::scoped_lock lock{m_mutex};
            m_leaving = true;
            jobs = m_jobs;
        }
        m_wake.notify_all();
        for (const auto& job : jobs) {
            job->abandon();
        }
        std::unique_lock lock{m_mutex};
        const bool allLeft = m_left.wait_for(lock, patience, [this] { return m_gone == m_width; });
        lock.unlock();
        for (std::jthread& thread : m_threads) {
            if (allLeft) {
                thread.join();
            } else {
                thread.detach();
            }
        }
        m_threads.clear();
    }

private:
    void run(unsigned worker)
    {
        Jobs jobs;
        std::size_t version = 0;
        std::size_t turn = worker;
        while (true) {
            const std::size_t announced = m_announced.load();
            bool leaving = false;
            if (version != m_jobsVersion.load() || m_leaving.load()) {
                const std::scoped_lock lock{m_mutex};
                jobs = m_jobs;
                version = m_jobsVersion.load();
                leaving = m_leaving;
            }
            if (leaving) {
                break;
            }
            if (!workOn(jobs, worker, ++turn)) {
                jobs.clear(); // a sleeping worker keeps no finished job alive
                version = 0;
                sleep(announced);
            }
        }
        jobs.clear();
        const std::scoped_lock lock{m_mutex};
        ++m_gone;
        m_left.notify_all();
    }

    static bool workOn(const Jobs& jobs, unsigned worker, std::size_t turn)
    {
        bool worked = false;
        for (std::size_t step = 0; step < jobs.size(); ++step) {
            Job& job = *jobs[(turn + step) % jobs.size()];
            for (int piece = 0; piece < piecesInARow && job.work(worker); ++piece) {
                worked = true;
            }
        }
        return worked;
    }

    void sleep(std::size_t announced)
    {
        std::unique_lock lock{m_mutex};
        m_sleeping.fetch_add(1);
        m_wake.wait(lock, [&] { return m_leaving || m_announced.load() != announced; });
        m_sleeping.fetch_sub(1);
    }

    const unsigned m_width;
    std::vector<std::jthread> m_threads;
    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::condition_variable m_left;
    Jobs m_jobs;                               // guarded by m_mutex
    unsigned m_gone = 0;                       // guarded by m_mutex
    std::atomic<bool> m_leaving = false;       // written under m_mutex
    std::atomic<std::size_t> m_jobsVersion{1}; // written under m_mutex
    std::atomic<std::size_t> m_announced{0};
    std::atomic<std::size_t> m_sleeping{0};
};

WorkerPool& WorkerPool::shared()
{
    static WorkerPool pool{std::max(leastWidth, 2 * std::thread::hardware_concurrency())};
    return pool;
}

WorkerPool::WorkerPool(unsigned width) : m_workers(std::make_shared<Workers>(std::max(width, 1U)))
{
    m_workers->start(m_workers);
}

WorkerPool::~WorkerPool()
{
    m_workers->leave();
}

unsigned WorkerPool::width() const noexcept
{
    return m_workers->width();
}

void WorkerPool::add(std::shared_ptr<Job> job)
{
    m_workers->add(std::move(job));
}

void WorkerPool::remove(const Job& job)
{
    m_workers->remove(job);
}

void WorkerPool::announce(std::size_t pieces)
{
    m_workers->announce(pieces);
}

} // namespace tallyroom
