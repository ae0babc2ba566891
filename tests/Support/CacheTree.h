#pragma once

#include "Support/Cases.h"

#include <filesystem>

namespace tallyroom {

/// Sets the modification time of everything in a tree, in seconds since 1970; folders after what they hold.
inline void dateAll(const TemporaryTree& tree, std::int64_t seconds)
{
    namespace fs = std::filesystem;
    const auto date =
        std::chrono::file_clock::from_sys(std::chrono::sys_seconds{std::chrono::seconds{seconds}});
    for (const fs::directory_entry& item : fs::recursive_directory_iterator{tree.path()}) {
        if (!item.is_symlink()) {
            fs::last_write_time(item.path(), date);
        }
    }
}

/// Folders called like caches, written long ago.
class CacheTree : public TemporaryTree {
public:
    CacheTree()
    {
        addCases(*this, "folders called like caches");
        dateAll(*this, 1'600'000'000);
    }
};

} // namespace tallyroom
