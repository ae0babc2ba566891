#include "Removal/ItemPlace.h"

#include "FileSystem/FolderReader.h"

#include <cerrno>
#include <climits>
#include <unistd.h>

namespace tallyroom {

namespace {

/// Short enough that the links on the way may make it longer.
constexpr std::size_t bytesResolvedOfALongPath = PATH_MAX / 2;

} // namespace

SystemResult<ItemPlace> ItemPlace::open(const FileUrl& url)
{
    const std::string& path = url.path();
    if (!path.starts_with('/') || path.find('\0') != std::string::npos) {
        return std::unexpected(SystemError{EINVAL});
    }
    const std::size_t end = path.find_last_not_of('/');
    if (end == std::string::npos) {
        return std::unexpected(SystemError{EBUSY});
    }
    const std::size_t slash = path.rfind('/', end);
    std::string name = path.substr(slash + 1, end - slash);
    if (name == "." || name == "..") {
        return std::unexpected(SystemError{EINVAL});
    }
    auto parent = openFolder(FileUrl{path.substr(0, slash + 1)}, FolderAccess::throughOnly);
    if (!parent) {
        return std::unexpected(parent.error());
    }
    return ItemPlace{std::move(*parent), std::move(name), path.substr(0, end + 1)};
}

SystemResult<std::string> ItemPlace::realPath() const
{
    auto path = realPathOf(parent.get());
    std::string rest = name;
    if (!path && path.error().code == ENAMETOOLONG) {
        const std::size_t slash = location.rfind('/', bytesResolvedOfALongPath);
        const auto start = openFolder(FileUrl{location.substr(0, slash + 1)}, FolderAccess::throughOnly);
        path = start ? realPathOf(start->get()) : std::unexpected(start.error());
        rest = location.substr(slash + 1);
    }
    if (path) {
        path->append(path->ends_with('/') ? "" : "/").append(rest);
    }
    return path;
}

SystemResult<std::string> realPathOf(int folder)
{
    std::string path(PATH_MAX, '\0');
    const std::string descriptor = "/proc/self/fd/" + std::to_string(folder);
    const ssize_t length = ::readlink(descriptor.c_str(), path.data(), path.size());
    if (length < 0) {
        return std::unexpected(SystemError::last());
    }
    path.resize(static_cast<std::size_t>(length));
    return path;
}

bool isWithin(const std::string& path, const std::string& ancestor)
{
    return path.starts_with(ancestor) &&
           (path.size() == ancestor.size() || ancestor.ends_with('/') || path[ancestor.size()] == '/');
}

} // namespace tallyroom
