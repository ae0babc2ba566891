#include "FileSystem/FileAttributes.h"

#include "FileSystem/FolderReader.h"
#include "FileSystem/StatxTime.h"

#include <algorithm>
#include <bit>
#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <limits>
#include <sys/stat.h>
#include <utility>

namespace tallyroom {

namespace {

/// More than any disk holds in one file, and little enough that sums of such files do not overflow.
constexpr std::int64_t greatestAllocation = std::int64_t{1} << 53;

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

EntryForm formOf(unsigned mode)
{
    switch (mode & static_cast<unsigned>(S_IFMT)) {
    case S_IFLNK:
        return EntryForm::link;
    case S_IFIFO:
        return EntryForm::fifo;
    case S_IFSOCK:
        return EntryForm::socket;
    case S_IFCHR:
    case S_IFBLK:
        return EntryForm::device;
    default:
        return EntryForm::ordinary;
    }
}

/// Asks for a number that no later mount gets again (STATX_MNT_ID_UNIQUE; kernels since 6.8, headers later).
constexpr unsigned uniqueMount = 0x4000;

/// Falls back to the logical size where blocks are not reported, or more of them than any disk has.
std::int64_t allocatedBytes(const struct statx& stat, std::int64_t logicalBytes)
{
    constexpr std::uint64_t blockBytes = 512;
    const bool isTold = (stat.stx_mask & STATX_BLOCKS) != 0 &&
                        stat.stx_blocks <= static_cast<std::uint64_t>(greatestAllocation) / blockBytes;
    return isTold ? static_cast<std::int64_t>(stat.stx_blocks * blockBytes)
                  : std::min(logicalBytes, greatestAllocation);
}

/// Writes each field once, and copies none: copying a record that was just written costs as much as filling
/// it.
int read(int folder, const char* name, int flags, FileDetail detail, FileAttributes& result)
{
    // The kernel fills it: zeros first would cost 256 bytes a file.
    struct statx stat; // NOLINT(cppcoreguidelines-pro-type-member-init)
    if (::statx(folder, name, flags | AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT,
                detail == FileDetail::identity ? STATX_BASIC_STATS | STATX_BTIME | uniqueMount
                                               : STATX_BASIC_STATS,
                &stat) != 0) {
        return errno;
    }
    const auto tells = [&stat](unsigned field) { return (stat.stx_mask & field) != 0; };
    result.device = (std::uint64_t{stat.stx_dev_major} << 32U) | stat.stx_dev_minor;
    result.inode = stat.stx_ino;
    result.type = typeOf(stat.stx_mode);
    result.form = formOf(stat.stx_mode);
    result.isRegular = S_ISREG(stat.stx_mode);
    result.links = stat.stx_nlink;
    result.logicalBytes = static_cast<std::int64_t>(
        std::min<std::uint64_t>(stat.stx_size, std::numeric_limits<std::int64_t>::max()));
    result.allocatedBytes = allocatedBytes(stat, result.logicalBytes);
    result.format = stat.stx_mode & static_cast<unsigned>(S_IFMT);
    result.mount = tells(uniqueMount) ? stat.stx_mnt_id : 0;
    result.bornAt = tells(STATX_BTIME) ? stat.stx_btime.tv_sec : 0;
    result.bornAfter = tells(STATX_BTIME) ? stat.stx_btime.tv_nsec : 0;
    result.modifiedAt = tells(STATX_MTIME) ? std::optional{momentOf(stat.stx_mtime)} : std::nullopt;
    result.changedAt = tells(STATX_CTIME) ? std::optional{momentOf(stat.stx_ctime)} : std::nullopt;
    return 0;
}

SystemResult<FileAttributes> attributes(int folder, const char* name, int flags)
{
    SystemResult<FileAttributes> result{std::in_place};
    if (const int failure = read(folder, name, flags, FileDetail::identity, *result); failure != 0) {
        result = std::unexpected(SystemError{failure});
    }
    return result;
}

} // namespace

std::uint64_t mixed(std::uint64_t hash, std::uint64_t value) noexcept
{
    // Multiplying carries each bit upwards only; the rotation brings the upper ones down again.
    constexpr std::uint64_t odd = 0x9e37'79b9'7f4a'7c15U;
    return std::rotl((hash ^ value) * odd, 29) * odd;
}

std::uint32_t FileAttributes::stamp() const noexcept
{
    const std::uint64_t born = mixed(static_cast<std::uint64_t>(bornAt), bornAfter);
    return static_cast<std::uint32_t>(mixed(mixed(mixed(device, format), born), mount) >> 32U);
}

SystemResult<FileAttributes> fileAttributes(int folder, const char* name)
{
    return attributes(folder, name, 0);
}

int readFileAttributes(int folder, const char* name, FileDetail detail, FileAttributes& result)
{
    return read(folder, name, 0, detail, result);
}

SystemResult<FileAttributes> fileAttributes(int descriptor)
{
    return attributes(descriptor, "", AT_EMPTY_PATH);
}

SystemResult<FileAttributes> fileAttributes(const FileUrl& url)
{
    const FileUrl standard = url.standardized();
    if (standard.path().size() < PATH_MAX) {
        return attributes(AT_FDCWD, standard.path().c_str(), 0);
    }
    const auto parent = openFolder(standard.parent(), FolderAccess::throughOnly);
    if (!parent) {
        return std::unexpected(parent.error());
    }
    return attributes(parent->get(), std::string{standard.lastPathComponent()}.c_str(), 0);
}

SystemResult<std::uint64_t> mountOf(int folder, const char* name)
{
    struct statx stat = {};
    const int flags = AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT | AT_EMPTY_PATH;
    if (::statx(folder, name, flags, STATX_TYPE | STATX_MNT_ID, &stat) != 0) {
        return std::unexpected(SystemError::last());
    }
    return (stat.stx_mask & STATX_MNT_ID) != 0
               ? stat.stx_mnt_id
               : (std::uint64_t{stat.stx_dev_major} << 32U) | stat.stx_dev_minor;
}

} // namespace tallyroom
