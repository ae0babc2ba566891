#pragma once

#include "FileSystem/UnreadPlaces.h"
#include "Model/Entry.h"

#include <QString>

namespace tallyroom {

/// The words for items that a scan could not read. Any thread.
namespace UnreadText {

/// "12 dossiers illisibles", "3 éléments illisibles" when not all are folders.
[[nodiscard]] QString count(std::int64_t unread, bool hasItems);

/// The same of a whole scan, with the folders that the user excludes; empty when all was read.
[[nodiscard]] QString count(const SharedUnreadPlaces& unread);

/// "4,2 Go", "≥ 4,2 Go" when something below could not be read, "inconnue" when nothing could, "illisible"
/// for what cannot be read itself, "exclu" for what is excluded.
[[nodiscard]] QString size(const Entry& entry);

/// The same to be heard: "au moins 4,2 Go".
[[nodiscard]] QString spokenSize(const Entry& entry);

/// Why the size is no more than that; empty for a size that is whole.
[[nodiscard]] QString toolTip(const Entry& entry);

} // namespace UnreadText

} // namespace tallyroom
