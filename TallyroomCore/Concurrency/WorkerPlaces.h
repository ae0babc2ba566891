#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <thread>
#include <vector>

namespace tallyroom {

/// The place of one worker of a pool. Its number is the worker's.
struct alignas(64) WorkerPlace {
    // Written by the worker:
    std::atomic<std::uint64_t> beat = 0;       ///< grows with each piece of work; odd within one
    std::atomic<const void*> within = nullptr; ///< what the latest piece belongs to, only to be compared

    // Guarded by the pool's mutex:
    std::jthread thread;
    bool isTaken = false;
    bool isHeldUp = false;
    std::uint64_t seenBeat = 0;
    std::chrono::steady_clock::time_point seenAt;
};

/// The places of a pool's workers, and which of them are held up. Under the pool's mutex, unless stated.
class WorkerPlaces {
public:
    explicit WorkerPlaces(unsigned count) : m_places(count) {}

    /// Any thread.
    [[nodiscard]] unsigned count() const noexcept { return static_cast<unsigned>(m_places.size()); }

    /// Any thread.
    [[nodiscard]] unsigned numberOf(const WorkerPlace& place) const noexcept
    {
        return static_cast<unsigned>(&place - m_places.data());
    }

    /// A free place, taken now; none when all are taken.
    [[nodiscard]] WorkerPlace* take();

    static void leave(WorkerPlace& place);

    /// Looks at the beats: a worker that has sat in one piece of work too long is held up.
    void look();

    [[nodiscard]] unsigned heldUp() const;

    /// How many are held up within one job.
    [[nodiscard]] unsigned heldUpWithin(const void* job) const;

    /// The threads that have left their places, to be joined; those that have not are detached.
    [[nodiscard]] std::vector<std::jthread> giveUp();

private:
    std::vector<WorkerPlace> m_places;
};

} // namespace tallyroom
