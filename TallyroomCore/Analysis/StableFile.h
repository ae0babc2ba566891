#pragma once

#include "Analysis/DuplicateGroup.h"
#include "FileSystem/FileDescriptor.h"

#include <cstdint>
#include <optional>

namespace tallyroom {

/// A regular file that is open for reading and still the very one that was met before, in the same state.
/// What is read from it is the content of that state if `isUnchanged` says so afterwards. One thread at a
/// time.
class StableFile {
public:
    /// Opens the file at a location of any length. Nothing when it cannot be opened, is no regular file, or
    /// differs from what is expected in device, inode, size, links or times. Never follows a link, never
    /// waits for a FIFO. A file whose state is as young as the clock's last tick is waited for, some
    /// milliseconds: a change within that tick would not show.
    [[nodiscard]] static std::optional<StableFile> open(const FileUrl& url, const FileIdentity& expected,
                                                        std::int64_t expectedSize);

    /// For one system call; the owner stays this object.
    [[nodiscard]] int descriptor() const noexcept { return m_descriptor.get(); }

    /// True while the file is as it was when it was opened.
    [[nodiscard]] bool isUnchanged() const;

private:
    StableFile(FileDescriptor descriptor, const FileIdentity& expected, std::int64_t expectedSize);

    FileDescriptor m_descriptor;
    FileIdentity m_expected;
    std::int64_t m_expectedSize;
};

} // namespace tallyroom
