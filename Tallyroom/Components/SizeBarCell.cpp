#include "Components/SizeBarCell.h"

#include "Components/Theme.h"
#include "Text/SizeFormatter.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>

namespace tallyroom {

void SizeBarCell::paint(QPainter& painter, const QRect& cell) const
{
    const Theme& theme = Theme::shared();
    const QRectF bar{static_cast<qreal>(cell.x()),
                     static_cast<qreal>(cell.y() + (cell.height() - Theme::barHeight) / 2),
                     static_cast<qreal>(cell.width()), static_cast<qreal>(Theme::barHeight)};
    const QColor track = theme.wash(tint, Theme::trackOpacity);
    const QColor fill = theme.barFill(tint);
    const qreal radius = bar.height() / 2;

    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    QPainterPath capsule;
    capsule.addRoundedRect(bar, radius, radius);
    painter.fillPath(capsule, track);
    const qreal filled = bar.width() * std::clamp(fraction, 0.0, 1.0);
    if (filled > 0) {
        // A part narrower than the bar is high is a slice of the capsule's end, not a blob beside it.
        QPainterPath part;
        part.addRoundedRect(QRectF{bar.topLeft(), QSizeF{std::max(filled, bar.height()), bar.height()}},
                            radius, radius);
        painter.setClipRect(QRectF{bar.topLeft(), QSizeF{filled, bar.height()}});
        painter.fillPath(part, fill);
        painter.setClipping(false);
    }
    painter.setFont(theme.small());
    painter.setPen(Theme::readableOn(fill)); // the track lies between the fill and the window
    painter.drawText(bar.adjusted(0, 0, -radius, 0), Qt::AlignRight | Qt::AlignVCenter,
                     QString::fromStdString(SizeFormatter::string(sizeBytes)));
    painter.restore();
}

} // namespace tallyroom
