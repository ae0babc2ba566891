#pragma once

#include <chrono>
#include <ctime>

namespace tallyroom {

/// The time that a worker may look at files before it shows what it has seen. Costs next to nothing: its
/// clock ticks some hundred times a second.
class LookTime {
public:
    static constexpr std::chrono::milliseconds limit{20};

    [[nodiscard]] bool isOver() const { return now() - m_start >= limit; }

private:
    static std::chrono::nanoseconds now()
    {
        timespec time = {};
        ::clock_gettime(CLOCK_MONOTONIC_COARSE, &time);
        return std::chrono::seconds{time.tv_sec} + std::chrono::nanoseconds{time.tv_nsec};
    }

    std::chrono::nanoseconds m_start = now();
};

} // namespace tallyroom
