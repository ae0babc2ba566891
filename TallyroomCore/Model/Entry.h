#pragma once

#include "Model/FileUrl.h"
#include "Model/ItemIdentity.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <tuple>
#include <utility>

namespace tallyroom {

/// A moment as file systems keep it: nanoseconds since 1970-01-01T00:00:00Z.
using Timestamp = std::chrono::sys_time<std::chrono::nanoseconds>;

/// What an entry is besides a folder or a file with content.
enum class EntryForm : unsigned char {
    ordinary,
    link,
    fifo,
    socket,
    device ///< a character or a block device
};

/// What a search found out about an entry besides its size; a set of bits.
enum class EntryMark : unsigned char {
    toVerify = 1,    ///< a cache that nothing proves to be one
    inUse = 2,       ///< a cache that a running process holds open, or that was written to just now
    application = 4, ///< a part of an installed program
    unreadable = 8,  ///< a folder that cannot be listed, an item that cannot be examined: its size is unknown
    unreadItems = 16, ///< not all that is unread below it are folders
    excluded = 32     ///< scans leave it out, or something below it, because the user says so
};

/// One file or folder, as every list, bar and tile shows it. A plain value.
struct Entry {
    /// Where the item is; also its identity in lists.
    FileUrl url{};
    /// The name as its folder knows it, in bytes.
    std::string name{};
    /// Space used on disk in bytes; for a folder, of everything below it.
    std::int64_t sizeBytes = 0;
    /// True for a folder, false for everything else, links to folders included.
    bool isDirectory = false;
    /// Chooses icon and words only, and is no part of equality.
    EntryForm form = EntryForm::ordinary;
    /// A set of `EntryMark`. No part of equality.
    std::uint8_t marks = 0;
    /// Of a cache: whose it is, as `Ecosystem::stored` tells; 0 for none. No part of equality.
    std::uint8_t ecosystem = 0;
    /// How many folders could not be listed, and items not examined, at it and below it: then its size is a
    /// lower bound. Stays at its largest value rather than wrap. No part of equality.
    std::uint32_t unread = 0;
    /// When the content last changed; absent when the file system did not say.
    std::optional<Timestamp> modifiedAt{};
    /// Which item the scan saw there. Not a part of equality: a newer scan of the same item is no change.
    ItemIdentity identity{};

    [[nodiscard]] bool has(EntryMark mark) const noexcept { return (marks & std::to_underlying(mark)) != 0; }

    void set(EntryMark mark, bool isSet) noexcept
    {
        const unsigned others = marks & ~static_cast<unsigned>(std::to_underlying(mark));
        marks = static_cast<std::uint8_t>(isSet ? others | std::to_underlying(mark) : others);
    }

    /// Whether a person has to choose it by its own check box: whatever chooses many leaves it out.
    [[nodiscard]] bool needsOwnCheck() const noexcept
    {
        return has(EntryMark::toVerify) || has(EntryMark::application);
    }

    [[nodiscard]] const FileUrl& id() const noexcept { return url; }

    friend bool operator==(const Entry& left, const Entry& right)
    {
        return std::tie(left.url, left.name, left.sizeBytes, left.isDirectory, left.modifiedAt) ==
               std::tie(right.url, right.name, right.sizeBytes, right.isDirectory, right.modifiedAt);
    }
};

/// The ranking of every list: larger first. Equal sizes are left to a stable sort.
[[nodiscard]] inline bool isLarger(const Entry& left, const Entry& right) noexcept
{
    return left.sizeBytes > right.sizeBytes;
}

} // namespace tallyroom

template <>
struct std::hash<tallyroom::Entry> {
    std::size_t operator()(const tallyroom::Entry& entry) const noexcept;
};
