#pragma once

#include <QPointF>
#include <QRectF>
#include <QSizeF>

namespace tallyroom {

/// Which part of a map is on screen: it is drawn larger than its widget and moved. A value. Main thread.
class TreemapZoom {
public:
    static constexpr double most = 64;

    [[nodiscard]] double factor() const noexcept { return m_factor; }

    [[nodiscard]] bool isFitting() const noexcept { return m_factor <= 1; }

    /// Where the whole map lies; `window` is what is on screen of it.
    [[nodiscard]] QRectF area(const QRectF& window) const;

    /// Draws `by` times as large, so that what is at `place` stays there. False at the limits.
    bool zoom(double by, const QPointF& place, const QRectF& window);

    /// False at the border.
    bool move(const QPointF& by, const QRectF& window);

    void fit() { *this = {}; }

private:
    void keepWithin(const QSizeF& window);

    double m_factor = 1;
    QPointF m_offset; // of the map's corner from the window's; not positive
};

} // namespace tallyroom
