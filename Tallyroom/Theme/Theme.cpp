#include "Theme/Theme.h"

#include "Theme/ThemeStyleSheet.h"

#include <QAbstractButton>
#include <QApplication>
#include <QEvent>
#include <QFontDatabase>
#include <QFontInfo>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QStyle>

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <tuple>

namespace tallyroom {

namespace {

struct Shades {
    QRgb light;
    QRgb dark;
};

constexpr Shades windowShades{0xffffffff, 0xff1e2126};
constexpr Shades accentShades{0xff2f6fed, 0xff6ea2ff};
constexpr double legibleContrast = 4.6; // a little above where black and white read equally well, 4.58

constexpr Shades shades(Theme::Colour role)
{
    switch (role) {
    case Theme::Colour::window:
        return windowShades;
    case Theme::Colour::side:
        return {0xfff4f5f7, 0xff25292f};
    case Theme::Colour::line:
        return {0xffe3e6ea, 0xff343a42};
    case Theme::Colour::text:
        return {0xff1d2127, 0xffe8ebef};
    case Theme::Colour::secondary:
        return {0xff68717d, 0xff9aa4b0};
    case Theme::Colour::accent:
        return accentShades;
    case Theme::Colour::danger:
        return {0xffc7362f, 0xffff7a72};
    case Theme::Colour::done:
        return {0xff1f8a57, 0xff55cf96};
    case Theme::Colour::old:
        return {0xffa35b00, 0xffffb454};
    case Theme::Colour::rowStripe:
        return {0xfff7f8fa, 0xff24282e};
    case Theme::Colour::hover:
        return {0xffeff1f4, 0xff2e333b};
    case Theme::Colour::accentFill:
        return accentShades;
    }
    return {};
}

constexpr Shades shades(FileKind kind)
{
    switch (kind) {
    case FileKind::folder:
        return accentShades;
    case FileKind::image:
        return {0xffe2508a, 0xfff07fac};
    case FileKind::video:
        return {0xff5a5fd8, 0xff9094f2};
    case FileKind::audio:
        return {0xff9a55c9, 0xffbf88e6};
    case FileKind::archive:
        return {0xff96704a, 0xffc09b75};
    case FileKind::code:
        return {0xff2387e0, 0xff5fb0f5};
    case FileKind::document:
        return {0xff7b838d, 0xff9ba4af};
    case FileKind::spreadsheet:
        return {0xff2e9a5f, 0xff5abf88};
    case FileKind::data:
        return {0xff1798a0, 0xff46bcc4};
    case FileKind::diskImage:
        return {0xffe0851f, 0xfff2a555};
    case FileKind::other:
        return {0xff9aa2ac, 0xffb3bac3};
    }
    return {};
}

double luminance(const QColor& colour)
{
    const auto linear = [](float channel) {
        const auto value = static_cast<double>(channel);
        return value <= 0.03928 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) +
           0.0722 * linear(colour.blueF());
}

/// The highlight of a palette that nobody has chosen is no accent.
std::optional<QColor> chosenAccent(const QPalette& desktop)
{
    static constexpr std::array<QRgb, 3> toolkitDefaults{0xff308cc6, 0xff000080, 0xff0000ff};
    const QColor highlight = desktop.color(QPalette::Active, QPalette::Highlight);
    const bool isDefault = std::ranges::find(toolkitDefaults, highlight.rgb()) != toolkitDefaults.end();
    const bool isGrey = highlight.hslSaturationF() < 0.2F;
    return isDefault || isGrey ? std::nullopt : std::optional{highlight};
}

void setLook(QWidget* widget, const char* property, const QString& look)
{
    if (widget->property(property).toString() == look) {
        return; // to polish again costs milliseconds
    }
    widget->setProperty(property, look);
    if (widget->style() != nullptr) {
        widget->style()->unpolish(widget);
        widget->style()->polish(widget);
    }
}

} // namespace

Theme& Theme::shared()
{
    // A child of the application: gone before the fonts and the palette that it holds.
    static QPointer<Theme> theme;
    if (theme == nullptr) {
        theme = new Theme;
        theme->setParent(QCoreApplication::instance());
    }
    return *theme;
}

Theme::Theme()
{
    takeDesktop(QApplication::palette());
}

QColor Theme::colour(Colour role) const
{
    if (role == Colour::accent) {
        return m_accent;
    }
    if (role == Colour::accentFill) {
        // White labels in the light, black ones in the dark; the accent gives way a little where it must.
        return legible(m_accent, m_isDark ? Qt::black : Qt::white);
    }
    const Shades both = shades(role);
    const QColor listed = QColor::fromRgb(m_isDark ? both.dark : both.light);
    const bool isSignal = role == Colour::danger || role == Colour::done || role == Colour::old;
    // Signals are written on their own wash, in badges, buttons and banners.
    return isSignal ? legible(listed, wash(listed, trackOpacity)) : listed;
}

QColor Theme::tint(FileKind kind) const
{
    if (kind == FileKind::folder) {
        return m_accent;
    }
    const Shades both = shades(kind);
    return QColor::fromRgb(m_isDark ? both.dark : both.light);
}

QColor Theme::wash(const QColor& colour, double opacity) const
{
    const QColor ground = this->colour(Colour::window);
    const auto mixed = [opacity](int over, int under) {
        return static_cast<int>(std::lround(over * opacity + under * (1 - opacity)));
    };
    return {mixed(colour.red(), ground.red()), mixed(colour.green(), ground.green()),
            mixed(colour.blue(), ground.blue())};
}

QColor Theme::barFill(const QColor& tint) const
{
    if (!m_isDark) {
        return legible(wash(tint, 0.6), QColor{Qt::black});
    }
    float hue = 0;
    float saturation = 0;
    float value = 0;
    tint.getHsvF(&hue, &saturation, &value);
    const QColor deep =
        QColor::fromHsvF(std::max(hue, 0.0F), std::min(saturation * 1.3F, 1.0F), value * 0.63F);
    return legible(deep, QColor{Qt::white});
}

QColor Theme::readableOn(const QColor& background)
{
    return contrast(background, Qt::black) >= contrast(background, Qt::white) ? Qt::black : Qt::white;
}

double Theme::contrast(const QColor& left, const QColor& right)
{
    const auto [darker, lighter] = std::minmax({luminance(left), luminance(right)});
    return (lighter + 0.05) / (darker + 0.05);
}

QColor Theme::legible(const QColor& ink, const QColor& ground)
{
    const float step = luminance(ground) > 0.5 ? -0.02F : 0.02F;
    QColor result = ink;
    while (contrast(result, ground) < legibleContrast) {
        float hue = 0;
        float saturation = 0;
        float lightness = 0;
        result.getHslF(&hue, &saturation, &lightness);
        const float moved = std::clamp(lightness + step, 0.0F, 1.0F);
        if (moved == lightness) {
            break;
        }
        result = QColor::fromHslF(std::max(hue, 0.0F), saturation, moved);
    }
    return result;
}

QFont Theme::font(int pixels, QFont::Weight weight) const
{
    QFont result = m_desktopFont;
    result.setPixelSize(pixels);
    result.setWeight(weight);
#if QT_VERSION >= QT_VERSION_CHECK(6, 7, 0)
    result.setFeature(QFont::Tag{"tnum"}, 1); // before 6.7 a font's own digits have to do
#endif
    return result;
}

double Theme::scaleFor(const QFont& desktop)
{
    static constexpr double usual = 15; // pixels; 11 points, as most desktops have it
    const double quarters = std::round(4 * QFontInfo{desktop}.pixelSize() / usual);
    return std::clamp(quarters / 4, 1.0, 3.0);
}

QFont Theme::body() const
{
    return font(13, QFont::Normal);
}

QFont Theme::title() const
{
    return font(15, QFont::DemiBold);
}

QFont Theme::heading() const
{
    return font(20, QFont::Bold);
}

QFont Theme::strong() const
{
    return font(13, QFont::DemiBold);
}

QFont Theme::small() const
{
    return font(11, QFont::Normal);
}

void Theme::style(QAbstractButton* button, Button look)
{
    static constexpr std::array names{"plain", "icon", "primary", "prominent", "danger", "quiet",
                                      "row",   "card", "chip",    "menu",      "first",  "last"};
    setLook(button, "tallyButton", QString::fromLatin1(names.at(static_cast<std::size_t>(look))));
    if (auto* const push = qobject_cast<QPushButton*>(button)) {
        push->setAutoDefault(true); // Enter presses it as Space does
    }
    // Styles leave too little air between icon and text: the icon brings its own.
    button->setIconSize({button->text().isEmpty() ? iconSize : iconSize + gap / 2, iconSize});
}

void Theme::style(QLabel* label, Text look)
{
    static constexpr std::array names{"body", "strong", "title", "heading", "section", "secondary", "small"};
    label->setTextFormat(Qt::PlainText); // names may look like markup
    setLook(label, "tallyText", QString::fromLatin1(names.at(static_cast<std::size_t>(look))));
}

void Theme::style(QWidget* widget, Surface surface)
{
    static constexpr std::array names{"window", "side", "bar", "card", "banner", "alert"};
    widget->setAttribute(Qt::WA_StyledBackground);
    setLook(widget, "tallySurface", QString::fromLatin1(names.at(static_cast<std::size_t>(surface))));
}

int Theme::barWidth(int listWidth)
{
    return std::clamp(listWidth / 5, sizeColumnIdeal, sizeColumnMaximum);
}

void Theme::setAnimated(bool isAnimated)
{
    if (m_isAnimated != isAnimated) {
        m_isAnimated = isAnimated;
        if (m_isApplied) {
            apply();
        }
    }
}

void Theme::apply()
{
    if (!m_isApplied) {
        m_isApplied = true;
        qApp->installEventFilter(this);
    }
    const QScopedValueRollback guard{m_isApplying, true};
    m_applied = palette();
    QApplication::setFont(body());
    QApplication::setPalette(m_applied);
    qApp->setStyleSheet(themeStyleSheet(*this));
}

bool Theme::eventFilter(QObject* watched, QEvent* event)
{
    // A palette that is not ours is a wish of the desktop or of a test in its place.
    if (event->type() == QEvent::ThemeChange && !m_isApplying) {
        readDesktop();
    } else if (event->type() == QEvent::ApplicationPaletteChange && watched == qApp && !m_isApplying &&
               QApplication::palette() != m_applied) {
        takeDesktop(QApplication::palette());
        apply();
        Q_EMIT changed();
    }
    return QObject::eventFilter(watched, event);
}

void Theme::readDesktop()
{
    const QScopedValueRollback guard{m_isApplying, true};
    const auto before = std::tuple{m_isDark, m_accent, m_desktopFont};
    QApplication::setPalette({}); // uncovers the desktop's own
    takeDesktop(QApplication::palette());
    apply();
    if (before != std::tuple{m_isDark, m_accent, m_desktopFont}) {
        Q_EMIT changed();
    }
}

void Theme::takeDesktop(const QPalette& desktop)
{
    const QByteArray forced = qgetenv("TALLYROOM_THEME");
    const bool isDesktopDark =
        desktop.color(QPalette::Window).lightness() < desktop.color(QPalette::WindowText).lightness();
    m_isDark = forced == "dark" || (forced != "light" && isDesktopDark);
    m_accent = QColor::fromRgb(m_isDark ? accentShades.dark : accentShades.light);
    if (const std::optional<QColor> chosen = chosenAccent(desktop)) {
        m_accent = legible(*chosen, colour(Colour::window));
    }
    m_desktopFont = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
}

QPalette Theme::palette() const
{
    const QColor control = colour(m_isDark ? Colour::side : Colour::window);
    const QColor pale = wash(colour(Colour::secondary), 0.65);
    QPalette result{control, colour(Colour::window)};
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText,
                            QPalette::BrightText}) {
        result.setColor(role, colour(Colour::text));
        result.setColor(QPalette::Disabled, role, pale);
    }
    result.setColor(QPalette::Base, control);
    result.setColor(QPalette::AlternateBase, colour(Colour::rowStripe));
    result.setColor(QPalette::ToolTipBase, control);
    result.setColor(QPalette::PlaceholderText, colour(Colour::secondary));
    result.setColor(QPalette::Highlight, m_accent);
    result.setColor(QPalette::HighlightedText, readableOn(m_accent));
    result.setColor(QPalette::Link, m_accent);
    return result;
}

} // namespace tallyroom
