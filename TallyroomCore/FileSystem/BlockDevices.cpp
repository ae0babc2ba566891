#include "FileSystem/BlockDevices.h"

#include <algorithm>
#include <chrono>
#include <fstream>
#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace tallyroom::BlockDevices {

namespace {

namespace fs = std::filesystem;

/// Disks below logical volumes on mirrors on encrypted partitions: deeper is no machine but a loop.
constexpr int deepestStack = 16;

/// Fewer reads than that may all have come from one place.
constexpr std::uint64_t enoughReads = 1000;

/// Heads take ten times as long to move, but not before each read.
constexpr std::chrono::microseconds leastMean{400};

/// The devices that a logical device is made of; empty for a disk and its partitions.
std::vector<fs::path> devicesBelow(const fs::path& device)
{
    std::vector<fs::path> below;
    std::error_code none;
    for (fs::directory_iterator it{device / "slaves", none}, end; !none && it != end; it.increment(none)) {
        if (const fs::path target = fs::canonical(it->path(), none); !none) {
            below.push_back(target);
        }
    }
    return below;
}

/// The disk that holds a partition; a whole disk is its own.
fs::path wholeDisk(const fs::path& device)
{
    std::error_code unknown;
    return fs::exists(device / "partition", unknown) ? device.parent_path() : device;
}

bool isRotating(const fs::path& disk)
{
    return std::ifstream{disk / "queue/rotational"}.get() == '1';
}

} // namespace

std::optional<std::uint64_t> behind(const Mount& mount)
{
    if (mount.device >> 32U != 0) {
        return mount.device;
    }
    struct stat status = {};
    if (mount.source.starts_with("/dev/") && ::stat(mount.source.c_str(), &status) == 0 &&
        S_ISBLK(status.st_mode)) {
        return (std::uint64_t{major(status.st_rdev)} << 32U) | minor(status.st_rdev);
    }
    return std::nullopt;
}

std::optional<std::vector<fs::path>> disksOf(std::uint64_t device, const std::string& sysfs)
{
    std::error_code unknown;
    const std::string number = std::to_string(device >> 32U) + ":" + std::to_string(device & 0xFFFF'FFFFU);
    std::vector<fs::path> disks;
    std::vector<fs::path> level{fs::canonical(fs::path{sysfs} / "dev/block" / number, unknown)};
    if (unknown) {
        return std::nullopt;
    }
    for (int depth = 0; depth < deepestStack && !level.empty(); ++depth) {
        std::vector<fs::path> next;
        for (const fs::path& part : level) {
            const std::vector<fs::path> below = devicesBelow(part);
            if (below.empty()) {
                disks.push_back(wholeDisk(part));
            }
            next.insert(next.end(), below.begin(), below.end());
        }
        level = std::move(next);
    }
    std::ranges::sort(disks);
    disks.erase(std::ranges::unique(disks).begin(), disks.end());
    return disks;
}

std::vector<fs::path> rotatingDisksOf(std::uint64_t device, const std::string& sysfs)
{
    std::vector<fs::path> disks = disksOf(device, sysfs).value_or(std::vector<fs::path>{});
    std::erase_if(disks, [](const fs::path& disk) { return !isRotating(disk); });
    return disks;
}

bool looksSolid(const fs::path& disk)
{
    std::uint64_t reads = 0, merged = 0, sectors = 0;
    std::chrono::milliseconds::rep waited = 0;
    return std::ifstream{disk / "stat"} >> reads >> merged >> sectors >> waited && reads >= enoughReads &&
           std::chrono::milliseconds{waited} < reads * leastMean;
}

} // namespace tallyroom::BlockDevices
