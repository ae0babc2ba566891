#pragma once

#include "Model/Entry.h"

#include <QString>

#include <optional>

namespace tallyroom {

/// The texts of the treemap. Any thread.
namespace TreemapText {

/// "Photos, 3,8 Go": the accessible name of a tile.
[[nodiscard]] QString name(const Entry& entry);

/// "niveau 2, part 12,0 %, 34 éléments": what else is to be heard of a tile. The share (0 to 1) is of the
/// folder that holds it.
[[nodiscard]] QString description(std::size_t level, double share, std::optional<std::size_t> items);

/// A tile's part of the folder that holds it, and of all.
struct Shares {
    double ofParent = 0;
    QString parent; ///< empty on the first level
    double ofAll = 0;
};

/// "212,4 Mo · 4,9 % de « debug » · 0,3 % du total · il y a 3 mois"
[[nodiscard]] QString facts(const Entry& entry, const Shares& shares, Timestamp now);

/// "34 éléments trop petits pour être dessinés"
[[nodiscard]] QString tooSmall(std::size_t count);

/// The message of a map without tiles; `allFiltered` when the filter hides all entries.
[[nodiscard]] QString noTiles(std::size_t smallEntries, bool allFiltered);

} // namespace TreemapText

} // namespace tallyroom
