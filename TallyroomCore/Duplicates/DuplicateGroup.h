#pragma once

#include "FileSystem/FileIdentity.h"
#include "Model/Entry.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tallyroom {

/// A set of files with identical content. A plain value.
struct DuplicateGroup {
    /// Made of the size and the digests; unique within one result.
    std::string id;
    /// The files, ascending by the bytes of their paths, without modification times.
    std::vector<Entry> entries;
    /// The state of each entry when it was digested, in the same order.
    std::vector<FileIdentity> identities;
    /// Whether each of `entries` lay in a trash, and so goes when that is emptied; in the same order.
    std::vector<bool> inTrash;

    /// The size of each file in bytes; 0 without files.
    [[nodiscard]] std::int64_t sizeBytes() const noexcept;

    /// The bytes of all files but one, hard links counted like copies. An overflow ends the process.
    [[nodiscard]] std::int64_t wastedBytes() const;

    /// The bytes that come free when one file is kept: files that are reached by several paths count once.
    [[nodiscard]] std::int64_t reclaimableBytes() const;

    /// The bytes that removing the entries marked by `isGone` frees: files that other paths of the group
    /// still lead to free nothing.
    [[nodiscard]] std::int64_t freedBytes(const std::vector<bool>& isGone) const;

    /// The entry that is kept unless the person says otherwise: the first one outside of any trash, else the
    /// first one.
    [[nodiscard]] std::size_t keptCopy() const noexcept;

    /// Which entries need not stay beside the one at `kept`: all that are not the same file, and outside of
    /// any trash where a copy is.
    [[nodiscard]] std::vector<bool> redundantBeside(std::size_t kept) const;

    /// The group without the entries that `isGone` marks.
    [[nodiscard]] DuplicateGroup without(const std::vector<bool>& isGone) const;

    friend bool operator==(const DuplicateGroup&, const DuplicateGroup&) = default;
};

} // namespace tallyroom
