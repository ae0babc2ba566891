#pragma once

#include <cstdint>

namespace tallyroom {

/// What a volume says is used, beside what a walk from its top has found. In bytes; a plain value.
struct VolumeAccount {
    std::int64_t used = 0;      ///< as VolumeUsage counts it: `reserved` is a part of it
    std::int64_t reserved = 0;  ///< free, but for root only
    std::int64_t found = 0;     ///< files, each once, and folders
    std::int64_t elsewhere = 0; ///< found below other mounts: not a part of `used`, or not once more
    std::int64_t skipped = 0;   ///< how many folders of version control the walk did not enter

    /// The bytes that neither the walk nor the reserve explains; 0 where the volume stores files in less
    /// than they say (compression, shared blocks).
    [[nodiscard]] std::int64_t missing() const;

    friend bool operator==(const VolumeAccount&, const VolumeAccount&) = default;
};

} // namespace tallyroom
