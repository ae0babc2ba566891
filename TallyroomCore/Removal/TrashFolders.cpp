#include "Removal/TrashFolders.h"

#include "FileSystem/FileAttributes.h"
#include "FileSystem/FolderReader.h"
#include "FileSystem/HomeFolder.h"
#include "Removal/ItemPlace.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
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
    const FileUrl home = HomeFolder::current();
    return home.isEmpty() ? home : FileUrl{home.path() + "/.local/share/Trash"};
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
            m_own.push_back(known->id());
        }
    }
}

bool Lookup::contains(const FileUrl& url)
{
    const std::string_view path = url.path();
    const std::string_view folder = path.substr(0, std::min(path.rfind('/'), path.size()));
    if (const auto known = m_asked.find(folder); known != m_asked.end()) {
        return known->second;
    }
    const bool isTrashed = find(url.standardized().parent(), Links::followed).isTrashed;
    m_asked.emplace(folder, isTrashed);
    return isTrashed;
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
    const FileUrl place = parent.realPlace.appending(folder.lastPathComponent());
    const auto attributes = fileAttributes(place);
    if (links == Links::followed && attributes && attributes->type == EntryType::link) {
        const auto target = openFolder(place, FolderAccess::throughOnly);
        if (const auto path = target ? realPathOf(target->get()) : std::unexpected(target.error())) {
            return find(FileUrl{*path}, Links::notFollowed);
        }
    }
    // An item that is gone is judged by its path.
    return {place, parent.isTrashed || isBin(place, attributes)};
}

bool Lookup::isBin(const FileUrl& folder, const SystemResult<FileAttributes>& attributes) const
{
    if (attributes && std::ranges::find(m_own, attributes->id()) != m_own.end()) {
        return true;
    }
    const FileUrl trash = folder.parent();
    if (folder.lastPathComponent() != "files" || !isNamedAsTrash(trash)) {
        return false;
    }
    const auto records = fileAttributes(trash.appending("info"));
    return records && records->type == EntryType::folder;
}

} // namespace tallyroom::TrashFolders
