#pragma once

#include "FileSystem/DiskSense.h"

#include <atomic>
#include <chrono>
#include <mutex>

namespace tallyroom {

/// Whether a disk that says that it rotates is best read in order, by one reader. Many readers make a head
/// jump, and one who reads in order is several times quicker. But what lies in memory needs no head, and some
/// disks only say that they rotate. So a walk begins in order, unless the disks have always been quick, and
/// goes on with all readers as soon as nothing makes the one wait for a while; when they all wait long, the
/// order comes back. Only sleeps with a read of the thread's own count: a busy processor changes nothing. Any
/// thread.
class DiskPace {
public:
    /// `patience`: so many times as long has nothing to make the one wait. More than 1 where what is read in
    /// order lies side by side.
    explicit DiskPace(bool isOrdered = true, int patience = 1) : m_isOrdered(isOrdered), m_patience(patience)
    {}

    [[nodiscard]] bool isOrdered() const noexcept { return m_isOrdered.load(std::memory_order_relaxed); }

    /// What one reader did just now on this disk. True when that changes how it is read.
    bool note(const DiskUse& use);

private:
    void noteOrdered(std::chrono::nanoseconds busy, bool isRead, bool isLong);
    void noteWide(std::chrono::nanoseconds busy, std::chrono::nanoseconds waited);

    std::atomic<bool> m_isOrdered; // written under m_mutex
    std::mutex m_mutex;
    std::chrono::nanoseconds m_sinceRead{}; // guarded by m_mutex, as are those below
    std::chrono::nanoseconds m_sinceLongWait{};
    std::chrono::nanoseconds m_busy{};   ///< of all readers, in the present window
    std::chrono::nanoseconds m_waited{}; ///< thereof in long waits
    int m_patience;                      ///< grows each time that all readers were too many
};

} // namespace tallyroom
