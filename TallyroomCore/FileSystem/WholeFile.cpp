#include "FileSystem/WholeFile.h"

#include "FileSystem/FileContent.h"
#include "FileSystem/FolderReader.h"

#include <cstdio>
#include <fcntl.h>
#include <optional>
#include <random>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace tallyroom {

namespace {

/// The permissions of the regular file that will be replaced; nothing when there is none.
std::optional<mode_t> formerMode(int folder, const std::string& name)
{
    struct stat former = {};
    const bool isFile =
        ::fstatat(folder, name.c_str(), &former, AT_SYMLINK_NOFOLLOW) == 0 && S_ISREG(former.st_mode);
    return isFile ? std::optional{former.st_mode & 07777} : std::nullopt;
}

} // namespace

SystemResult<void> WholeFile::write(const FileUrl& url, std::string_view content)
{
    const auto folder = openFolder(url.parent(), FolderAccess::throughOnly);
    if (!folder) {
        return std::unexpected(folder.error());
    }
    return write(folder->get(), std::string{url.lastPathComponent()}, content);
}

SystemResult<void> WholeFile::write(int folder, const std::string& name, std::string_view content)
{
    const std::optional<mode_t> mode = formerMode(folder, name);
    if (mode && ::faccessat(folder, name.c_str(), W_OK, AT_EACCESS) != 0) {
        return std::unexpected(SystemError::last());
    }
    const std::string draft = ".tallyroom-" + std::to_string(std::random_device{}()) + ".part";
    const auto file =
        openAt(folder, draft.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666);
    if (!file) {
        return std::unexpected(file.error());
    }
    const bool isWritten = (!mode || ::fchmod(file->get(), *mode) == 0) && writeFully(file->get(), content) &&
                           ::fsync(file->get()) == 0 &&
                           ::renameat(folder, draft.c_str(), folder, name.c_str()) == 0;
    if (!isWritten) {
        const SystemError error = SystemError::last();
        ::unlinkat(folder, draft.c_str(), 0);
        return std::unexpected(error);
    }
    return {};
}

} // namespace tallyroom
