#include "Controls/Capsule.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>

namespace tallyroom {

namespace {

QPainterPath rounded(const QRectF& bar)
{
    QPainterPath path;
    path.addRoundedRect(bar, bar.height() / 2, bar.height() / 2);
    return path;
}

} // namespace

void paintCapsule(QPainter& painter, const QRectF& bar, double fraction, const QColor& track,
                  const QColor& fill)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillPath(rounded(bar), track);
    const qreal filled = bar.width() * std::clamp(fraction, 0.0, 1.0);
    if (filled > 0) {
        // A part narrower than the bar is high is a slice of the capsule's end, not a blob beside it.
        painter.setClipRect(QRectF{bar.topLeft(), QSizeF{filled, bar.height()}}, Qt::IntersectClip);
        painter.fillPath(rounded({bar.topLeft(), QSizeF{std::max(filled, bar.height()), bar.height()}}),
                         fill);
    }
    painter.restore();
}

} // namespace tallyroom
