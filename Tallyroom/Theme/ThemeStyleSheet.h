#pragma once

#include <QString>

namespace tallyroom {

class Theme;

/// The one style sheet of the application, in the colours and measures of `theme`.
[[nodiscard]] QString themeStyleSheet(const Theme& theme);

} // namespace tallyroom
