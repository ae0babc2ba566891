#pragma once

#include "FileSystem/FileAttributes.h"

#include <cstdint>
#include <optional>
#include <string>

namespace tallyroom {

/// What the file system says of one item, for a person. A plain value.
struct ItemFacts {
    EntryType type = EntryType::unknown;
    std::uint32_t names = 0;  ///< how many hard links a file has
    unsigned permissions = 0; ///< the lower twelve bits of its mode
    std::string owner;        ///< the user's name, its number where it has none
    std::string group;
    std::string linkTarget; ///< of a symbolic link, as it is written
    std::optional<Timestamp> modifiedAt;
    std::optional<Timestamp> accessedAt;
    std::optional<Timestamp> createdAt;
};

/// Asks about the item at a location of any length, about a link itself. Waits for the disk, and for whoever
/// knows the users; any thread.
[[nodiscard]] SystemResult<ItemFacts> itemFacts(const FileUrl& url);

/// "rwxr-sr-x": permissions as people write them.
[[nodiscard]] std::string permissionLetters(unsigned permissions);

} // namespace tallyroom
