#pragma once

#include "Model/Entry.h"

#include <cstdint>
#include <stop_token>
#include <vector>

namespace tallyroom {

/// What the volume gets back when items are deleted for good. Bytes on disk.
struct Reclaim {
    /// What belongs to these items alone.
    std::int64_t atLeast = 0;
    /// The same with the blocks that may be shared: with other files, with a snapshot, or among these items.
    std::int64_t atMost = 0;
    /// Of files that keep a name elsewhere: nothing of this comes back.
    std::int64_t linkedElsewhere = 0;
    /// Folders that could not be listed, with whatever lies there, and items that could not be examined.
    std::uint32_t unread = 0;
    bool hasUnreadItems = false; ///< not all of `unread` are folders

    [[nodiscard]] bool isExact() const noexcept { return atLeast == atMost && unread == 0; }

    friend bool operator==(const Reclaim&, const Reclaim&) = default;
};

/// Measures what deleting `entries` for good would give back; what a stop leaves out counts as nothing. A
/// file with several names counts when all of them lie in these items. On file systems where files share
/// blocks (Btrfs, XFS, bcachefs) each extent of a file is looked at (FS_IOC_FIEMAP); ZFS does not tell what
/// its snapshots hold, so nothing is certain there. Waits for the disk; any thread.
[[nodiscard]] Reclaim measureReclaim(const std::vector<Entry>& entries, const std::stop_token& stop);

} // namespace tallyroom
