#include "FileSystem/HomeFolder.h"
#include "Volumes/VolumeInfo.h"

#include <cerrno>
#include <filesystem>
#include <sys/statvfs.h>

namespace tallyroom {

namespace {

/// Many more than a machine has disks, and than a person mounts shares.
constexpr unsigned diskThreads = 16;
constexpr unsigned networkThreads = 32;

/// blocks × unit; nothing when that overflows.
std::optional<std::int64_t> bytes(std::uint64_t blocks, std::uint64_t unit)
{
    std::int64_t result = 0;
    return __builtin_mul_overflow(blocks, unit, &result) ? std::nullopt : std::optional{result};
}

VolumeFigures figuresOf(const Mount& mount)
{
    struct statvfs room = {};
    int failed = -1;
    do {
        failed = ::statvfs(mount.mountPoint.c_str(), &room);
    } while (failed != 0 && errno == EINTR);
    if (failed != 0) {
        return {};
    }
    const std::uint64_t unit = room.f_frsize != 0 ? room.f_frsize : room.f_bsize;
    return {bytes(room.f_blocks, unit), bytes(room.f_bavail, unit)};
}

FileUrl withoutLinks(const FileUrl& url)
{
    std::error_code failed;
    const std::filesystem::path path = std::filesystem::canonical(url.path(), failed);
    return failed ? url : FileUrl{path.native()};
}

} // namespace

const VolumeSources& VolumeSources::system()
{
    static const VolumeSources sources{
        [] { return MountTable::read(); },
        figuresOf,
        deviceTraits,
        [] {
            FileUrl home = HomeFolder::current();
            return home.isEmpty() ? FileUrl{"/"} : home;
        },
        withoutLinks,
        std::make_shared<PatientCalls>(diskThreads, VolumeInfo::usualLimit),
        std::make_shared<PatientCalls>(networkThreads, VolumeInfo::usualLimit),
    };
    return sources;
}

} // namespace tallyroom
