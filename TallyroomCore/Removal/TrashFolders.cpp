#include "Removal/TrashFolders.h"

#include "FileSystem/FileAttributes.h"
#include "FileSystem/FolderReader.h"
#include "FileSystem/HomeFolder.h"
#include "FileSystem/MountTable.h"
#include "FileSystem/RealPath.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace tallyroom::TrashFolders {

namespace {

bool isUserNumber(std::string_view name)
{
    return !name.empty() &&
           std::ranges::all_of(name, [](char digit) { return digit >= '0' && digit <= '9'; });
}

/// A person's "Trash", a user's ".Trash-1000" of a volume, or ".Trash/1000" in the one made for all.
bool isNamedAsTrash(const FileUrl& folder)
{
    constexpr std::string_view ofOneUser = ".Trash-";
    const std::string_view name = folder.lastPathComponent();
    return name == "Trash" || (name.starts_with(ofOneUser) && isUserNumber(name.substr(ofOneUser.size()))) ||
           (isUserNumber(name) && folder.parent().lastPathComponent() == ".Trash");
}

/// "files" with "info" beside it, in a folder that is named as a trash.
bool isFormedAsTrash(const FileUrl& folder)
{
    if (folder.lastPathComponent() != "files") {
        return false;
    }
    const FileUrl trash = folder.parent();
    const auto records = isNamedAsTrash(trash) ? fileAttributes(trash.appending("info"))
                                               : std::unexpected(SystemError{ENOENT});
    return records && records->type == EntryType::folder;
}

} // namespace

FileUrl home()
{
    if (const char* const base = std::getenv("XDG_DATA_HOME"); base != nullptr && *base == '/') {
        return FileUrl{std::string{base} + "/Trash"};
    }
    const FileUrl home = HomeFolder::current();
    return home.isEmpty() ? home : FileUrl{home.path() + "/.local/share/Trash"};
}

SystemResult<FileDescriptor> openOwn(int parent, const std::string& name)
{
    auto folder = openAt(parent, name.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    struct stat status = {};
    if (folder && (::fstat(folder->get(), &status) != 0 || status.st_uid != ::getuid())) {
        return std::unexpected(SystemError{EPERM});
    }
    return folder;
}

SystemResult<FileDescriptor> openShared(int topFolder)
{
    auto folder = openAt(topFolder, ".Trash", O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    struct stat status = {};
    if (folder && (::fstat(folder->get(), &status) != 0 || (status.st_mode & S_ISVTX) == 0)) {
        return std::unexpected(SystemError{EPERM});
    }
    return folder;
}

Lookup::Lookup()
{
    const FileUrl own = home();
    const auto trash =
        own.isEmpty() ? std::unexpected(SystemError{ENOENT}) : openFolder(own, FolderAccess::throughOnly);
    if (!trash) {
        return;
    }
    const auto files = openFolder(own.appending("files"), FolderAccess::throughOnly);
    for (const int folder : {trash->get(), files ? files->get() : -1}) {
        const auto known = fileAttributes(folder);
        const auto path = realPathOf(folder);
        if (known && path) {
            m_own.push_back(known->id());
            m_ownNames.emplace(FileUrl{*path}.lastPathComponent());
        }
    }
}

Lookup::Lookup(const ScanRoot& root) : Lookup()
{
    for (const Mount& mount : MountTable::read()) {
        m_mountPoints.insert(mount.mountPoint);
    }
    Folder found = find(root.place, Links::notFollowed);
    found.isScanned = true;
    m_folders.insert_or_assign(root.url.path(), found);
    m_folders.insert_or_assign(root.place.path(), std::move(found));
}

bool Lookup::contains(const FileUrl& url)
{
    return find(url.standardized().parent(), Links::followed).isTrashed;
}

Lookup::Folder Lookup::find(const FileUrl& folder, Links links)
{
    std::vector<FileUrl> unknown;
    FileUrl step = folder;
    auto known = m_folders.find(step.path());
    while (known == m_folders.end() && step.path() != "/" && !step.isEmpty()) {
        unknown.push_back(step);
        step = step.parent();
        known = m_folders.find(step.path());
    }
    Folder found = known != m_folders.end() ? known->second : Folder{step, false};
    for (auto deeper = unknown.rbegin(); deeper != unknown.rend(); ++deeper) {
        found = below(found, *deeper, links);
        m_folders.insert_or_assign(deeper->path(), found);
    }
    return found;
}

Lookup::Folder Lookup::below(const Folder& parent, const FileUrl& folder, Links links)
{
    Folder found{parent.realPlace.appending(folder.lastPathComponent()), parent.isTrashed, parent.isScanned};
    if (!found.isScanned || mayBeOwn(found.realPlace)) {
        const auto attributes = fileAttributes(found.realPlace);
        if (links == Links::followed && attributes && attributes->type == EntryType::link) {
            const auto target = openFolder(found.realPlace, FolderAccess::throughOnly);
            if (const auto path = target ? realPathOf(target->get()) : std::unexpected(target.error())) {
                return find(FileUrl{*path}, Links::notFollowed);
            }
        }
        found.isTrashed = found.isTrashed || (attributes && isOwn(*attributes));
    }
    // An item that is gone is judged by its path.
    found.isTrashed = found.isTrashed || isFormedAsTrash(found.realPlace);
    return found;
}

bool Lookup::mayBeOwn(const FileUrl& folder) const
{
    return m_ownNames.contains(std::string{folder.lastPathComponent()}) ||
           m_mountPoints.contains(folder.path());
}

bool Lookup::isOwn(const FileAttributes& attributes) const
{
    return std::ranges::find(m_own, attributes.id()) != m_own.end();
}

} // namespace tallyroom::TrashFolders
