#pragma once

#include "Model/Entry.h"
#include "Model/SnapshotList.h"

namespace tallyroom {

/// Entries rank by size, larger first; equal sizes keep the order in which they came.
struct EntrySize {
    std::int64_t operator()(const Entry& entry) const noexcept { return entry.sizeBytes; }
};

/// The list of entries that scans send and screens show: cheap to copy, ranked when read.
using EntryList = SnapshotList<Entry, EntrySize>;

/// The same entries with equal sizes by path, so that results repeat.
[[nodiscard]] EntryList rankedByPath(const EntryList& entries);

} // namespace tallyroom
