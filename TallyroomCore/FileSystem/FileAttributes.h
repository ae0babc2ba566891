#pragma once

#include "FileSystem/SystemError.h"
#include "Model/Entry.h"

#include <compare>
#include <cstdint>
#include <optional>

namespace tallyroom {

/// The type of an item itself, never of a link's target.
enum class EntryType : unsigned char {
    unknown, ///< the file system tells types only item by item
    file,    ///< regular files, and FIFOs, sockets and devices, none of which is ever opened
    folder,
    link
};

/// Which file this is, as long as it exists: two paths with the same device and inode lead to one file.
struct FileId {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;

    friend auto operator<=>(const FileId&, const FileId&) = default;
};

/// The result of one statx(2) call.
struct FileAttributes : FileId {
    EntryType type = EntryType::unknown;
    EntryForm form = EntryForm::ordinary;
    bool isRegular = false; ///< a file whose content can be read
    std::uint32_t links = 0;
    std::int64_t allocatedBytes = 0; ///< st_blocks × 512; the logical size when blocks are not reported
    std::int64_t logicalBytes = 0;
    std::uint32_t format = 0;    ///< the type as the system has it (S_IFMT)
    std::uint64_t mount = 0;     ///< a number that no later mount gets again; 0 where it is not told
    std::int64_t bornAt = 0;     ///< in seconds, with the rest below; 0 where it is not told
    std::uint32_t bornAfter = 0; ///< nanoseconds
    std::optional<Timestamp> modifiedAt;
    std::optional<Timestamp> changedAt; ///< of content or attributes (ctime); nobody can set it

    [[nodiscard]] FileId id() const noexcept { return {device, inode}; }

    /// Device, mount, type and birth time, hashed (ItemIdentity).
    [[nodiscard]] std::uint32_t stamp() const noexcept;
};

/// What a statx(2) call asks for.
enum class FileDetail : unsigned char {
    identity, ///< everything
    sizes     ///< all but birth time and mount, so that stamps tell less
};

/// Mixes a number into a hash.
[[nodiscard]] std::uint64_t mixed(std::uint64_t hash, std::uint64_t value) noexcept;

/// The attributes of `name` in the open folder `folder`, links not followed. `name` is a C string without
/// "/", or any path when `folder` is AT_FDCWD. Any thread.
[[nodiscard]] SystemResult<FileAttributes> fileAttributes(int folder, const char* name);

/// The same into a record that is used again and again. Returns 0 or errno; the record is good for 0 only.
[[nodiscard]] int readFileAttributes(int folder, const char* name, FileDetail detail, FileAttributes& result);

/// The attributes of the item at a location, of any length, the link itself for a link.
[[nodiscard]] SystemResult<FileAttributes> fileAttributes(const FileUrl& url);

/// The attributes of an open file or folder.
[[nodiscard]] SystemResult<FileAttributes> fileAttributes(int descriptor);

/// The mount that holds an item, which rename(2) does not cross; the device where the kernel does not tell
/// mounts apart (< 5.8). Of the open folder itself for an empty name.
[[nodiscard]] SystemResult<std::uint64_t> mountOf(int folder, const char* name);

} // namespace tallyroom
