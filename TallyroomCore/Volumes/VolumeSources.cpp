#include "FileSystem/HomeFolder.h"
#include "Volumes/VolumeInfo.h"

#include <filesystem>

namespace tallyroom {

namespace {

/// Many more than a machine has disks, and than a person mounts shares.
constexpr unsigned diskThreads = 16;
constexpr unsigned networkThreads = 32;

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
        [](const Mount& mount) { return volumeFigures(mount.mountPoint); },
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
