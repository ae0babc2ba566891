#pragma once

#include <QImage>
#include <QPainter>
#include <QVariantAnimation>

#include <functional>

namespace tallyroom {

/// A tile that grows to the whole map, or a map that shrinks to a tile, for a moment, unless the desktop
/// wants no animations. Main thread.
class TreemapGrowth : public QObject {
    Q_OBJECT

public:
    /// `widget` is drawn again at each step.
    explicit TreemapGrowth(QWidget& widget);

    /// From all of `map` to its part `tile`, in the widget's coordinates.
    void growFrom(const QImage& map, const QRectF& tile);

    /// From the part `tile` of the map that will be drawn to all of it.
    void shrinkTo(const QRectF& tile);

    [[nodiscard]] bool isRunning() const { return m_animation.state() == QAbstractAnimation::Running; }

    void stop() { m_animation.stop(); }

    /// Draws this moment over `area`; `map` is what is there at the end.
    void paint(QPainter& painter, const QRectF& area, const QImage& map) const;

private:
    void start(const QRectF& tile);

    QWidget& m_widget;
    QVariantAnimation m_animation; // 0 for the whole, 1 for the tile
    QImage m_left;                 // null while shrinking
    QRectF m_tile;
};

} // namespace tallyroom
