#pragma once

#include "FileSystem/FileDescriptor.h"
#include "FileSystem/SystemError.h"
#include "Removal/ItemPlace.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace tallyroom {

/// The ".trashinfo" file that a trash keeps for each item, in its folder "info".
namespace TrashRecord {

inline constexpr std::string_view suffix = ".trashinfo";

/// "notes.txt", then "notes.2.txt" to "notes.9.txt", then numbers drawn from an ever larger range: a hundred
/// folders of the same name in the trash do not cost a hundred tries. At most `longest` bytes.
[[nodiscard]] std::string itemName(const std::string& name, unsigned tried, std::size_t longest);

/// The content of a record for an item that is trashed now.
[[nodiscard]] std::string contentFor(std::string_view path);

/// Makes the record `name`; EEXIST when another item has taken it. Leaves nothing behind on a failure.
[[nodiscard]] SystemResult<void> write(int records, const std::string& name, const std::string& content);

/// The folder of records beside a trash's open folder of items.
[[nodiscard]] SystemResult<FileDescriptor> openBeside(int files);

/// True when `name` is a record.
[[nodiscard]] bool isRecord(int records, const std::string& name);

/// The path that the record `name` tells, absolute or relative to the volume; nothing when it tells none.
[[nodiscard]] std::optional<std::string> origin(int records, const std::string& name);

/// True when the record `name` names the place as its item's origin: by its whole path, or by the end of it,
/// since a volume's trash keeps paths relative to the volume.
[[nodiscard]] bool tellsPlace(int records, const std::string& name, const ItemPlace& place);

} // namespace TrashRecord

} // namespace tallyroom
