#pragma once

#include <cstdint>

namespace tallyroom {

/// Which item a scan saw at a location: removal acts on this item or on none. Two items with the same
/// identity are the same file, folder or link. A plain value of 16 bytes.
struct ItemIdentity {
    /// The inode number; 0 when the item was not seen by a scan.
    std::uint64_t inode = 0;
    /// Device, type and, where they are told, mount and birth time, hashed: differs when another file system
    /// is mounted at the place, and when an inode number is used again.
    std::uint32_t stamp = 0;
    /// The folder that the scan started from, a key into ScanRoots; 0 for none.
    std::uint32_t root = 0;

    [[nodiscard]] bool isKnown() const noexcept { return inode != 0; }

    [[nodiscard]] bool isSameItem(const ItemIdentity& other) const noexcept
    {
        return inode == other.inode && stamp == other.stamp;
    }
};

} // namespace tallyroom
