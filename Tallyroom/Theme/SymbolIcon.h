#pragma once

#include "Theme/Theme.h"

#include <QIcon>
#include <QPixmap>

#include <string_view>

namespace tallyroom {

/// Named symbols, drawn in one colour. Main thread.
namespace SymbolIcon {

/// The symbol `name` in `colour`, a square of `size` device-independent pixels, crisp at `devicePixelRatio`.
/// Kept for the next time. An unknown name gives an empty picture.
[[nodiscard]] QPixmap pixmap(std::string_view name, const QColor& colour, int size = Theme::iconSize,
                             qreal devicePixelRatio = 1);

/// Paints the symbol in the middle of `rect`, at the painter's own scale.
void paint(QPainter& painter, const QRect& rect, std::string_view name, const QColor& colour,
           int size = Theme::iconSize);

/// An icon in the theme's colour for `role` at the time of painting, paler when disabled,
/// the accent on a checked button.
[[nodiscard]] QIcon icon(std::string_view name, Theme::Colour role = Theme::Colour::text);

/// An icon in one fixed colour.
[[nodiscard]] QIcon icon(std::string_view name, const QColor& colour);

/// The application's own icon, in its colours.
[[nodiscard]] QIcon application();

} // namespace SymbolIcon

} // namespace tallyroom
