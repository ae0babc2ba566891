#pragma once

#include "Model/FileUrl.h"

#include <cstdint>
#include <string>

namespace tallyroom {

/// How full one volume is. A plain value.
struct VolumeUsage {
    /// What people call it: its label, "Système" for the root, else the last component of its mount point.
    std::string name;
    FileUrl url; ///< its mount point
    std::int64_t totalBytes = 0;
    std::int64_t availableBytes = 0; ///< to people who are not root
    bool isInternal = true;          ///< built into the machine

    /// total − available, at least 0. An overflow ends the process.
    [[nodiscard]] std::int64_t usedBytes() const;

    /// used / total; 0 when the total is below 1.
    [[nodiscard]] double usedFraction() const;

    /// The order of lists: internal volumes first, then the larger ones.
    [[nodiscard]] bool isListedBefore(const VolumeUsage& other) const;

    friend bool operator==(const VolumeUsage&, const VolumeUsage&) = default;
};

} // namespace tallyroom
