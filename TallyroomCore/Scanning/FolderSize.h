#pragma once

#include "Model/Entry.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace tallyroom {

/// The size of an item: for a folder of all that lies below it, as a walk that came to its end has summed it.
struct FolderSize {
    std::int64_t bytes = 0;
    /// Folders that could not be listed and items that could not be examined, at it and below it: `bytes` is
    /// a lower bound when there are any.
    std::int64_t unread = 0;
    /// The part of `bytes` that is counted more than once: files with several names in the folder.
    std::int64_t countedAgain = 0;
    bool hasUnreadItems = false; ///< not all of `unread` are folders
    bool isUnreadable = false;   ///< the folder itself, and nothing is known of it

    /// Makes it the size of an entry, with all that goes with it.
    void applyTo(Entry& entry) const
    {
        constexpr std::int64_t most = std::numeric_limits<decltype(entry.unread)>::max();
        entry.sizeBytes = bytes;
        entry.unread = static_cast<std::uint32_t>(std::min(unread, most));
        entry.set(EntryMark::unreadable, isUnreadable);
        entry.set(EntryMark::unreadItems, hasUnreadItems);
    }

    friend bool operator==(const FolderSize&, const FolderSize&) = default;
};

} // namespace tallyroom
