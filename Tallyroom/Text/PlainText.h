#pragma once

#include <QString>

namespace tallyroom {

/// `text` for a tool tip, which the toolkit reads as rich text when it looks like it: shown letter by letter
/// whatever it holds. For every tool tip with a name in it; labels are plain by `Theme::dress`.
[[nodiscard]] QString plainToolTip(const QString& text);

} // namespace tallyroom
