#include "Tools/DiskUsage/Treemap/TreemapPalette.h"

#include "Theme/Theme.h"

namespace tallyroom {

namespace {

// Tints are made for icons on the window. As large areas, and under white letters, they stand deeper, in
// percent; where even the deepest is too bright for white, the letters are black.
constexpr int deeper = 116;
constexpr int deepest = 160;
constexpr int step = 4;
constexpr double unknownStrength = 0.95;
constexpr double unknownStrengthInTheDark = 0.5;

// Strengths of the neutral tone, over the window.
constexpr double openStrength = 0.10;
constexpr double openStep = 0.035;
constexpr double edgeStrength = 0.16; // more than its folder
constexpr double closedStrength = 0.16;
constexpr double restStrength = 0.3;

constexpr double dimmedStrength = 0.12;

QColor shadeOf(FileKind kind)
{
    const Theme& theme = Theme::shared();
    const QColor tint = theme.tint(kind);
    if (kind == FileKind::other) {
        // Recedes into the window: a deep grey is a document's.
        return theme.wash(tint, theme.isDark() ? unknownStrengthInTheDark : unknownStrength);
    }
    const auto isUnderWhite = [](const QColor& fill) { return Theme::readableOn(fill).lightnessF() > 0.5F; };
    if (theme.isDark()) {
        return theme.barFill(tint);
    }
    for (int factor = deeper; factor <= deepest; factor += step) {
        if (const QColor fill = tint.darker(factor); isUnderWhite(fill)) {
            return fill;
        }
    }
    return tint.darker(deeper);
}

TreemapPalette::Shade neutral(double strength)
{
    const Theme& theme = Theme::shared();
    const QColor tone = theme.colour(Theme::Colour::secondary);
    const QColor fill = theme.wash(tone, strength);
    return {fill.rgb(), theme.wash(tone, strength + edgeStrength).rgb(),
            Theme::legible(theme.colour(Theme::Colour::text), fill), Theme::legible(tone, fill)};
}

} // namespace

TreemapPalette::TreemapPalette()
    : m_rest(neutral(restStrength)), m_background(Theme::shared().colour(Theme::Colour::window).rgb()),
      m_checked(Theme::shared().colour(Theme::Colour::text).rgb())
{
    const Theme& theme = Theme::shared();
    for (const FileKind kind : FileKind::all) {
        const QColor fill = shadeOf(kind);
        const QColor label = Theme::readableOn(fill);
        m_files.at(kind.index()) = {fill.rgb(), fill.rgb(), label, label};
        const QColor pale = theme.wash(fill, dimmedStrength);
        const QColor paleLabel = Theme::legible(theme.colour(Theme::Colour::secondary), pale);
        m_dimmed.at(kind.index()) = {pale.rgb(), pale.rgb(), paleLabel, paleLabel};
    }
    for (std::size_t level = 0; level < depths; ++level) {
        const double strength = openStrength + openStep * static_cast<double>(level);
        m_open.at(level) = neutral(strength);
        m_closed.at(level) = neutral(strength + closedStrength);
    }
}

} // namespace tallyroom
