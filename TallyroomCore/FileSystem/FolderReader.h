#pragma once

#include "FileSystem/FileAttributes.h"
#include "FileSystem/FileDescriptor.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

namespace tallyroom {

/// openat(2). A new file gets `mode`.
[[nodiscard]] SystemResult<FileDescriptor> openAt(int folder, const char* path, int flags,
                                                  unsigned mode = 0600);

/// The use of an open folder.
enum class FolderAccess : unsigned char {
    listing,       ///< its names can be read
    listingNoLink, ///< the same, and a link in its place is refused
    throughOnly    ///< only a step to something below it (O_PATH): needs no right to read it
};

/// Opens the folder at a location of any length, beyond PATH_MAX too. Links on the way are followed, as in
/// any path that a person names. Any thread.
[[nodiscard]] SystemResult<FileDescriptor> openFolder(const FileUrl& url, FolderAccess access);

/// Opens the folder `name` in the open folder `parent` for listing; a link is refused (ELOOP or ENOTDIR).
[[nodiscard]] SystemResult<FileDescriptor> openChildFolder(int parent, const char* name);

/// The same, and refuses a mount point (EXDEV).
[[nodiscard]] SystemResult<FileDescriptor> openOwnChildFolder(int parent, const char* name);

/// Opens the folder at `path` below the open folder `base`; no component may be a link (ELOOP or ENOTDIR) or
/// lead out of it (EXDEV): RESOLVE_NO_SYMLINKS and RESOLVE_BENEATH of openat2(2), or step by step where the
/// kernel does not grant that call. `path` may be longer than PATH_MAX.
[[nodiscard]] SystemResult<FileDescriptor> openDescendantFolder(int base, std::string_view path,
                                                                FolderAccess access = FolderAccess::listing);

/// One name of a folder, as getdents64(2) returns it.
struct ListedName {
    const char* name = nullptr; ///< zero-terminated, in the buffer that was read
    std::uint64_t inode = 0;
    std::uint32_t length = 0;
    std::uint32_t index = 0; ///< its place among the buffer's names
    EntryType type = EntryType::unknown;

    [[nodiscard]] std::string_view view() const noexcept { return {name, length}; }
};

/// Names as the kernel hands them over: one buffer of getdents64(2) records.
class NameBuffer {
public:
    /// About 1 500 names of usual length; larger ones gain nothing.
    static constexpr std::size_t capacity = 64 * 1024;

    NameBuffer();

    /// Reads the next names of an open folder into the buffer. False at the end, and on an error, which ends
    /// a listing where it stands: the names read before it are kept.
    bool read(int folder);

    /// Appends the buffer's names to `names`, "." and ".." left out. They point into the buffer.
    void parse(std::vector<ListedName>& names) const;

    /// How many names the buffer holds, "." and ".." left out.
    [[nodiscard]] std::size_t count() const;

    /// Gives the storage that is not used back.
    void shrink();

private:
    // A vector would fill all of it with zeros first.
    std::unique_ptr<std::byte[]> m_bytes; // NOLINT(*-avoid-c-arrays)
    std::size_t m_size = capacity;
    std::size_t m_used = 0;
};

} // namespace tallyroom
