#include "Removal/TrashFolders.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <pwd.h>
#include <string>
#include <string_view>
#include <unistd.h>
#include <vector>

namespace tallyroom::TrashFolders {

namespace {

/// ".Trash", which an administrator made for all, or a user's ".Trash-1000".
bool isVolumeTrash(std::string_view name)
{
    constexpr std::string_view shared = ".Trash";
    if (!name.starts_with(shared)) {
        return false;
    }
    const std::string_view rest = name.substr(shared.size());
    return rest.empty() ||
           (rest.size() > 1 && rest.front() == '-' &&
            std::ranges::all_of(rest.substr(1), [](char digit) { return digit >= '0' && digit <= '9'; }));
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

bool contain(const FileUrl& url)
{
    const FileUrl own = home();
    if (!own.isEmpty() && url.isInside(own)) {
        return true;
    }
    const std::vector<std::string> components = url.parent().pathComponents();
    return std::ranges::any_of(components, isVolumeTrash);
}

} // namespace tallyroom::TrashFolders
