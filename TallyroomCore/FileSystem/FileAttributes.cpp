#include "FileSystem/FileAttributes.h"

#include "FileSystem/FolderReader.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace tallyroom {

namespace {

EntryType typeOf(unsigned mode)
{
    switch (mode & static_cast<unsigned>(S_IFMT)) {
    case S_IFDIR:
        return EntryType::folder;
    case S_IFLNK:
        return EntryType::link;
    default:
        return EntryType::file;
    }
}

Timestamp momentOf(const statx_timestamp& time)
{
    return Timestamp{std::chrono::seconds{time.tv_sec} + std::chrono::nanoseconds{time.tv_nsec}};
}

SystemResult<FileAttributes> attributes(int folder, const char* name, int flags)
{
    struct statx stat = {};
    if (::statx(folder, name, flags | AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT, STATX_BASIC_STATS, &stat) != 0) {
        return std::unexpected(SystemError::last());
    }
    FileAttributes result;
    result.type = typeOf(stat.stx_mode);
    result.isRegular = S_ISREG(stat.stx_mode);
    result.links = stat.stx_nlink;
    result.logicalBytes = static_cast<std::int64_t>(stat.stx_size);
    result.allocatedBytes = (stat.stx_mask & STATX_BLOCKS) != 0
                                ? static_cast<std::int64_t>(stat.stx_blocks) * 512
                                : result.logicalBytes;
    result.device = (std::uint64_t{stat.stx_dev_major} << 32U) | stat.stx_dev_minor;
    result.inode = stat.stx_ino;
    if ((stat.stx_mask & STATX_MTIME) != 0) {
        result.modifiedAt = momentOf(stat.stx_mtime);
    }
    if ((stat.stx_mask & STATX_CTIME) != 0) {
        result.changedAt = momentOf(stat.stx_ctime);
    }
    return result;
}

} // namespace

SystemResult<FileAttributes> fileAttributes(int folder, const char* name)
{
    return attributes(folder, name, 0);
}

SystemResult<FileAttributes> fileAttributes(int descriptor)
{
    return attributes(descriptor, "", AT_EMPTY_PATH);
}

SystemResult<FileAttributes> fileAttributes(const FileUrl& url)
{
    const FileUrl standard = url.standardized();
    if (standard.path() == "/") {
        return attributes(AT_FDCWD, "/", 0);
    }
    const auto parent = openFolder(standard.parent(), FolderAccess::throughOnly);
    if (!parent) {
        return std::unexpected(parent.error());
    }
    return attributes(parent->get(), std::string{standard.lastPathComponent()}.c_str(), 0);
}

} // namespace tallyroom
