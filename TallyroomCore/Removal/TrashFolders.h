#pragma once

#include "FileSystem/FileAttributes.h"
#include "FileSystem/SystemError.h"
#include "Model/FileUrl.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
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
/// ".Trash/1000". Asks the file system once for each folder: a new object sees what is new. One thread at a
/// time.
class Lookup {
public:
    Lookup();

    [[nodiscard]] bool contains(const FileUrl& url);

private:
    struct PathHash {
        using is_transparent = void;

        std::size_t operator()(std::string_view path) const noexcept
        {
            return std::hash<std::string_view>{}(path);
        }
    };

    struct Folder {
        FileUrl realPlace; ///< the path without links
        bool isTrashed = false;
    };

    enum class Links { followed, notFollowed };

    Folder find(const FileUrl& folder, Links links);
    Folder below(const Folder& parent, const FileUrl& folder, Links links);
    [[nodiscard]] bool isBin(const FileUrl& folder, const SystemResult<FileAttributes>& attributes) const;

    std::vector<FileId> m_own;
    std::unordered_map<std::string, Folder> m_folders; // by their paths, with or without links
    std::unordered_map<std::string, bool, PathHash, std::equal_to<>> m_asked; // as they were asked for
};

} // namespace TrashFolders

} // namespace tallyroom
