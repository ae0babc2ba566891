#pragma once

#include "Concurrency/Locked.h"
#include "FileSystem/FileAttributes.h"
#include "FileSystem/FileDescriptor.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace tallyroom {

/// A folder that a removal empties and then removes. Any thread, unless stated.
struct EmptiedFolder {
    using SharedDescriptor = std::shared_ptr<const FileDescriptor>;

    struct Access {
        SharedDescriptor descriptor; ///< none before it is opened, and while it is parked
        std::optional<FileId> id;    ///< known as soon as it was parked
    };

    EmptiedFolder(std::shared_ptr<EmptiedFolder> parentFolder, std::string ownName);

    std::shared_ptr<EmptiedFolder> parent; ///< none for the top one
    std::string name;
    unsigned depth = 0;
    unsigned passes = 0;                     ///< by the thread that empties it
    std::optional<SystemError> unreadable;   ///< why its names cannot be known; likewise
    std::atomic<std::uint32_t> pending{1};   ///< its own listing and the folders in it
    std::atomic<bool> keepsSomething{false}; ///< something below it could not be removed
    Locked<Access> access;

    [[nodiscard]] SharedDescriptor descriptor() const { return access.get().descriptor; }

    /// Keeps the folder open from now on.
    SharedDescriptor keepOpen(FileDescriptor opened);

    /// Closes the folder until it is needed again, so that depth does not use up descriptors.
    void park();

    /// Opens a parked folder again, if what was found in its place is the same folder still (else ESTALE).
    [[nodiscard]] SystemResult<SharedDescriptor> reopenAs(FileDescriptor found);

    /// The folder without a parent above it, or itself.
    [[nodiscard]] const EmptiedFolder* top() const;

    /// The names from below `ancestor` down to its own, joined by "/"; from the top one on where there is
    /// none.
    [[nodiscard]] std::string pathBelow(const EmptiedFolder* ancestor) const;
};

} // namespace tallyroom
