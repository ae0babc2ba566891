#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace tallyroom {

/// The capacity of a file system in bytes (statvfs(3)).
struct VolumeFigures {
    std::optional<std::int64_t> total;
    std::optional<std::int64_t> available; ///< to people who are not root
    std::optional<std::int64_t> free = {}; ///< what is reserved for root with it

    friend bool operator==(const VolumeFigures&, const VolumeFigures&) = default;
};

/// The figures of the file system that holds an open folder; none when it refuses. May wait for ever.
[[nodiscard]] VolumeFigures volumeFigures(int folder);

/// Of the file system at a path.
[[nodiscard]] VolumeFigures volumeFigures(const std::string& path);

} // namespace tallyroom
