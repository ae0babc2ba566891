#pragma once

#include "FileSystem/FileDescriptor.h"
#include "Model/Entry.h"

#include <cstdint>
#include <optional>
#include <unordered_map>
#include <vector>

namespace tallyroom {

/// How the free space changes on the volumes that hold some items (statvfs(3)). It keeps a folder open on
/// each volume, so that the items themselves may go meanwhile. Waits for the file systems; one thread at a
/// time.
class FreeSpace {
public:
    /// Notes what is free now on the volumes of `entries`.
    void note(const std::vector<Entry>& entries);

    /// How many bytes are free that were not; negative when others wrote meanwhile. Nothing when a volume
    /// does not say, or when nothing was noted.
    [[nodiscard]] std::optional<std::int64_t> gained() const;

private:
    struct Volume {
        FileDescriptor folder;
        std::optional<std::int64_t> free; ///< bytes
    };

    std::unordered_map<std::uint64_t, Volume> m_volumes; // by device
};

} // namespace tallyroom
