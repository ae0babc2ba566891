#pragma once

#include "Concurrency/WorkerPool.h"

#include <chrono>
#include <cstddef>
#include <functional>
#include <stop_token>

namespace tallyroom {

/// How a parallel loop runs.
struct ParallelForOptions {
    /// How many workers take part at most. Each works until nothing is left, so leave some of the pool to the
    /// other jobs.
    unsigned lanes = 1;
    /// Numbers that are not begun when it comes are left out.
    std::stop_token stop;
    /// Called on the caller's thread about every `interval` while it waits.
    std::function<void()> whileWaiting;
    std::chrono::milliseconds interval{100};
};

/// Calls `action(number, worker)` for every number below `count` on the pool's workers; `worker` is below the
/// pool's capacity and belongs to one thread at a time. The caller waits, so it must not be a worker of that
/// pool. Passes on an exception of `action`.
void parallelFor(WorkerPool& pool, std::size_t count,
                 const std::function<void(std::size_t number, unsigned worker)>& action,
                 const ParallelForOptions& options);

} // namespace tallyroom
