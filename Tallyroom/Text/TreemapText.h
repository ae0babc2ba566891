#pragma once

#include "Model/Entry.h"

#include <QString>

namespace tallyroom {

/// The texts of the treemap. Any thread.
namespace TreemapText {

/// "Photos, 3,8 Go": the accessible name of a tile.
[[nodiscard]] QString name(const Entry& entry);

/// Name, size and share (0 to 1) of the folder, as markup; the name is escaped.
[[nodiscard]] QString toolTip(const Entry& entry, double share);

/// How many entries are too small to be drawn and their total, as markup; empty when there are none.
[[nodiscard]] QString smallEntriesToolTip(std::size_t count, std::int64_t sizeBytes);

/// The message of a map without tiles; `allFiltered` when the filter hides all entries.
[[nodiscard]] QString noTiles(std::size_t smallEntries, bool allFiltered);

} // namespace TreemapText

} // namespace tallyroom
