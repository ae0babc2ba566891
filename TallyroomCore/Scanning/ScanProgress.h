#pragma once

#include "FileSystem/UnreadPlaces.h"
#include "Model/EntryList.h"
#include "Scanning/CountedAgain.h"

#include <cstdint>
#include <optional>
#include <tuple>

namespace tallyroom {

/// One record of a scan: the whole list so far, never a difference.
struct ScanProgress {
    /// All results so far, largest first.
    EntryList entries;
    /// How many work items are done.
    std::int64_t completed = 0;
    /// How many there are; 0 while not known.
    std::int64_t total = 0;
    /// True while the producer still looks for its work items and `total` is not final.
    bool isDiscovering = false;
    /// Why the scanned folder itself cannot be read: then nothing is known of what it holds. In the last
    /// record only. Not a part of equality.
    std::optional<SystemError> unread = {};
    /// What could not be read, the scanned folder included; null when all was, and but for the last record.
    /// Not a part of equality.
    SharedUnreadPlaces unreadPlaces = {};
    /// What a listing counts more than once; in the last record only. Not a part of equality.
    SharedCountedAgain countedAgain = {};

    /// completed / total; 0 when total is below 1.
    [[nodiscard]] double fraction() const noexcept
    {
        return total < 1 ? 0.0 : static_cast<double>(completed) / static_cast<double>(total);
    }

    friend bool operator==(const ScanProgress& left, const ScanProgress& right)
    {
        const auto fields = [](const ScanProgress& record) {
            return std::tie(record.entries, record.completed, record.total, record.isDiscovering);
        };
        return fields(left) == fields(right);
    }
};

} // namespace tallyroom
