#pragma once

#include "Model/FileKind.h"

#include <QColor>
#include <QFont>
#include <QObject>
#include <QPalette>

namespace tallyroom {

/// Every colour, measure and font of the window, light and dark. No other file names a colour or a size.
/// Main thread.
class Theme : public QObject {
    Q_OBJECT

public:
    enum class Colour { window, side, line, text, secondary, accent, danger, done, old, rowStripe };

    // The 8-pixel grid, in device-independent pixels.
    static constexpr int gap = 8;
    static constexpr int margin = 20;
    static constexpr int sidebarWidth = 216;
    static constexpr int rowHeight = 34;
    static constexpr int tallRowHeight = 46;
    static constexpr int controlHeight = 32;
    static constexpr int controlRadius = 7;
    static constexpr int cardRadius = 12;
    static constexpr int iconSize = 18;
    static constexpr int barHeight = 14;

    /// The one theme of the process; made with the application, follows its palette.
    static Theme& shared();

    [[nodiscard]] bool isDark() const;

    [[nodiscard]] QColor colour(Colour role) const;

    /// The colour that stands for a kind of file, in icons, bars and tiles.
    [[nodiscard]] QColor tint(FileKind kind) const;

    /// `colour` at `opacity` over the window: a track behind a bar, a quiet fill behind a button.
    [[nodiscard]] QColor wash(const QColor& colour, double opacity) const;

    /// Black or white, whichever reads better on `background` (WCAG 2.1 relative luminance).
    [[nodiscard]] static QColor readableOn(const QColor& background);

    /// The desktop's font, 13 pixels, digits of one width.
    [[nodiscard]] QFont body() const;
    [[nodiscard]] QFont title() const;  ///< 15 pixels, semibold
    [[nodiscard]] QFont strong() const; ///< body, semibold
    [[nodiscard]] QFont small() const;  ///< 11 pixels

    /// Applies palette, style sheet and fonts to the whole application, and follows the desktop's changes.
    void apply();

Q_SIGNALS:
    /// Light became dark, the accent or the font changed: whoever keeps drawn pictures draws them anew.
    void changed();
};

} // namespace tallyroom
