#include "Concurrency/WorkerPool.h"

#include "Concurrency/Thread.h"
#include "Concurrency/WorkerPlaces.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

namespace tallyroom {

namespace {

/// How many pieces a worker does for one job before it looks at the next one.
constexpr int piecesInARow = 16;

/// Disks answer many requests at once: on a cold cache the walk keeps gaining up to about this many
/// threads, and on a warm one the surplus costs nothing measurable (bench/compare --threads).
constexpr unsigned leastWidth = 16;

/// How many workers of the process's pool may hang in the kernel before others have to wait for them.
constexpr unsigned spareWorkers = 64;

/// How often the workers are looked at while there are jobs.
constexpr std::chrono::milliseconds watchInterval{100};

/// How long the program's end waits for pieces of work that are not known to hang.
constexpr std::chrono::seconds patience{1};

} // namespace

class WorkerPool::Workers {
    using Place = WorkerPlace;

public:
    Workers(unsigned width, unsigned spare) : m_width(width), m_places(width + spare) {}

    [[nodiscard]] unsigned width() const noexcept { return m_width; }

    [[nodiscard]] unsigned capacity() const noexcept { return m_places.count(); }

    static void start(const std::shared_ptr<Workers>& self)
    {
        const std::scoped_lock lock{self->m_mutex};
        self->fill(self);
        if (self->capacity() == self->m_width) {
            return;
        }
        self->m_watch = tryThread([self] { self->watch(self); }); // without it no worker is replaced
    }

    static void add(const std::shared_ptr<Workers>& self, std::shared_ptr<Job> job)
    {
        const auto running = std::make_shared<Running>();
        running->job = std::move(job);
        Place* own = nullptr;
        {
            const std::scoped_lock lock{self->m_mutex};
            self->m_jobs.push_back(running);
            ++self->m_jobsVersion;
            ++self->m_announced;
            self->fill(self); // threads that could not be started earlier
            own = self->m_count == 0 ? self->m_places.take() : nullptr;
        }
        self->m_wake.notify_all();
        self->m_watchWake.notify_one();
        if (own != nullptr) {
            self->workAlone(*running->job, *own);
        }
    }

    void remove(const Job& job)
    {
        std::shared_ptr<Running> last; // destroyed after the lock
        const std::scoped_lock lock{m_mutex};
        const auto found = std::ranges::find_if(
            m_jobs, [&job](const std::shared_ptr<Running>& running) { return running->job.get() == &job; });
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
        std::jthread watch;
        {
            const std::scoped_lock lock{m_mutex};
            m_leaving = true;
            jobs = m_jobs;
            watch = std::move(m_watch);
        }
        m_wake.notify_all();
        m_watchWake.notify_one();
        for (const auto& running : jobs) {
            running->job->abandon();
        }
        if (watch.joinable()) {
            watch.join();
        }
        std::unique_lock lock{m_mutex};
        m_left.wait_for(lock, patience, [this] { return m_count == m_places.heldUp(); });
        const std::vector<std::jthread> gone = m_places.giveUp();
        lock.unlock(); // the threads that are gone may still be about to let go of it
    }

private:
    /// How a job gets workers.
    enum class Standing : unsigned char {
        usual,
        last,      ///< it holds up workers: it gets those that find nothing else to do
        passedOver ///< it holds up so many that it gets no more
    };

    /// A job on the pool.
    struct Running {
        std::shared_ptr<Job> job;
        std::atomic<Standing> standing = Standing::usual;
    };

    using Jobs = std::vector<std::shared_ptr<Running>>;

    /// Starts workers until there are enough that are not held up, or no more can be had.
    void fill(const std::shared_ptr<Workers>& self)
    {
        for (unsigned missing = m_width + m_places.heldUp(); m_count < missing;) {
            Place* const place = m_leaving ? nullptr : m_places.take();
            if (place == nullptr) {
                return;
            }
            // A former worker of this place has let go of the mutex, and is joined here.
            place->thread = tryThread([self, place] { self->run(*place); });
            if (!place->thread.joinable()) {
                WorkerPlaces::leave(*place);
                return;
            }
            ++m_count;
        }
    }

    void run(Place& place)
    {
        Jobs jobs;
        std::size_t version = 0;
        std::size_t turn = m_places.numberOf(place);
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
            if (!workOn(jobs, place, ++turn)) {
                jobs.clear(); // a sleeping worker keeps no finished job alive
                version = 0;
                if (!sleep(place, announced)) {
                    return;
                }
            }
        }
        jobs.clear();
        const std::scoped_lock lock{m_mutex};
        end(place);
    }

    void end(Place& place)
    {
        WorkerPlaces::leave(place);
        --m_count;
        m_left.notify_all();
    }

    bool workOn(const Jobs& jobs, Place& place, std::size_t turn) const
    {
        return workOn(jobs, place, turn, Standing::usual, piecesInARow) ||
               workOn(jobs, place, turn, Standing::last, 1);
    }

    bool workOn(const Jobs& jobs, Place& place, std::size_t turn, Standing standing, int pieces) const
    {
        bool worked = false;
        for (std::size_t step = 0; step < jobs.size(); ++step) {
            Running& running = *jobs[(turn + step) % jobs.size()];
            if (running.standing.load(std::memory_order_relaxed) != standing) {
                continue;
            }
            place.within.store(&running, std::memory_order_relaxed);
            for (int piece = 0; piece < pieces && workOnce(*running.job, place); ++piece) {
                worked = true;
            }
        }
        return worked;
    }

    bool workOnce(Job& job, Place& place) const
    {
        const std::uint64_t beat = place.beat.load(std::memory_order_relaxed);
        place.beat.store(beat + 1, std::memory_order_release);
        const bool worked = job.work(m_places.numberOf(place));
        place.beat.store(beat + 2, std::memory_order_release);
        return worked;
    }

    /// Does a job whole on the thread that adds it: there is no other one.
    void workAlone(Job& job, Place& place)
    {
        while (!m_leaving.load() && workOnce(job, place)) {
        }
        const std::scoped_lock lock{m_mutex};
        WorkerPlaces::leave(place);
    }

    /// Waits for more work. False when this worker is one too many and has ended.
    bool sleep(Place& place, std::size_t announced)
    {
        std::unique_lock lock{m_mutex};
        place.isHeldUp = false;
        if (m_count > m_width && m_count - m_places.heldUp() > m_width) {
            end(place);
            return false;
        }
        m_sleeping.fetch_add(1);
        m_wake.wait(lock, [&] { return m_leaving || m_announced.load() != announced; });
        m_sleeping.fetch_sub(1);
        return true;
    }

    /// Looks after the workers for as long as there are jobs.
    void watch(const std::shared_ptr<Workers>& self)
    {
        std::unique_lock lock{m_mutex};
        while (!m_leaving) {
            m_watchWake.wait(lock, [this] { return m_leaving || !m_jobs.empty(); });
            m_watchWake.wait_for(lock, watchInterval, [this] { return m_leaving.load(); });
            m_places.look();
            judgeJobs();
            if (m_sleeping.load() == 0) {
                fill(self);
            }
        }
    }

    /// No job may hold up more than a quarter of the workers that others do not: so many a job at a time can
    /// be lost, and some are left for the next one.
    void judgeJobs()
    {
        const auto all = m_places.heldUp();
        bool mayGoOn = all > 0; // beside what hangs there may be more to do
        for (const auto& running : m_jobs) {
            const unsigned own = m_places.heldUpWithin(running.get());
            const Standing now = own == 0                               ? Standing::usual
                                 : own > (capacity() - (all - own)) / 4 ? Standing::passedOver
                                                                        : Standing::last;
            const Standing before = running->standing.exchange(now);
            mayGoOn |= before == Standing::passedOver && now != before;
        }
        if (mayGoOn) {
            ++m_announced;
            m_wake.notify_all();
        }
    }

    const unsigned m_width;
    WorkerPlaces m_places;
    std::jthread m_watch; // guarded by m_mutex
    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::condition_variable m_watchWake;
    std::condition_variable m_left;
    Jobs m_jobs;                               // guarded by m_mutex
    unsigned m_count = 0;                      // of threads that work; guarded by m_mutex
    std::atomic<bool> m_leaving = false;       // written under m_mutex
    std::atomic<std::size_t> m_jobsVersion{1}; // written under m_mutex
    std::atomic<std::size_t> m_announced{0};
    std::atomic<std::size_t> m_sleeping{0};
};

WorkerPool& WorkerPool::shared()
{
    // Never destroyed: a worker that hangs may come back to it while the program ends.
    static WorkerPool& pool =
        *new WorkerPool{std::max(leastWidth, 2 * std::thread::hardware_concurrency()), spareWorkers};

    struct AtExit {
        ~AtExit() { pool.m_workers->leave(); }
    };

    static const AtExit leaving;
    return pool;
}

WorkerPool::WorkerPool(unsigned width, unsigned spare)
    : m_workers(std::make_shared<Workers>(std::max(width, 1U), spare))
{
    Workers::start(m_workers);
}

WorkerPool::~WorkerPool()
{
    m_workers->leave();
}

unsigned WorkerPool::width() const noexcept
{
    return m_workers->width();
}

unsigned WorkerPool::capacity() const noexcept
{
    return m_workers->capacity();
}

void WorkerPool::add(std::shared_ptr<Job> job)
{
    Workers::add(m_workers, std::move(job));
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
