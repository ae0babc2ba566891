#include "Duplicates/CandidateDisks.h"

#include "FileSystem/MountTable.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <linux/fiemap.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <utility>

namespace tallyroom {

namespace {

/// Of a structure whose last member has no length, which cannot be initialized.
template <class Structure>
Structure zeroed()
{
    Structure structure;
    std::memset(&structure, 0, sizeof structure);
    return structure;
}

using DisksOfDevices = std::map<std::uint64_t, std::vector<std::string>>;

DisksOfDevices rotating(const std::map<std::uint64_t, FileUrl>& devices, const DiskSense& sense)
{
    DisksOfDevices rotating;
    const auto mounts = MountTable::reachable(MountTable::read());
    for (const auto& [device, file] : devices) {
        const auto mount = MountTable::holding(file, mounts);
        if (auto disks = mount ? sense.rotatingDisks(*mount) : std::vector<std::string>{}; !disks.empty()) {
            rotating[device] = std::move(disks);
        }
    }
    return rotating;
}

std::vector<std::string> mostDisks(const DisksOfDevices& rotating)
{
    const auto most = std::ranges::max_element(
        rotating, {}, [](const auto& deviceAndDisks) { return deviceAndDisks.second.size(); });
    return most != rotating.end() ? most->second : std::vector<std::string>{};
}

/// Files that lie side by side are read without a move of the head.
constexpr int patience = 8;

} // namespace

std::optional<std::uint64_t> placeOnDisk(int descriptor, std::int64_t offset)
{
    alignas(fiemap) std::array<std::byte, sizeof(fiemap) + sizeof(fiemap_extent)> storage{};
    fiemap request = zeroed<fiemap>();
    request.fm_start = static_cast<std::uint64_t>(offset);
    request.fm_length = FIEMAP_MAX_OFFSET - request.fm_start;
    request.fm_extent_count = 1;
    std::memcpy(storage.data(), &request, sizeof request);
    if (::ioctl(descriptor, FS_IOC_FIEMAP, storage.data()) != 0) {
        return std::nullopt;
    }
    std::memcpy(&request, storage.data(), sizeof request);
    fiemap_extent extent = zeroed<fiemap_extent>();
    std::memcpy(&extent, storage.data() + sizeof request, sizeof extent);
    constexpr auto noPlace = FIEMAP_EXTENT_UNKNOWN | FIEMAP_EXTENT_DATA_INLINE;
    if (request.fm_mapped_extents == 0 || (extent.fe_flags & noPlace) != 0) {
        return std::nullopt;
    }
    return extent.fe_physical;
}

CandidateDisks::CandidateDisks(const std::map<std::uint64_t, FileUrl>& devices, const DiskSense& sense)
    : m_sense(sense), m_rotating(rotating(devices, sense)), m_disks(mostDisks(m_rotating)),
      m_pace(!sense.lookSolid(m_disks), patience)
{}

void CandidateDisks::watch(std::uint64_t device, const std::function<void()>& read)
{
    if (!m_rotating.contains(device)) {
        read();
        return;
    }
    const DiskUse before = m_sense.useSoFar();
    read();
    if (m_pace.note(m_sense.useSoFar().since(before))) {
        m_sense.hear({m_disks, m_pace.isOrdered()});
    }
}

} // namespace tallyroom
