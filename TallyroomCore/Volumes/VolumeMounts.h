#pragma once

#include "FileSystem/MountTable.h"

#include <optional>
#include <vector>

namespace tallyroom {

/// How a person sees a mount.
enum class MountClass : unsigned char {
    hidden, ///< the kernel's own, memory, images, what programs mount for themselves, EFI partitions
    disk,   ///< a file system on a disk; the system's root whatever it is on
    networkShare
};

/// Which mounts are volumes that a person knows. By the table alone: any thread, nothing waits.
namespace VolumeMounts {

[[nodiscard]] MountClass classOf(const Mount& mount);

/// The volumes among mounts that are all reachable, in the table's order, each once: of several mounts of one
/// device (bind mounts, subvolumes, datasets of one pool, one share mounted twice) "/" is taken, else the one
/// with the shortest mount point, else the first.
[[nodiscard]] std::vector<Mount> listed(const std::vector<Mount>& mounts);

/// False for a part of a file system that is mounted a second time (a bind mount). A subvolume is no such
/// part, though its root is not "/".
[[nodiscard]] bool showsAll(const Mount& mount);

/// True when both show one device, and so have the same figures.
[[nodiscard]] bool isSameVolume(const Mount& left, const Mount& right);

} // namespace VolumeMounts

} // namespace tallyroom
