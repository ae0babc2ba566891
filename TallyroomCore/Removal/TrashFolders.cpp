#include "Removal/TrashFolders.h"

#include "FileSystem/FileAttributes.h"
#include "FileSystem/FolderReader.h"
#include "Removal/ItemPlace.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <pwd.h>
#include <string_view>
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

} // namespace

FileUrl home()
{
    if (const char* const base = std::getenv("XDG_DATA_HOME"); base != nullptr && *base == '/') {
        return FileUrl{std::string{base} + "/Trash"};
    }
    if (const char* const home = std::getenv("HOME"); home != nullptr && *home == '/') {
        return FileUrl{std::string{home} + "/.local/share/Trash"};
    }
    std::array<char, 16384> buffer = {};
    passwd record = {};
    passwd* found = nullptr;
    ::getpwuid_r(::getuid(), &record, buffer.data(), buffer.size(), &found);
    return found == nullptr ? FileUrl{} : FileUrl{std::string{found->pw_dir} + "/.local/share/Trash"};
}

Lookup::Lookup()
{
    const FileUrl own = home();
    const auto trash =
        own.isEmpty() ? std::unexpected(SystemError{ENOENT}) : openFolder(own, FolderAccess::throughOnly);
    if (!trash) {
        return;
    }
    for (const auto& known : {fileAttributes(trash->get()), fileAttributes(trash->get(), "files")}) {
        if (known && known->type == EntryType::folder) {
            m_own.emplace_back(known->device, known->inode);
        }
    }
}

bool Lookup::contains(const FileUrl& url)
{
    const FileUrl parent = url.standardized().parent();
    if (const auto known = m_folders.find(parent.path()); known != m_folders.end()) {
        return known->second;
    }
    const auto folder = openFolder(parent, FolderAccess::throughOnly);
    const auto realPath = folder ? realPathOf(folder->get()) : std::unexpected(folder.error());
    // What is gone, or lies too deep for the kernel to tell its path, is judged by the path as given.
    const bool isTrashed = isWithin(realPath.value_or(parent.path()));
    m_folders.insert_or_assign(parent.path(), isTrashed);
    return isTrashed;
}

bool Lookup::isWithin(const std::string& realFolder)
{
    std::vector<FileUrl> unknown;
    FileUrl folder{realFolder};
    auto known = m_folders.find(folder.path());
    while (known == m_folders.end() && folder.path() != "/" && !folder.isEmpty()) {
        unknown.push_back(folder);
        folder = folder.parent();
        known = m_folders.find(folder.path());
    }
    bool isTrashed = known != m_folders.end() && known->second;
    for (auto step = unknown.rbegin(); step != unknown.rend(); ++step) {
        isTrashed = isTrashed || isBin(*step);
        m_folders.emplace(step->path(), isTrashed);
    }
    return isTrashed;
}

bool Lookup::isBin(const FileUrl& realFolder) const
{
    const auto attributes = fileAttributes(realFolder);
    if (attributes &&
        std::ranges::find(m_own, FolderId{attributes->device, attributes->inode}) != m_own.end()) {
        return true;
    }
    const FileUrl trash = realFolder.parent();
    if (realFolder.lastPathComponent() != "files" || !isNamedAsTrash(trash)) {
        return false;
    }
    const auto records = fileAttributes(trash.appending("info"));
    return records && records->type == EntryType::folder;
}

} // namespace tallyroom::TrashFolders
