#pragma once

#include "FileSystem/FileAttributes.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace tallyroom {

/// The files with several names that one walk meets, until it has met their last one. Any thread.
class SharedFiles {
public:
    /// The folders in which a file was met before, as the SizeCache numbers them.
    using Folders = std::vector<std::uint32_t>;

    struct Meeting {
        Folders earlier;   ///< of the other names that were met; empty for the first
        std::string first; ///< the first child by name that held one of them
    };

    /// Notes a name of a file, in a folder, in the child `child` of the folder that is listed.
    [[nodiscard]] Meeting meet(const FileAttributes& file, std::uint32_t folder, std::string_view child);

private:
    /// More folders of one file are not told apart: the newest are kept.
    static constexpr std::size_t mostFolders = 4;

    struct Known {
        std::uint32_t left = 0; ///< names that were not met
        std::string first;
        Folders folders;
    };

    std::mutex m_mutex;
    std::map<FileId, Known> m_files; // guarded by m_mutex
};

} // namespace tallyroom
