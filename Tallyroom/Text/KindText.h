#pragma once

#include "Kinds/FolderAnalyzer.h"

#include <QString>

namespace tallyroom {

/// What the dashboard says of the kinds of files in a folder; `share` is a kind's part of it, 0 to 1. Any
/// thread.
namespace KindText {

/// "49,8 %", "< 0,1 %", "0 %"
[[nodiscard]] QString share(double share);

/// "456 727 fichiers · 82,9 Go"
[[nodiscard]] QString total(const FolderSummary& summary);

/// "Vidéos, 41,3 Go, 49,8 %, 1 204 fichiers": a kind in one line, as accessible description.
[[nodiscard]] QString name(const CategorySize& category, double share);

/// The same as markup for the pointer.
[[nodiscard]] QString toolTip(const CategorySize& category, double share);

} // namespace KindText

} // namespace tallyroom
