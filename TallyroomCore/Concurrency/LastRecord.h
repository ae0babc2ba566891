#pragma once

#include "Concurrency/ProgressStream.h"

#include <future>
#include <utility>

namespace tallyroom {

/// The last record of a stream, converted by `take`. The producers start at once; `get()` reads the stream to
/// its end on the caller's thread. Dropping the future cancels the stream.
template <class Record, class Take>
[[nodiscard]] auto lastRecord(ProgressStream<Record>&& stream, Take take)
{
    return std::async(std::launch::deferred, [stream = std::move(stream), take]() mutable {
        Record last;
        while (auto record = stream.next()) {
            last = std::move(*record);
        }
        return take(std::move(last));
    });
}

} // namespace tallyroom
