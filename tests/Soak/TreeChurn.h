#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <filesystem>
#include <random>
#include <stop_token>
#include <thread>

namespace tallyroom {

/// Makes, renames, rewrites and removes files, folders and links below a folder until it is destroyed, on a
/// thread of its own. Names come from a small set and paths are short: the tree changes and does not grow.
class TreeChurn {
public:
    struct Folders {
        std::filesystem::path changing;
        std::filesystem::path outside;   ///< things are moved to it and come back
        std::filesystem::path forbidden; ///< links to it change places with folders, as a trap
    };

    /// Begins at once.
    TreeChurn(const Folders& folders, std::uint64_t seed);

    /// A folder that is there at times.
    [[nodiscard]] static std::filesystem::path folderBelow(const std::filesystem::path& folder,
                                                           std::mt19937_64& random);

    /// How many changes succeeded so far.
    [[nodiscard]] std::uint64_t changes() const noexcept { return m_changes; }

private:
    void run(const std::stop_token& stop);
    [[nodiscard]] bool change();
    [[nodiscard]] bool swapWithLure();
    [[nodiscard]] std::filesystem::path somePlace();

    std::filesystem::path m_folder;
    std::filesystem::path m_outside;
    std::filesystem::path m_forbidden;
    std::uint64_t m_seed;
    std::mt19937_64 m_random;
    std::atomic<std::uint64_t> m_changes = 0;
    std::jthread m_thread; // last: it uses the others
};

} // namespace tallyroom
