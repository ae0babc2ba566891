#pragma once

#include "Concurrency/ProgressStream.h"

#include <future>
#include <utility>

namespace tallyroom {

/// What `take` makes of a stream's last record. The producers work at once; who asks for the result reads the
/// stream to its end. A result that nobody asks for stops them.
template <class Record, class Take>
[[nodiscard]] auto lastRecord(ProgressStream<Record> stream, Take take)
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
