#include "Theme/ThemeStyleSheet.h"

#include "Theme/Theme.h"

#include <utility>
#include <vector>

namespace tallyroom {

namespace {

const QString sheet = QStringLiteral(R"(
*[tallySurface="window"] { background: @window; }
*[tallySurface="side"] { background: @side; }
*[tallySurface="bar"] { background: @side; border-top: 1px solid @line; }
*[tallySurface="card"] { background: @card; border: 1px solid @line; border-radius: @cardRadius; }
*[tallySurface="banner"] { background: @doneWash; border-radius: @controlRadius; }
*[tallySurface="alert"] { background: @dangerWash; border-radius: @controlRadius; }

QLabel { background: transparent; border: none; }
QLabel[tallyText="strong"] { font-weight: 600; }
QLabel[tallyText="title"] { font-size: @titleSize; font-weight: 600; }
QLabel[tallyText="heading"] { font-size: @headingSize; font-weight: 700; }
QLabel[tallyText="section"] { color: @secondary; font-weight: 600; }
QLabel[tallyText="secondary"] { color: @secondary; }
QLabel[tallyText="small"] { color: @secondary; font-size: @smallSize; }

QPushButton, QToolButton {
    background: @control; color: @text; border: 1px solid @line; border-radius: @controlRadius;
    min-height: @controlInner; padding: 0 12px; outline: none;
}
QPushButton:hover, QToolButton:hover { background: @hover; }
QPushButton:pressed, QPushButton:checked, QToolButton:pressed, QToolButton:checked { background: @accentWash; }
QPushButton:checked, QToolButton:checked { color: @accent; }
QPushButton:focus, QToolButton:focus, QComboBox:focus { border: 1px solid @accent; }
QPushButton:disabled, QToolButton:disabled, QComboBox:disabled { color: @disabled; }
QToolButton, *[tallyButton="icon"] { min-width: @controlInner; max-width: @controlInner; padding: 0; }
QPushButton[tallyButton="primary"], QPushButton[tallyButton="prominent"] {
    background: @accentFill; color: @onAccent; border: 1px solid @accentFill; font-weight: 600; padding: 0 20px;
}
QPushButton[tallyButton="primary"]:hover, QPushButton[tallyButton="prominent"]:hover { background: @accentHover; border-color: @accentHover; }
QPushButton[tallyButton="primary"]:focus, QPushButton[tallyButton="prominent"]:focus { border: 1px solid @text; }
QPushButton[tallyButton="primary"]:disabled, QPushButton[tallyButton="prominent"]:disabled { background: @hover; color: @disabled; border-color: @line; }
QPushButton[tallyButton="prominent"] { min-height: @prominentInner; }
QPushButton[tallyButton="danger"] {
    background: @dangerWash; color: @danger; border: 1px solid @dangerWash; font-weight: 600;
}
QPushButton[tallyButton="danger"]:hover { background: @dangerHover; border-color: @dangerHover; }
QPushButton[tallyButton="danger"]:focus { border-color: @danger; }
QPushButton[tallyButton="danger"]:disabled { background: @control; color: @disabled; border-color: @line; }
*[tallyButton="quiet"] { background: transparent; border: 1px solid transparent; color: @secondary; padding: 0 8px; }
*[tallyButton="quiet"]:hover { background: @hover; }
*[tallyButton="quiet"]:focus { border: 1px solid @accent; }
*[tallyButton="row"] { background: @card; border: 1px solid @line; border-radius: @controlRadius; text-align: left; }
*[tallyButton="row"]:hover { background: @hover; }
*[tallyButton="row"]:focus { border: 1px solid @accent; }
*[tallyButton="card"] { background: @card; border: 1px solid @line; border-radius: @cardRadius; }
*[tallyButton="card"]:hover { background: @hover; }
*[tallyButton="card"]:focus { border: 2px solid @accent; }

*[tallyButton="first"], *[tallyButton="last"] { min-width: @segmentWidth; padding: 0; }
*[tallyButton="first"] { border-top-right-radius: 0; border-bottom-right-radius: 0; }
*[tallyButton="last"] { border-top-left-radius: 0; border-bottom-left-radius: 0; margin-left: -1px; }

*[tallyButton="chip"] { min-height: @chipInner; border-radius: @chipRadius; padding: 0 10px; }

*[tallyButton="menu"] { padding-right: 28px; }

QLineEdit {
    background: @control; color: @text; border: 1px solid @line; border-radius: @controlRadius;
    min-height: @controlInner; padding: 0 6px; selection-background-color: @accentFill; selection-color: @onAccent;
}
QLineEdit[readOnly="true"] { background: transparent; border: 1px solid transparent; }
QLineEdit:focus { border: 1px solid @accent; }
QLineEdit QToolButton { border: none; background: transparent; min-width: 0; min-height: 0; }
QComboBox {
    background: @control; color: @text; border: 1px solid @line; border-radius: @controlRadius;
    min-height: @controlInner; padding: 0 4px 0 12px;
}
QComboBox:hover { background: @hover; }
QComboBox::drop-down { border: none; width: 24px; subcontrol-position: center right; }
QComboBox::down-arrow { image: url(:/Resources/icons/chevron.down.svg); width: 14px; height: 14px; }
QComboBox QAbstractItemView {
    background: @card; color: @text; border: 1px solid @line; outline: none; padding: 4px;
    selection-background-color: @accentWash; selection-color: @text;
}

QProgressBar { background: @line; border: none; border-radius: @progressRadius; max-height: @progressHeight; min-height: @progressHeight; }
QProgressBar::chunk { background: @accent; border-radius: @progressRadius; }

QPushButton::menu-indicator { image: none; width: 0; }
QMenu { background: @card; color: @text; border: 1px solid @line; padding: 4px; }
QMenu::item { padding: 6px 24px 6px 10px; border-radius: @badgeRadius; }
QMenu::item:selected { background: @accentWash; }
QMenu::item:disabled { color: @disabled; }
QMenu::icon { padding-left: 8px; }
QMenu::separator { height: 1px; background: @line; margin: 4px 6px; }
QToolTip { background: @card; color: @text; border: 1px solid @line; padding: 4px 6px; }

QScrollArea { background: transparent; border: none; }
QAbstractItemView {
    background: @window; color: @text; border: none; outline: none;
    selection-background-color: @accentWash; selection-color: @text;
}
QTabWidget::pane { border: none; border-top: 1px solid @line; top: -1px; }
QTabBar { qproperty-drawBase: 0; }
QTabBar::tab {
    background: transparent; color: @secondary; border: none; border-bottom: 2px solid transparent;
    padding: 6px 4px; margin-right: 16px;
}
QTabBar::tab:hover { color: @text; }
QTabBar::tab:selected { color: @accent; border-bottom-color: @accent; }
QTabBar::tab:selected:focus { background: @accentWash; }
QHeaderView { background: @window; border: none; }
QScrollBar { background: transparent; border: none; }
QScrollBar:vertical { width: 12px; }
QScrollBar:horizontal { height: 12px; }
QScrollBar::handle { background: @handle; border-radius: 3px; margin: 3px; }
QScrollBar::handle:hover, QScrollBar::handle:pressed { background: @secondary; }
QScrollBar::handle:vertical { min-height: 32px; }
QScrollBar::handle:horizontal { min-width: 32px; }
QScrollBar::add-line, QScrollBar::sub-line { width: 0; height: 0; }
QScrollBar::add-page, QScrollBar::sub-page { background: transparent; }
)");

QString pixels(int count)
{
    return QString::number(count) + QStringLiteral("px");
}

} // namespace

QString themeStyleSheet(const Theme& theme)
{
    using enum Theme::Colour;
    const auto role = [&theme](Theme::Colour colour) { return theme.colour(colour).name(); };
    const auto wash = [&theme](Theme::Colour colour, double opacity) {
        return theme.wash(theme.colour(colour), opacity).name();
    };
    const QString still =
        theme.isAnimated() ? QString{} : QStringLiteral("* { widget-animation-duration: 0; }");
    const double strength = theme.isDark() ? 2 : 1;
    // Longest names first, so that no name is taken for the beginning of another.
    const std::vector<std::pair<QString, QString>> values{
        {QStringLiteral("@prominentInner"), pixels(Theme::prominentHeight - 2)},
        {QStringLiteral("@progressHeight"), pixels(Theme::progressHeight)},
        {QStringLiteral("@progressRadius"), pixels(Theme::progressHeight / 2)},
        {QStringLiteral("@segmentWidth"), pixels(Theme::controlHeight + Theme::gap / 4)},
        {QStringLiteral("@controlRadius"), pixels(Theme::controlRadius)},
        {QStringLiteral("@controlInner"), pixels(Theme::controlHeight - 2)},
        {QStringLiteral("@chipInner"), pixels(Theme::chipHeight - 2)},
        {QStringLiteral("@chipRadius"), pixels(Theme::chipHeight / 2)},
        {QStringLiteral("@accentHover"), wash(accentFill, 0.88)},
        {QStringLiteral("@dangerHover"), wash(danger, (Theme::washOpacity + 0.06) * strength)},
        {QStringLiteral("@badgeRadius"), pixels(Theme::badgeRadius)},
        {QStringLiteral("@headingSize"), pixels(theme.heading().pixelSize())},
        {QStringLiteral("@accentFill"), role(accentFill)},
        {QStringLiteral("@accentWash"), wash(accent, Theme::washOpacity * strength)},
        {QStringLiteral("@dangerWash"), wash(danger, Theme::washOpacity * strength)},
        {QStringLiteral("@cardRadius"), pixels(Theme::cardRadius)},
        {QStringLiteral("@secondary"), role(secondary)},
        {QStringLiteral("@titleSize"), pixels(theme.title().pixelSize())},
        {QStringLiteral("@smallSize"), pixels(theme.small().pixelSize())},
        {QStringLiteral("@onAccent"), Theme::readableOn(theme.colour(accentFill)).name()},
        {QStringLiteral("@disabled"), wash(secondary, 0.65)},
        {QStringLiteral("@doneWash"), wash(done, Theme::washOpacity * strength)},
        {QStringLiteral("@control"), role(theme.isDark() ? side : window)},
        {QStringLiteral("@window"), role(window)},
        {QStringLiteral("@danger"), role(danger)},
        {QStringLiteral("@accent"), role(accent)},
        {QStringLiteral("@handle"), wash(secondary, 0.45)},
        {QStringLiteral("@hover"), role(hover)},
        {QStringLiteral("@side"), role(side)},
        {QStringLiteral("@card"), role(theme.isDark() ? side : window)},
        {QStringLiteral("@line"), role(line)},
        {QStringLiteral("@text"), role(text)},
    };
    QString result = sheet + still;
    for (const auto& [name, value] : values) {
        result.replace(name, value);
    }
    return result;
}

} // namespace tallyroom
