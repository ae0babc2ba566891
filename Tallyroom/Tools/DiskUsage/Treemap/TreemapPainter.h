#pragma once

#include "Tools/DiskUsage/Treemap/TreemapScene.h"

#include <QFont>
#include <QFontMetricsF>
#include <QImage>
#include <QPainter>

#include <array>
#include <functional>
#include <optional>

namespace tallyroom {

/// Paints the tiles of a scene in the colours and fonts that the theme had when this was made. Tiles are
/// filled pixel by pixel: a folder may have 100 000, and a path for each would take a second. Main thread.
class TreemapPainter {
public:
    struct Look {
        bool checked = false;
        bool hovered = false;
    };

    /// How far the ring reaches beyond its tile, in device-independent pixels.
    static constexpr int ringWidth = 2;

    /// The box that checks a tile, in its lower right corner, drawn while the tile is checked or under the
    /// pointer; nothing where it has no room. Device-independent pixels.
    [[nodiscard]] static std::optional<QRectF> checkBox(const QRectF& tile);

    /// `scale` is the device pixels of a device-independent one.
    explicit TreemapPainter(double scale);

    [[nodiscard]] double scale() const noexcept { return m_scale; }

    /// The whole map. `isChecked` is asked once a tile.
    [[nodiscard]] QImage paint(const TreemapScene& scene, const QSize& pixels,
                               const std::function<bool(std::size_t tile)>& isChecked) const;

    /// One tile anew over what was painted of it.
    void repaintTile(QImage& image, const TreemapScene& scene, std::size_t tile, Look look) const;

    /// The ring around the tile that has the keyboard, over the gaps. Device-independent pixels.
    void paintRing(QPainter& painter, const QRectF& tile) const;

    /// A quiet sentence in the middle, where there is nothing to draw.
    void paintMessage(QPainter& painter, const QRect& area, const QString& message) const;

private:
    struct Shade {
        QRgb fill = 0;
        QRgb hovered = 0;
        QColor label;
    };

    struct Letters {
        Letters(const QFont& nameFont, const QFont& sizeFont)
            : name(nameFont), size(sizeFont), nameMetrics(nameFont), sizeMetrics(sizeFont)
        {}

        QFont name;
        QFont size;
        QFontMetricsF nameMetrics;
        QFontMetricsF sizeMetrics;
    };

    [[nodiscard]] int pixels(double length) const;
    void fill(QImage& image, const QRect& rect, int radius, QRgb colour, QRgb behind) const;
    void fillTile(QImage& image, const QRect& rect, FileKind kind, Look look) const;
    void fillCrumbs(QImage& image, const QRect& rect) const;
    [[nodiscard]] const Letters& lettersFor(const QSizeF& tile) const;
    [[nodiscard]] bool hasLabel(const QRect& rect) const;
    void paintCheckBox(QPainter& painter, const QRectF& box, FileKind kind, bool isChecked) const;
    void paintLabel(QPainter& painter, const QRect& rect, const Entry& entry, FileKind kind, Look look) const;

    double m_scale;
    std::array<Shade, 11> m_shades;
    QRgb m_background;
    QRgb m_border;
    std::array<QRgb, 2> m_crumbs;
    Letters m_body;
    Letters m_small;
    std::vector<std::vector<int>>
        m_corners; // by radius: how much of each pixel of a corner is inside, of 256
};

} // namespace tallyroom
