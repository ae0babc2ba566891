#pragma once

#include <memory>

namespace tallyroom {

/// Threads made for blocking I/O: more of them than cores. Jobs offer pieces of work; every worker goes round
/// the jobs that are running, so that a long scan never starves a short one. No piece of work may wait for
/// another piece of work of the pool.
///
/// A worker whose piece takes more than a second counts as held up, for example by a volume that does not
/// answer. While no other worker is free, a spare one takes its place, and a job that holds up many workers
/// gets no more of them. Spare workers end once they are too many. Where the system grants no threads at all,
/// `add` does the work on the caller's thread.
class WorkerPool {
public:
    /// Something that can be worked on by many threads at once.
    class Job {
    public:
        Job() = default;
        Job(const Job&) = delete;
        Job& operator=(const Job&) = delete;
        virtual ~Job() = default;

        /// Does one short piece of work (a folder, a block of a file). False when there is none to be had
        /// now; the job then calls `announce` as soon as there is. Called by many workers at once; `worker`
        /// is below the pool's capacity and belongs to one thread at a time.
        virtual bool work(unsigned worker) = 0;

        /// The program is leaving: give up what is left. Any thread.
        virtual void abandon() noexcept = 0;
    };

    /// The pool of the process, made on first use. At the program's end it abandons what still runs.
    static WorkerPool& shared();

    /// `spare`: how many workers may be held up and replaced.
    explicit WorkerPool(unsigned width, unsigned spare = 0);
    WorkerPool(const WorkerPool&) = delete;
    WorkerPool& operator=(const WorkerPool&) = delete;

    /// Abandons the jobs and waits for the workers, but not for those that are held up.
    ~WorkerPool();

    /// How many workers work at the same time, held up ones aside.
    [[nodiscard]] unsigned width() const noexcept;

    /// How many workers there can be at most: the number of each is below it.
    [[nodiscard]] unsigned capacity() const noexcept;

    /// Starts to work on a job, and keeps it alive until it is removed.
    void add(std::shared_ptr<Job> job);

    /// The job is done; workers that hold it finish the call they are in.
    void remove(const Job& job);

    /// Up to `pieces` more pieces of work can be had: wakes as many sleeping workers. Cheap when none sleeps.
    void announce(std::size_t pieces);

private:
    class Workers;
    std::shared_ptr<Workers> m_workers; // shared with the threads, which may outlive a pool that cannot wait
};

} // namespace tallyroom
