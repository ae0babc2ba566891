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
    /// How many items below it are no folders.
    std::int64_t files = 0;
    /// At least the size of the largest of those that lie directly in it, and of the largest folder that
    /// does.
    std::int64_t largestFile = 0;
    std::int64_t largestFolder = 0;
    /// When one of them last changed, in seconds since 1970, within 1970 and 2106; 0 when nothing tells.
    std::uint32_t newest = 0;
    bool hasUnreadItems = false; ///< not all of `unread` are folders
    bool hasExcluded = false;    ///< some of `unread` is left out because the user says so
    bool isUnreadable = false;   ///< the folder itself, and nothing is known of it

    /// Makes it the size of an entry, with all that goes with it.
    void applyTo(Entry& entry) const
    {
        constexpr std::int64_t most = std::numeric_limits<decltype(entry.unread)>::max();
        entry.sizeBytes = bytes;
        entry.unread = static_cast<std::uint32_t>(std::min(unread, most));
        entry.set(EntryMark::unreadable, isUnreadable);
        entry.set(EntryMark::unreadItems, hasUnreadItems);
        entry.set(EntryMark::excluded, hasExcluded);
    }

    friend bool operator==(const FolderSize&, const FolderSize&) = default;
};

} // namespace tallyroom
