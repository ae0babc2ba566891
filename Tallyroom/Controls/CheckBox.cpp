#include "Controls/CheckBox.h"

#include "Theme/Theme.h"

#include <QPainter>
#include <QPolygonF>

#include <algorithm>

namespace tallyroom {

CheckBox::CheckBox(const QString& text, QWidget* parent) : QCheckBox(text, parent)
{
    setAttribute(Qt::WA_Hover);
}

void CheckBox::paintBox(QPainter& painter, const QRect& rect, const Look& look)
{
    const Theme& theme = Theme::shared();
    constexpr int size = Theme::checkBoxSize;
    const QRectF box = QRectF{0, 0, size, size}.translated(rect.x() + (rect.width() - size) / 2,
                                                           rect.y() + (rect.height() - size) / 2);
    const QColor accent = theme.colour(Theme::Colour::accentFill);
    const QColor secondary = theme.colour(Theme::Colour::secondary);
    const bool isMarked = look.isChecked || look.isPartial;
    const QColor outline = isMarked || look.isHovered || look.hasFocus ? accent : secondary;
    const QColor fill = isMarked ? accent : theme.colour(Theme::Colour::window);

    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    if (!look.isEnabled) {
        painter.setOpacity(0.5);
    }
    painter.setPen(QPen{outline, 1.2});
    painter.setBrush(fill);
    painter.drawRoundedRect(box.adjusted(0.6, 0.6, -0.6, -0.6), Theme::badgeRadius, Theme::badgeRadius);
    // By hand: the symbol's own stroke is too thin at this size.
    painter.setPen(QPen{Theme::readableOn(fill), 1.8, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin});
    const QPointF corner = box.topLeft();
    if (look.isChecked) {
        painter.drawPolyline(
            QPolygonF{{corner + QPointF{4.4, 8.3}, corner + QPointF{7, 10.9}, corner + QPointF{11.7, 5.6}}});
    } else if (look.isPartial) {
        painter.drawLine(corner + QPointF{4.8, 8}, corner + QPointF{11.2, 8});
    }
    painter.restore();
}

QSize CheckBox::sizeHint() const
{
    constexpr int side = Theme::checkBoxSize + Theme::gap;
    const QFontMetrics metrics{Theme::shared().body()};
    const int label = text().isEmpty() ? 0 : metrics.horizontalAdvance(text()) + Theme::gap;
    return {side + label, std::max(side, metrics.height())};
}

void CheckBox::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter{this};
    constexpr int side = Theme::checkBoxSize + Theme::gap;
    const QRect place = text().isEmpty() ? rect() : QRect{0, 0, side, height()};
    paintBox(painter, place, {isChecked(), isEnabled(), underMouse(), hasFocus()});
    painter.setFont(Theme::shared().body());
    painter.setPen(Theme::shared().colour(Theme::Colour::text));
    painter.drawText(rect().adjusted(side + Theme::gap / 2, 0, 0, 0), Qt::AlignLeft | Qt::AlignVCenter,
                     text());
}

bool CheckBox::hitButton(const QPoint& position) const
{
    return rect().contains(position);
}

} // namespace tallyroom
