#pragma once

#include "FileSystem/MountPlaces.h"

#include <chrono>
#include <map>
#include <mutex>
#include <optional>
#include <stop_token>
#include <string_view>

namespace tallyroom {

/// The mounts of one walk, and which of those that others answer for (`isServed`) have answered it. Any
/// thread.
class WalkMounts {
public:
    /// How long a walk waits for a mount.
    static constexpr std::chrono::seconds patience{10};

    /// `stop` ends all waiting.
    explicit WalkMounts(std::stop_token stop);

    /// The position of an absolute path without links. The first call reads the table.
    [[nodiscard]] MountPlaces::Position find(std::string_view path);

    /// The mount whose top a name in a folder is; null for other names.
    [[nodiscard]] static const Mount* at(const MountPlaces::Position& folder, std::string_view name)
    {
        return folder.mayHoldMounts() ? folder.child(name).mountPoint() : nullptr;
    }

    /// Whether a mount answers. A served one is asked once, on another thread, and no longer than `patience`.
    [[nodiscard]] bool isAnswering(const Mount& mount);

    /// Whether `isAnswering` may wait.
    [[nodiscard]] bool isUncertain(const Mount& mount) const;

private:
    const std::stop_token m_stop;
    std::once_flag m_read;
    std::optional<MountPlaces> m_places;
    mutable std::mutex m_mutex;
    std::map<int, bool> m_answers; // by the mount's id; guarded by m_mutex
};

} // namespace tallyroom
