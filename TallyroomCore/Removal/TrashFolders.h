#pragma once

#include "Model/FileUrl.h"

#include <cstdint>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace tallyroom {

/// Where trashed items lie, by the freedesktop.org Trash specification 1.0. Any thread.
namespace TrashFolders {

/// The person's own, "$XDG_DATA_HOME/Trash", by the XDG Base Directory specification: a relative value counts
/// as unset. Empty for a user without a home.
[[nodiscard]] FileUrl home();

/// Tells which items lie in a trash: in the person's own, by device and inode, however the path is spelt; or
/// in that of any volume and user, by its form: "files" with "info" beside it in a "Trash", ".Trash-1000" or
/// ".Trash/1000". Reads the disk, each folder once: a new object sees what is new. One thread at a time.
class Lookup {
public:
    Lookup();

    [[nodiscard]] bool contains(const FileUrl& url);

private:
    using FolderId = std::pair<std::uint64_t, std::uint64_t>; // device, inode

    bool isWithin(const std::string& realFolder);
    [[nodiscard]] bool isBin(const FileUrl& realFolder) const;

    std::vector<FolderId> m_own;
    std::unordered_map<std::string, bool> m_folders; // as they were asked for, and without links
};

} // namespace TrashFolders

} // namespace tallyroom
