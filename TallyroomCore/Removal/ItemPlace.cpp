#include "Removal/ItemPlace.h"

#include "FileSystem/FolderReader.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace tallyroom {

namespace {

/// Short enough that the links on the way may make it longer.
constexpr std::size_t bytesResolvedOfALongPath = PATH_MAX / 2;

/// The rest of `path` below the folder `base`, without leading slashes; empty when it is not below it.
std::string_view pathBelow(std::string_view path, std::string_view base)
{
    base = base.substr(0, base.find_last_not_of('/') + 1);
    if (!isWithin(path, base)) {
        return {};
    }
    return path.substr(std::min(path.find_first_not_of('/', base.size()), path.size()));
}

/// A way that leads elsewhere now, in one word.
SystemError wayError(SystemError error)
{
    const bool hasChanged = error.code == ELOOP || error.code == ENOTDIR || error.code == EXDEV;
    return hasChanged ? SystemError{ESTALE} : error;
}

} // namespace

SystemResult<ItemPlace> ItemPlace::open(const Entry& entry, std::shared_ptr<const VolumeMarks> volumes)
{
    const ScanRoot& root = ScanRoots::find(entry.identity.root);
    const std::string_view below = pathBelow(entry.url.path(), root.url.path());
    if (root.key == 0 || !entry.identity.isKnown() || below.empty() || below.ends_with('/')) {
        return std::unexpected(SystemError{ESTALE});
    }
    auto parent = openFolder(root.url, FolderAccess::throughOnly);
    const auto attributes = parent ? fileAttributes(parent->get()) : std::unexpected(parent.error());
    if (!attributes) {
        return std::unexpected(wayError(attributes.error()));
    }
    if (!volumes->identify(*attributes).isSameItem(root.identity)) {
        return std::unexpected(SystemError{ESTALE});
    }
    const std::size_t slash = below.rfind('/');
    if (slash != std::string_view::npos) {
        parent = openDescendantFolder(parent->get(), below.substr(0, slash), FolderAccess::throughOnly);
    }
    if (!parent) {
        return std::unexpected(wayError(parent.error()));
    }
    std::string name{below.substr(slash + 1)}; // npos + 1 is 0
    return ItemPlace{std::move(*parent), std::move(name), entry.url.path(),
                     MeantItem{entry.identity, std::move(volumes)}};
}

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
    return ItemPlace{std::move(*parent), std::move(name), path.substr(0, end + 1), {}};
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

SystemResult<void> moveWithoutReplacing(int from, const std::string& name, int to, const std::string& newName)
{
    if (::renameat2(from, name.c_str(), to, newName.c_str(), RENAME_NOREPLACE) == 0) {
        return {};
    }
    if (errno == EINVAL || errno == ENOSYS) {
        // The file system does not know the flag. Looking first leaves an instant in which another process
        // may take the name; in a trash the record, made with O_EXCL, has reserved it.
        struct stat status = {};
        if (::fstatat(to, newName.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0) {
            return std::unexpected(SystemError{EEXIST});
        }
        if (errno == ENOENT && ::renameat(from, name.c_str(), to, newName.c_str()) == 0) {
            return {};
        }
    }
    return std::unexpected(SystemError::last());
}

} // namespace tallyroom
