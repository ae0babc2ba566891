#include "Volumes/VolumeMounts.h"

#include "FileSystem/MountKinds.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <unordered_map>

namespace tallyroom::VolumeMounts {

namespace {

/// Images that are full by nature.
constexpr std::array<std::string_view, 4> imageTypes{"squashfs", "erofs", "cramfs", "romfs"};

/// Sources that are not disks: images in files, memory, placeholders.
constexpr std::array<std::string_view, 4> noDisks{"/dev/loop", "/dev/zram", "/dev/ram", "/dev/fuse"};

/// Where programs keep the mounts that are theirs alone.
constexpr std::array<std::string_view, 7> privateFolders{"/var/lib/docker/",
                                                         "/var/lib/containers/",
                                                         "/var/lib/containerd/",
                                                         "/var/lib/kubelet/",
                                                         "/var/lib/lxd/",
                                                         "/var/lib/snapd/",
                                                         "/snap/"};

constexpr std::array<std::string_view, 4> efiFolders{"/boot/efi", "/boot/EFI", "/efi", "/boot"};

template <std::size_t count>
bool contains(const std::array<std::string_view, count>& texts, std::string_view text)
{
    return std::ranges::find(texts, text) != texts.end();
}

/// True when one of `beginnings` is the beginning of `text`.
template <std::size_t count>
bool beginsWithOneOf(const std::array<std::string_view, count>& beginnings, std::string_view text)
{
    return std::ranges::any_of(beginnings,
                               [text](std::string_view beginning) { return text.starts_with(beginning); });
}

bool isDisk(const Mount& mount)
{
    if (mount.type == "zfs") {
        return mount.source.find('@') == std::string::npos; // no snapshot
    }
    return mount.source.starts_with("/dev/") && !beginsWithOneOf(noDisks, mount.source) &&
           !contains(imageTypes, mount.type);
}

/// A key that all mounts of one volume share.
std::string identity(const Mount& mount)
{
    if (mount.type == "zfs") {
        return "zfs " + mount.source.substr(0, mount.source.find('/'));
    }
    if (classOf(mount) == MountClass::networkShare && !mount.source.empty()) {
        return mount.type + " " + mount.source;
    }
    return std::to_string(mount.device);
}

bool isBetterPlace(const Mount& left, const Mount& right)
{
    return left.mountPoint.size() < right.mountPoint.size(); // "/" is the shortest there is
}

} // namespace

MountClass classOf(const Mount& mount)
{
    const bool isRoot = mount.mountPoint == "/";
    if (isNetworkShare(mount)) {
        return beginsWithOneOf(privateFolders, mount.mountPoint) ? MountClass::hidden
                                                                 : MountClass::networkShare;
    }
    if (isRoot) {
        return MountClass::disk;
    }
    const bool isEfi = mount.type == "vfat" && contains(efiFolders, mount.mountPoint);
    const bool isPrivate = beginsWithOneOf(privateFolders, mount.mountPoint);
    return isDisk(mount) && showsAll(mount) && !isEfi && !isPrivate ? MountClass::disk : MountClass::hidden;
}

std::vector<Mount> listed(const std::vector<Mount>& mounts)
{
    std::unordered_map<std::string, const Mount*> bestPlaces;
    for (const Mount& mount : mounts) {
        if (classOf(mount) == MountClass::hidden) {
            continue;
        }
        const Mount*& best = bestPlaces.try_emplace(identity(mount), &mount).first->second;
        if (isBetterPlace(mount, *best)) {
            best = &mount;
        }
    }
    std::vector<Mount> result;
    for (const Mount& mount : mounts) {
        const auto best = bestPlaces.find(identity(mount));
        if (best != bestPlaces.end() && best->second == &mount) {
            result.push_back(mount);
        }
    }
    return result;
}

bool showsAll(const Mount& mount)
{
    return mount.root == "/" || (mount.type == "btrfs" && mount.root == mount.subvolume);
}

bool isSameVolume(const Mount& left, const Mount& right)
{
    return identity(left) == identity(right);
}

} // namespace tallyroom::VolumeMounts
