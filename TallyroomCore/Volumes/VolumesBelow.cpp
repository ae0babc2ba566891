#include "Volumes/VolumesBelow.h"

#include "FileSystem/MountTable.h"
#include "Model/CheckedArithmetic.h"
#include "Volumes/VolumeFigures.h"
#include "Volumes/VolumeMounts.h"

#include <algorithm>

namespace tallyroom {

namespace {

std::int64_t usedBytesOf(const Mount& mount)
{
    const VolumeFigures figures = volumeFigures(mount.mountPoint);
    const auto& left = figures.free ? figures.free : figures.available;
    return figures.total && left ? std::max<std::int64_t>(*figures.total - *left, 0) : 0;
}

} // namespace

std::optional<std::int64_t> usedBytesBelow(const FileUrl& folder)
{
    const FileUrl top = folder.standardized();
    const std::vector<Mount> mounts = MountTable::reachable(MountTable::read());
    const std::optional<Mount> own = MountTable::holding(top, mounts);
    if (!own || own->mountPoint != top.path() || !VolumeMounts::showsAll(*own)) {
        return std::nullopt;
    }
    std::int64_t used = usedBytesOf(*own);
    for (const Mount& volume : VolumeMounts::listed(mounts)) {
        if (isWithin(volume.mountPoint, top.path()) && !VolumeMounts::isSameVolume(volume, *own)) {
            used = saturatedSum(used, usedBytesOf(volume));
        }
    }
    return used > 0 ? std::optional{used} : std::nullopt;
}

} // namespace tallyroom
