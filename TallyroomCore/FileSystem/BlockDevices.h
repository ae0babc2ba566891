#pragma once

#include "FileSystem/MountTable.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace tallyroom {

/// What sysfs(5) tells of block devices. Any thread; nothing here touches a disk. Device numbers are as in
/// Mount, major × 2^32 + minor; `sysfs` is where sysfs is mounted.
namespace BlockDevices {

/// The block device behind a mount: where the mount tells none (btrfs), its source's. None for network file
/// systems and file systems in memory.
[[nodiscard]] std::optional<std::uint64_t> behind(const Mount& mount);

/// The disks that a device lies on, each as a folder of sysfs: its own disk, or those below an encrypted,
/// logical or mirrored volume, in the order of their paths. Nothing when `sysfs` does not know the device.
[[nodiscard]] std::optional<std::vector<std::filesystem::path>> disksOf(std::uint64_t device,
                                                                        const std::string& sysfs = "/sys");

/// Those of `disksOf` that say that their media rotate. Some solid-state disks say so too, virtual ones
/// above all.
[[nodiscard]] std::vector<std::filesystem::path> rotatingDisksOf(std::uint64_t device,
                                                                 const std::string& sysfs = "/sys");

/// Whether a disk has answered too quickly so far for a head that moves, on average of many reads. `disk` is
/// a folder of sysfs as above. False when it has not been asked much yet.
[[nodiscard]] bool looksSolid(const std::filesystem::path& disk);

} // namespace BlockDevices

} // namespace tallyroom
