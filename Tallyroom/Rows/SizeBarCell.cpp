#include "Rows/SizeBarCell.h"

#include "Controls/Capsule.h"
#include "Text/SizeText.h"
#include "Theme/Theme.h"

#include <QPainter>

namespace tallyroom {

void SizeBarCell::paint(QPainter& painter, const QRect& cell) const
{
    const Theme& theme = Theme::shared();
    const QRectF bar{static_cast<qreal>(cell.x()),
                     static_cast<qreal>(cell.y() + (cell.height() - Theme::barHeight) / 2),
                     static_cast<qreal>(cell.width()), static_cast<qreal>(Theme::barHeight)};
    QColor track = tint; // translucent: it stays visible on the row that is current
    track.setAlphaF(static_cast<float>(Theme::trackOpacity));
    const QColor fill = theme.barFill(tint);
    paintCapsule(painter, bar, fraction, track, fill);
    painter.save();
    painter.setFont(theme.small());
    painter.setPen(Theme::readableOn(fill)); // the track lies between the fill and the window
    painter.drawText(bar.adjusted(0, 0, -bar.height() / 2, 0), Qt::AlignRight | Qt::AlignVCenter,
                     text.isEmpty() ? sizeText(sizeBytes) : text);
    painter.restore();
}

} // namespace tallyroom
