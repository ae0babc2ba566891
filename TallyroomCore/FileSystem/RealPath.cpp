#include "FileSystem/RealPath.h"

#include "FileSystem/FileDescriptor.h"

#include <climits>
#include <fcntl.h>
#include <sys/types.h>
#include <unistd.h>

namespace tallyroom {

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

FileUrl realPlaceOf(const FileUrl& folder)
{
    const FileDescriptor opened{::open(folder.path().c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)};
    const auto path = opened.isOpen() ? realPathOf(opened.get()) : std::unexpected(SystemError::last());
    return path ? FileUrl{*path} : folder.standardized();
}

} // namespace tallyroom
