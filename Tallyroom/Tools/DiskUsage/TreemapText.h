#pragma once

#include "Tools/DiskUsage/TreemapScene.h"

#include <QString>

namespace tallyroom {

/// What the treemap says in words. Any thread.
namespace TreemapText {

/// "Photos, 3,8 Go": a tile in one line, for who cannot see it.
[[nodiscard]] QString name(const Entry& entry);

/// Name, size and share of the folder, as markup; whatever the name looks like, it is not markup.
[[nodiscard]] QString toolTip(const TreemapScene& scene, std::size_t tile);

/// How many entries share the texture and what they add up to, as markup; empty when there are none.
[[nodiscard]] QString toolTip(const TreemapScene::Crumbs& crumbs);

/// What stands in a map without tiles; `allFiltered` when it is the filter that leaves nothing.
[[nodiscard]] QString noTiles(const TreemapScene::Crumbs& crumbs, bool allFiltered);

} // namespace TreemapText

} // namespace tallyroom
