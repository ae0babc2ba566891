#pragma once

#include "FileSystem/FileAttributes.h"
#include "FileSystem/MountTable.h"
#include "Model/FileUrl.h"
#include "Model/ItemIdentity.h"

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace tallyroom {

/// What tells the mounted volumes apart at one moment, and with it the items on them. A device number is
/// given to the next stick that is plugged in, and some file systems make up their inode numbers as they go.
class VolumeMarks {
public:
    VolumeMarks() = default;

    /// The marks of the mounts in this table. Touches no mounted file system, so it never waits.
    explicit VolumeMarks(std::span<const Mount> mounts);

    /// Which item these attributes are of, without its root. Where inode numbers do not last, a file's size
    /// and modification time stand for it.
    [[nodiscard]] ItemIdentity identify(const FileAttributes& attributes) const;

    friend bool operator==(const VolumeMarks&, const VolumeMarks&) = default;

private:
    struct Mark {
        std::uint64_t device = 0;
        std::uint32_t value = 0;
        bool keepsInodes = true;

        friend bool operator==(const Mark&, const Mark&) = default;
    };

    std::vector<Mark> m_marks; ///< by device
};

/// A folder that a scan started from, as the scan found it.
struct ScanRoot {
    std::uint32_t key = 0; ///< 0 for a folder that could not be examined
    FileUrl url;
    FileUrl place; ///< the same without links on the way
    ItemIdentity identity;
    std::shared_ptr<const VolumeMarks> volumes;

    /// Which item below it these attributes are of, for its entry to remember.
    [[nodiscard]] ItemIdentity identify(const FileAttributes& attributes) const;
};

/// The roots of all scans of this process. The same folder, opened again, is the same row: a row costs some
/// hundred bytes and stays. Any thread.
namespace ScanRoots {

/// The row of a folder that was opened at `url`. The reference stays good.
[[nodiscard]] const ScanRoot& add(const FileUrl& url, int folder);

/// The row of an identity's root; an empty row for an unknown key.
[[nodiscard]] const ScanRoot& find(std::uint32_t key);

} // namespace ScanRoots

} // namespace tallyroom
