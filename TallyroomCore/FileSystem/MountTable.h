#pragma once

#include "Model/FileUrl.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace tallyroom {

/// One mount as the kernel describes it (proc_pid_mountinfo(5)). All texts are bytes without escapes.
struct Mount {
    int id = 0;
    int parentId = 0;         ///< the mount that it was mounted on
    std::uint64_t device = 0; ///< major number × 2^32 + minor number; major 0 when no block device is behind
    std::string root;         ///< the folder of the file system that it shows; "/" for all of it
    std::string mountPoint;   ///< where it is seen; absolute
    std::string type;         ///< "ext4", "nfs4", "fuse.sshfs"
    std::string source;       ///< "/dev/sda1", "server:/export", or anything else
    std::string subvolume;    ///< of btrfs: the subvolume that holds `root`

    friend bool operator==(const Mount&, const Mount&) = default;
};

/// The mounts of this machine. Any thread; nothing here touches a mounted file system, so nothing waits.
namespace MountTable {

/// The mounts of a file in the form of /proc/self/mountinfo, in its order. Skips lines that make no
/// sense; an unreadable file has no mounts.
[[nodiscard]] std::vector<Mount> read(const std::string& path = "/proc/self/mountinfo");

/// The mounts that a path still reaches: those that no later mount covers. O(n × depth).
[[nodiscard]] std::vector<Mount> reachable(const std::vector<Mount>& mounts);

/// The mount that holds a location, by the texts alone: of `mounts`, the deepest above it, and of several at
/// one place the last.
[[nodiscard]] std::optional<Mount> holding(const FileUrl& url, std::span<const Mount> mounts);

} // namespace MountTable

} // namespace tallyroom
