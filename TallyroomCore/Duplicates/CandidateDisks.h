#pragma once

#include "FileSystem/DiskPace.h"
#include "Model/FileUrl.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace tallyroom {

/// Where a file's bytes from `offset` on lie on its disk (FIEMAP). Nothing where the file system does not
/// tell. `descriptor` is open for reading.
[[nodiscard]] std::optional<std::uint64_t> placeOnDisk(int descriptor, std::int64_t offset);

/// The rotating disks among those that hold the candidates of one search, and how they answer it. Any thread.
class CandidateDisks {
public:
    /// `devices` as in FileId, each with a file on it: btrfs gives each subvolume a number of its own, which
    /// no table of mounts knows.
    CandidateDisks(const std::map<std::uint64_t, FileUrl>& devices, const DiskSense& sense);

    /// Whether files on this device are to be read one after the other, as they lie there, at present.
    [[nodiscard]] bool areOrdered(std::uint64_t device) const
    {
        return m_pace.isOrdered() && m_rotating.contains(device);
    }

    /// How many may be read at a time then.
    [[nodiscard]] unsigned readers() const noexcept { return static_cast<unsigned>(m_disks.size()); }

    /// Reads a file on `device`, and watches how its disk answers.
    void watch(std::uint64_t device, const std::function<void()>& read);

private:
    const DiskSense& m_sense;
    const std::map<std::uint64_t, std::vector<std::string>> m_rotating; ///< devices, with their disks
    const std::vector<std::string> m_disks;                             ///< of the device that lies on most
    DiskPace m_pace;
};

} // namespace tallyroom
