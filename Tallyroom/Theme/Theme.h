#pragma once

#include "Model/FileKind.h"

#include <QColor>
#include <QFont>
#include <QObject>
#include <QPalette>

class QAbstractButton;
class QLabel;
class QWidget;

namespace tallyroom {

/// Every colour, measure and font of the window, light and dark. No other file names a colour or a size.
/// Main thread.
class Theme : public QObject {
    Q_OBJECT

public:
    enum class Colour {
        window,
        side,
        line,
        text,
        secondary,
        accent,
        danger,
        done,
        old,
        rowStripe,
        hover,
        accentFill ///< the accent as the ground of a label
    };
    /// How a button looks: `plain` has a line around it, `icon` is a plain square, `primary` is the one
    /// action of a screen, `prominent` the same where there is little else, `danger` deletes, `quiet` is bare
    /// until the mouse is over it, `row` is a row that acts, `card` a whole card that does, `chip` is a small
    /// one of several to choose from, `menu` has room for the mark of a menu on its right, `first` and `last`
    /// are the ends of a row of icons of which one is chosen.
    enum class Button { plain, icon, primary, prominent, danger, quiet, row, card, chip, menu, first, last };
    enum class Text { body, strong, title, heading, section, secondary, small };
    /// The ground under a part of the window.
    enum class Surface { window, side, bar, card, banner, alert };

    // The 8-pixel grid, in device-independent pixels.
    static constexpr int gap = 8;
    static constexpr int margin = 20;
    static constexpr int sidebarWidth = 216;
    static constexpr int rowHeight = 34;
    static constexpr int tallRowHeight = 46;
    static constexpr int headerHeight = 28;
    static constexpr int controlHeight = 32;
    static constexpr int windowMenuRoom = controlHeight + gap; ///< at the right end of each header
    static constexpr int controlRadius = 7;
    static constexpr int chipHeight = 26;
    static constexpr int cardRadius = 12;
    static constexpr int badgeRadius = 4;
    static constexpr int iconSize = 18;
    static constexpr int smallIconSize = 14;
    static constexpr int sortMarkSize = 12;
    static constexpr int checkBoxSize = 16;
    static constexpr int barHeight = 14;
    static constexpr int progressHeight = 6;
    static constexpr int volumeBarHeight = 10;
    static constexpr int shareBarHeight = 22;
    static constexpr int shareBarGap = 2;
    static constexpr int shareBarLeast = 3; ///< of a part: below it nobody would see it
    static constexpr int cardPadding = 16;
    static constexpr int cardGap = 12;
    static constexpr int cardMinimumWidth = 204;
    static constexpr double mainCardShare = 1.45; ///< of a row, where the others have 1
    static constexpr int prominentHeight = 38;
    static constexpr int welcomeCircle = 84;
    static constexpr int welcomeIconSize = 36;
    static constexpr int messageWidth = 360;
    static constexpr int recentsWidth = 380;
    static constexpr int failureListWidth = 560;
    static constexpr int failureListHeight = 320;
    static constexpr int checkColumnWidth = 28;
    static constexpr int nameColumnMinimum = 200;
    static constexpr int sizeColumnMinimum = 100;
    static constexpr int nameColumnMaximum = 640; ///< or sizes are far from their names
    static constexpr int sizeColumnIdeal = 190;
    static constexpr int sizeColumnMaximum = 320;
    static constexpr int ownColumnMinimum = 56; ///< of a column whose width people choose
    static constexpr int ownColumnMaximum = 320;
    static constexpr int gainColumnMinimum = 150;
    static constexpr int narrowWidth = 600; ///< of a list, below which it saves room
    static constexpr int selectionBarHeight = 52;
    static constexpr double trackOpacity = 0.16;
    static constexpr double washOpacity = 0.10;

    /// The one theme of the process; made with the application, follows its palette.
    static Theme& shared();

    [[nodiscard]] bool isDark() const { return m_isDark; }

    [[nodiscard]] QColor colour(Colour role) const;

    /// The colour that stands for a kind of file, in icons, bars and tiles.
    [[nodiscard]] QColor tint(FileKind kind) const;

    /// How wide the bars of sizes are in a list of that width.
    [[nodiscard]] static int barWidth(int listWidth);

    /// `colour` at `opacity` over the window: a track behind a bar, a quiet fill behind a button.
    [[nodiscard]] QColor wash(const QColor& colour, double opacity) const;

    /// What fills a bar of `tint` that text lies on: the tint, calmed towards the window.
    [[nodiscard]] QColor barFill(const QColor& tint) const;

    /// Black or white, whichever reads better on `background` (WCAG 2.1 relative luminance).
    [[nodiscard]] static QColor readableOn(const QColor& background);

    /// The WCAG 2.1 contrast of two opaque colours, 1 to 21.
    [[nodiscard]] static double contrast(const QColor& left, const QColor& right);

    /// `ink` with its lightness moved until text in it can be read on `ground`: 4.5 to 1 at least.
    [[nodiscard]] static QColor legible(const QColor& ink, const QColor& ground);

    /// How much larger than usual all of the window has to be for someone who has chosen `desktop` as font:
    /// 1 up to 12 points, then a quarter more at a time, 3 at the most.
    [[nodiscard]] static double scaleFor(const QFont& desktop);

    /// The desktop's font, 13 pixels, digits of one width.
    [[nodiscard]] QFont body() const;
    [[nodiscard]] QFont title() const;   ///< 15 pixels, semibold
    [[nodiscard]] QFont heading() const; ///< 20 pixels, bold
    [[nodiscard]] QFont strong() const;  ///< body, semibold
    [[nodiscard]] QFont small() const;   ///< 11 pixels

    /// Gives a button, a label or a plain widget its look, which follows the theme. Set the text of a button
    /// first.
    static void style(QAbstractButton* button, Button look);
    static void style(QLabel* label, Text look);
    static void style(QWidget* widget, Surface surface);

    /// Whether the window may move what it shows; the desktop's own wish to be still comes first.
    [[nodiscard]] bool isAnimated() const { return m_isAnimated; }

    void setAnimated(bool isAnimated);

    /// Applies palette, style sheet and fonts to the whole application, and follows the desktop's changes.
    /// TALLYROOM_THEME=light or dark in the environment holds one of them.
    void apply();

Q_SIGNALS:
    /// Light became dark, the accent or the font changed: drawn pictures are to be drawn again.
    void changed();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    Theme();

    void readDesktop();
    void takeDesktop(const QPalette& desktop);
    [[nodiscard]] QPalette palette() const;
    [[nodiscard]] QFont font(int pixels, QFont::Weight weight) const;

    bool m_isDark = false;
    bool m_isAnimated = true;
    bool m_isApplied = false;
    bool m_isApplying = false;
    QColor m_accent;
    QFont m_desktopFont;
    QPalette m_applied;
};

} // namespace tallyroom
