#include "FileSystem/WholeFile.h"

#include "FileSystem/FileDescriptor.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <optional>
#include <random>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace tallyroom {

namespace {

/// The permissions of the regular file in the way; nothing when there is none.
std::optional<mode_t> formerMode(int folder, const std::string& name)
{
    struct stat former = {};
    const bool isFile =
        ::fstatat(folder, name.c_str(), &former, AT_SYMLINK_NOFOLLOW) == 0 && S_ISREG(former.st_mode);
    return isFile ? std::optional{former.st_mode & 07777} : std::nullopt;
}

bool writeContent(int file, std::string_view content)
{
    while (!content.empty()) {
        const ssize_t written = ::write(file, content.data(), content.size());
        if (written < 0 && errno != EINTR) {
            return false;
        }
        content.remove_prefix(written < 0 ? 0 : static_cast<std::size_t>(written));
    }
    return ::fsync(file) == 0;
}

} // namespace

SystemResult<void> WholeFile::write(const FileUrl& url, std::string_view content)
{
    const FileDescriptor folder{::open(url.parent().path().c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)};
    if (!folder.isOpen()) {
        return std::unexpected(SystemError::last());
    }
    const std::string name{url.lastPathComponent()};
    const std::optional<mode_t> mode = formerMode(folder.get(), name);
    if (mode && ::faccessat(folder.get(), name.c_str(), W_OK, AT_EACCESS) != 0) {
        return std::unexpected(SystemError::last());
    }
    const std::string draft = ".tallyroom-" + std::to_string(std::random_device{}()) + ".part";
    const FileDescriptor file{
        ::openat(folder.get(), draft.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666)};
    if (!file.isOpen()) {
        return std::unexpected(SystemError::last());
    }
    const bool isWritten = (!mode || ::fchmod(file.get(), *mode) == 0) && writeContent(file.get(), content) &&
                           ::renameat(folder.get(), draft.c_str(), folder.get(), name.c_str()) == 0;
    if (!isWritten) {
        const SystemError error = SystemError::last();
        ::unlinkat(folder.get(), draft.c_str(), 0);
        return std::unexpected(error);
    }
    return {};
}

} // namespace tallyroom
