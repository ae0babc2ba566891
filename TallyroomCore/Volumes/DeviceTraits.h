#pragma once

#include "FileSystem/MountTable.h"

#include <cstdint>
#include <optional>
#include <string>

namespace tallyroom {

/// Properties of the device behind a mount.
struct DeviceTraits {
    std::optional<std::string> label; ///< the file system's, never empty
    std::optional<bool> isInternal;   ///< built into the machine

    friend bool operator==(const DeviceTraits&, const DeviceTraits&) = default;
};

/// The label from the udev database; where there is none, from the file system itself, which a dead disk may
/// keep waiting. Any thread.
[[nodiscard]] DeviceTraits deviceTraits(const Mount& mount);

/// Whether a block device is built in, by sysfs alone: it is not when it is removable, an SD card, or behind
/// USB, FireWire or a removable PCI port (Thunderbolt). Encrypted, logical and mirrored volumes are what the
/// disks below them are; one external disk among them makes them external. Nothing when `sysfs` knows no such
/// device. `device` as in Mount.
[[nodiscard]] std::optional<bool> isInternalDevice(std::uint64_t device, const std::string& sysfs = "/sys");

} // namespace tallyroom
