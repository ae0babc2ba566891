#pragma once

#include "FileSystem/MountTable.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace tallyroom {

/// What a thread did, as far as it tells how disks answer.
struct DiskUse {
    std::chrono::nanoseconds worked{}; ///< on a processor
    std::chrono::nanoseconds slept{};  ///< neither on a processor nor in the queue for one
    std::int64_t sleeps = 0;
    std::int64_t blocksRead = 0; ///< that this thread asked a disk for

    /// What was done since `before`.
    [[nodiscard]] DiskUse since(const DiskUse& before) const
    {
        return {worked - before.worked, slept - before.slept, sleeps - before.sleeps,
                blocksRead - before.blocksRead};
    }
};

/// How a walk reads what a mount holds. A walk that meets a rotating disk may change its mind.
struct DiskDecision {
    std::vector<std::string> rotating; ///< disks, by their names; none for all else
    bool isOrdered = false;            ///< by one reader a disk

    friend bool operator==(const DiskDecision&, const DiskDecision&) = default;
};

/// What walks know of disks. Tests put another one in the place of the machine's. Any thread.
class DiskSense {
public:
    DiskSense() = default;
    DiskSense(const DiskSense&) = delete;
    DiskSense& operator=(const DiskSense&) = delete;
    virtual ~DiskSense() = default;

    /// The disks behind a mount that say that their media rotate, by their names ("sda"). None for what
    /// another machine or a program answers for.
    [[nodiscard]] virtual std::vector<std::string> rotatingDisks(const Mount& mount) const = 0;

    /// Whether these disks have answered so far as if nothing rotated in any of them.
    [[nodiscard]] virtual bool lookSolid(const std::vector<std::string>& /*disks*/) const { return false; }

    /// What the calling thread has done since some point in time.
    [[nodiscard]] virtual DiskUse useSoFar() const = 0;

    /// A walk has decided.
    virtual void hear(const DiskDecision& /*decision*/) const {}

    /// Calls `listener` whenever a walk decides, on its workers. Before the first walk; at most once.
    static void listen(std::function<void(const DiskDecision&)> listener);

    /// What the kernel says. A question about a mount costs some 50 µs, one about the thread 2 µs.
    [[nodiscard]] static const DiskSense& machine();
};

} // namespace tallyroom
