#pragma once

#include "Concurrency/ProgressStream.h"

#include <utility>
#include <vector>

namespace tallyroom {

/// Waits for the end of a stream and gives all that it sent.
template <typename Record>
std::vector<Record> allRecords(ProgressStream<Record>&& stream)
{
    std::vector<Record> records;
    while (auto record = stream.next()) {
        records.push_back(std::move(*record));
    }
    return records;
}

} // namespace tallyroom
