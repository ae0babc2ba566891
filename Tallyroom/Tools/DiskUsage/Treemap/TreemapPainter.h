#pragma once

#include "Tools/DiskUsage/Treemap/TreemapPalette.h"
#include "Tools/DiskUsage/Treemap/TreemapScene.h"

#include <QFont>
#include <QFontMetricsF>
#include <QImage>
#include <QPainter>

#include <functional>
#include <optional>

namespace tallyroom {

/// Paints the tiles of a scene in the colours and fonts that the theme had when this was made. Tiles are
/// filled pixel by pixel: a map may have 20 000, and a path for each would take half a second. Main thread.
class TreemapPainter {
public:
    struct Look {
        bool checked = false;
        bool covered = false; ///< a folder that holds it is checked
        bool dimmed = false;

        friend bool operator==(const Look&, const Look&) = default;
    };

    using LookOf = std::function<Look(std::size_t tile)>;

    /// How far the ring reaches beyond its tile, in device-independent pixels.
    static constexpr int ringWidth = 2;

    /// `scale` is the device pixels of a device-independent one.
    explicit TreemapPainter(double scale);

    [[nodiscard]] double scale() const noexcept { return m_scale; }

    [[nodiscard]] const TreemapPalette& palette() const noexcept { return m_palette; }

    /// The box that checks a tile: in an open folder's header, else in the lower right corner; nothing where
    /// it has no room. Device-independent pixels.
    [[nodiscard]] std::optional<QRectF> checkBox(const TreemapScene& scene, std::size_t tile) const;

    /// The whole map. `lookOf` is asked once a tile.
    [[nodiscard]] QImage paint(const TreemapScene& scene, const QSize& pixels, const LookOf& lookOf) const;

    /// What shows where the pointer is: frames around the tile and the folders that hold it, and its box.
    void paintHover(QPainter& painter, const TreemapScene& scene, std::size_t tile, Look look) const;

    /// What `paintHover` paints on.
    [[nodiscard]] QRegion hoverRegion(const TreemapScene& scene, std::size_t tile) const;

    /// The ring around the tile that has the keyboard, over the gaps. Device-independent pixels.
    void paintRing(QPainter& painter, const QRectF& tile) const;

    /// A quiet sentence in the middle, where there is nothing to draw.
    void paintMessage(QPainter& painter, const QRect& area, const QString& message) const;

private:
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
    [[nodiscard]] QRectF toPoints(const QRect& rect) const;
    [[nodiscard]] const TreemapPalette::Shade& shadeOf(const TreemapScene& scene, std::size_t tile,
                                                       Look look) const;
    void fill(QImage& image, const QRect& rect, int radius, QRgb colour, QRgb behind) const;
    void fillTile(QImage& image, const TreemapScene& scene, std::size_t tile, Look look) const;
    [[nodiscard]] const Letters& lettersFor(const QSizeF& tile) const;
    [[nodiscard]] bool hasLabel(const QRect& rect) const;
    void paintCheckBox(QPainter& painter, const QRectF& box, const TreemapPalette::Shade& shade,
                       bool isChecked) const;
    void paintLabel(QPainter& painter, const TreemapScene& scene, std::size_t tile, const QRect& rect,
                    Look look) const;
    void paintHeader(QPainter& painter, const TreemapScene& scene, std::size_t tile, const QRect& rect,
                     Look look) const;

    double m_scale;
    TreemapPalette m_palette;
    Letters m_body;
    Letters m_small;
    std::vector<std::vector<int>>
        m_corners; // by radius: how much of each pixel of a corner is inside, of 256
};

} // namespace tallyroom
