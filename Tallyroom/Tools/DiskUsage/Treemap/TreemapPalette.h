#pragma once

#include "Model/FileKind.h"

#include <QColor>

#include <array>

namespace tallyroom {

/// The colours of a map, as the theme was when this was made. Kinds are told by colour, folders are neutral,
/// deeper by depth. Main thread.
class TreemapPalette {
public:
    /// The colours of one tile.
    struct Shade {
        QRgb fill = 0;
        QRgb edge = 0; ///< of an open folder
        QColor label;
        QColor quietLabel; ///< for what goes with a name
    };

    TreemapPalette();

    /// A file; a closed folder has its own.
    [[nodiscard]] const Shade& file(FileKind kind, bool isDimmed) const
    {
        return (isDimmed ? m_dimmed : m_files).at(kind.index());
    }

    [[nodiscard]] const Shade& open(std::uint32_t level) const { return m_open.at(depth(level)); }

    [[nodiscard]] const Shade& closed(std::uint32_t level) const { return m_closed.at(depth(level)); }

    /// What is too small to be drawn one by one.
    [[nodiscard]] const Shade& rest() const { return m_rest; }

    [[nodiscard]] QRgb background() const { return m_background; }

    [[nodiscard]] QRgb checked() const { return m_checked; }

private:
    static constexpr std::size_t depths = 6;

    [[nodiscard]] static std::size_t depth(std::uint32_t level)
    {
        return std::min<std::size_t>(level, depths - 1);
    }

    std::array<Shade, 11> m_files;
    std::array<Shade, 11> m_dimmed;
    std::array<Shade, depths> m_open;
    std::array<Shade, depths> m_closed;
    Shade m_rest;
    QRgb m_background;
    QRgb m_checked;
};

} // namespace tallyroom
