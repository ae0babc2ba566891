#include "Duplicates/CandidateDisks.h"

#include "FileSystem/MountTable.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <linux/fiemap.h>
#include <linux/fs.h>
#include <sys/ioctl.h>

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

CandidateDisks::CandidateDisks(const std::set<std::uint64_t>& devices, const DiskSense& sense)
    : m_sense(sense)
{
    std::set<std::uint64_t> asked;
    for (const Mount& mount : MountTable::read()) {
        if (!devices.contains(mount.device) || !asked.insert(mount.device).second) {
            continue;
        }
        if (const auto disks = sense.rotatingDisks(mount); !disks.empty()) {
            m_rotating.insert(mount.device);
            if (disks.size() > m_disks.size()) {
                m_disks = disks;
            }
        }
    }
}

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
