#pragma once

#include "FileSystem/FileDescriptor.h"
#include "FileSystem/FileIdentity.h"
#include "FileSystem/SystemError.h"

#include <cstdint>
#include <optional>

namespace tallyroom {

/// Opens the file at a location of any length. Never follows a link (ELOOP), never waits for a FIFO.
[[nodiscard]] SystemResult<FileDescriptor> openForReading(const FileUrl& url);

/// A regular file that is open for reading, and its state at that moment. What is read from it is the content
/// of that state if `isUnchanged` says so afterwards. One thread at a time.
class StableFile {
public:
    /// As `openForReading`, if the file still has the size and the modification time that it was met with
    /// (else ESTALE). Its device and inode may be others: many file systems number files anew whenever they
    /// have forgotten them. A file whose state is as young as the clock's last tick is waited for, some
    /// milliseconds: a change within that tick would not show.
    [[nodiscard]] static SystemResult<StableFile> open(const FileUrl& url, std::int64_t size,
                                                       const std::optional<Timestamp>& modifiedAt);

    /// For one system call; the owner stays this object.
    [[nodiscard]] int descriptor() const noexcept { return m_descriptor.get(); }

    /// Its attributes when it was opened.
    [[nodiscard]] const FileAttributes& attributes() const noexcept { return m_attributes; }

    [[nodiscard]] FileIdentity identity() const { return FileIdentity::of(m_attributes); }

    [[nodiscard]] std::int64_t size() const noexcept { return m_attributes.logicalBytes; }

    /// True while the file is as it was when it was opened.
    [[nodiscard]] bool isUnchanged() const;

private:
    StableFile(FileDescriptor descriptor, const FileAttributes& attributes);

    FileDescriptor m_descriptor;
    FileAttributes m_attributes;
};

} // namespace tallyroom
