#pragma once

#include "Concurrency/PatientCalls.h"
#include "Concurrency/ProgressStream.h"
#include "FileSystem/MountTable.h"
#include "Volumes/DeviceTraits.h"
#include "Volumes/VolumeFigures.h"
#include "Volumes/VolumeUsage.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace tallyroom {

/// Data sources of VolumeInfo; replaceable in tests. Called on many threads.
struct VolumeSources {
    std::function<std::vector<Mount>()> mounts;         ///< never waits
    std::function<VolumeFigures(const Mount&)> figures; ///< may wait for ever
    std::function<DeviceTraits(const Mount&)> traits;   ///< may wait for ever
    std::function<FileUrl()> home;                      ///< as it is named; never waits
    std::function<FileUrl(const FileUrl&)> resolved;    ///< without links; may wait for ever
    std::shared_ptr<PatientCalls> diskCalls;            ///< asks disks
    std::shared_ptr<PatientCalls> networkCalls;         ///< asks servers, which must not hold up disks

    /// This machine.
    [[nodiscard]] static const VolumeSources& system();
};

/// The mounted volumes as far as they have answered.
struct VolumeReport {
    std::vector<VolumeUsage> volumes;      ///< as `VolumeInfo::current` orders them
    std::optional<VolumeUsage> mainVolume; ///< as `VolumeInfo::main`
    std::int64_t unanswered = 0;           ///< volumes that have not answered; 0 when all is known

    friend bool operator==(const VolumeReport&, const VolumeReport&) = default;
};

/// The mounted volumes and how full they are.
///
/// Listed are the disks, internal and external, and the network shares, each once; VolumeMounts says which.
/// Volumes are asked all at once, and one that does not answer in time is left out: a share whose server is
/// gone makes nobody wait longer than the stated limit. What cannot be read is left out too. Nothing is
/// cached. Any thread.
namespace VolumeInfo {

inline constexpr std::chrono::milliseconds usualLimit{2000};
inline constexpr std::chrono::milliseconds streamLimit{10'000};

/// The volume that holds the home folder, as it is listed; nothing when it does not answer within `limit`.
[[nodiscard]] std::optional<VolumeUsage> main(std::chrono::milliseconds limit = usualLimit,
                                              const VolumeSources& sources = VolumeSources::system());

/// The volumes that answer within `limit`: internal ones first, then by size, the largest first, equal ones
/// in the order of the mount table. Waits for them.
[[nodiscard]] std::vector<VolumeUsage> current(std::chrono::milliseconds limit = usualLimit,
                                               const VolumeSources& sources = VolumeSources::system());

/// A report whenever volumes have answered, each with all that is known so far; the first one comes at once,
/// within 200 ms even when nothing answers. The stream ends when all have answered, or at `limit`.
[[nodiscard]] ProgressStream<VolumeReport> stream(std::chrono::milliseconds limit = streamLimit,
                                                  const VolumeSources& sources = VolumeSources::system());

} // namespace VolumeInfo

} // namespace tallyroom
