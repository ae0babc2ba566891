#include "Volumes/VolumeFigures.h"

#include <cerrno>
#include <sys/statvfs.h>

namespace tallyroom {

namespace {

/// blocks × unit; nothing when that overflows.
std::optional<std::int64_t> bytes(std::uint64_t blocks, std::uint64_t unit)
{
    std::int64_t result = 0;
    return __builtin_mul_overflow(blocks, unit, &result) ? std::nullopt : std::optional{result};
}

/// `ask` is statvfs(3) of some place.
template <class Ask>
VolumeFigures figures(Ask ask)
{
    struct statvfs room = {};
    int failed = -1;
    do {
        failed = ask(&room);
    } while (failed != 0 && errno == EINTR);
    if (failed != 0) {
        return {};
    }
    const std::uint64_t unit = room.f_frsize != 0 ? room.f_frsize : room.f_bsize;
    return {bytes(room.f_blocks, unit), bytes(room.f_bavail, unit), bytes(room.f_bfree, unit)};
}

} // namespace

VolumeFigures volumeFigures(int folder)
{
    return figures([folder](struct statvfs* room) { return ::fstatvfs(folder, room); });
}

VolumeFigures volumeFigures(const std::string& path)
{
    return figures([&path](struct statvfs* room) { return ::statvfs(path.c_str(), room); });
}

} // namespace tallyroom
