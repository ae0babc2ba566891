#pragma once

#include "FileSystem/FileAttributes.h"
#include "FileSystem/FileDescriptor.h"
#include "FileSystem/ScanRoots.h"
#include "FileSystem/SystemError.h"
#include "Model/FileUrl.h"

#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace tallyroom {

/// Where trashed items lie, by the freedesktop.org Trash specification 1.0. Any thread.
namespace TrashFolders {

/// The person's own, "$XDG_DATA_HOME/Trash", by the XDG Base Directory specification: a relative value counts
/// as unset. Empty for a user without a home.
[[nodiscard]] FileUrl home();

/// Opens the folder `name` of a trash, or the trash itself: EPERM for somebody else's, ELOOP or ENOTDIR for a
/// link, since others could have put it there.
[[nodiscard]] SystemResult<FileDescriptor> openOwn(int parent, const std::string& name);

/// Opens the folder of the trash that an administrator has made for everybody on a volume: ".Trash"; EPERM
/// unless it is sticky, and no link.
[[nodiscard]] SystemResult<FileDescriptor> openShared(int topFolder);

/// Tells which items lie in a trash: in the person's own, by device and inode, however the path is spelt; or
/// in that of any volume and user, by its form: "files" with "info" beside it in a "Trash", ".Trash-1000" or
/// ".Trash/1000". Asks the file system once for each folder: a new object sees what is new. One thread at a
/// time.
class Lookup {
public:
    Lookup();

    /// For items that a scan of this root found: below it a scan follows no link, so that only folders that
    /// may be the person's own trash are asked about, those of its names and those that are mounts.
    explicit Lookup(const ScanRoot& root);

    [[nodiscard]] bool contains(const FileUrl& url);

private:
    struct Folder {
        FileUrl realPlace; ///< the path without links
        bool isTrashed = false;
        bool isScanned = false; ///< no link can lie below
    };

    enum class Links { followed, notFollowed };

    Folder find(const FileUrl& folder, Links links);
    Folder below(const Folder& parent, const FileUrl& folder, Links links);
    [[nodiscard]] bool mayBeOwn(const FileUrl& folder) const;
    [[nodiscard]] bool isOwn(const FileAttributes& attributes) const;

    std::vector<FileId> m_own;
    std::unordered_set<std::string> m_ownNames;        // without links
    std::unordered_set<std::string> m_mountPoints;     // asked for a scan only
    std::unordered_map<std::string, Folder> m_folders; // by their paths, with or without links
};

} // namespace TrashFolders

} // namespace tallyroom
