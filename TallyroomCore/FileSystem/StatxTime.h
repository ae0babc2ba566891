#pragma once

#include "Model/Entry.h"

#include <sys/stat.h>

namespace tallyroom {

/// Dates before 1678 and after 2262, which nanoseconds in 64 bits cannot tell, become the first or last one.
[[nodiscard]] inline Timestamp momentOf(const statx_timestamp& time)
{
    const std::chrono::seconds seconds{time.tv_sec};
    if (seconds >= std::chrono::floor<std::chrono::seconds>(Timestamp::max()).time_since_epoch()) {
        return Timestamp::max();
    }
    if (seconds <= std::chrono::ceil<std::chrono::seconds>(Timestamp::min()).time_since_epoch()) {
        return Timestamp::min();
    }
    return Timestamp{seconds + std::chrono::nanoseconds{time.tv_nsec}};
}

} // namespace tallyroom
