#include "Components/SelectionCheckbox.h"

#include "Components/Theme.h"

#include <QPainter>
#include <QPolygonF>

namespace tallyroom {

SelectionCheckbox::SelectionCheckbox(FileUrl url, QWidget* parent) : QCheckBox(parent), m_url(std::move(url))
{
    setAttribute(Qt::WA_Hover);
    connect(this, &QCheckBox::clicked, this, [this](bool isOn) { Q_EMIT checkRequested(m_url, isOn); });
}

void SelectionCheckbox::showSelection(const std::unordered_set<FileUrl>& selection)
{
    setChecked(selection.contains(m_url));
}

void SelectionCheckbox::paintBox(QPainter& painter, const QRect& rect, const Look& look)
{
    const Theme& theme = Theme::shared();
    constexpr int size = Theme::checkBoxSize;
    const QRectF box = QRectF{0, 0, size, size}.translated(rect.x() + (rect.width() - size) / 2,
                                                           rect.y() + (rect.height() - size) / 2);
    const QColor accent = theme.colour(Theme::Colour::accentFill);
    const QColor secondary = theme.colour(Theme::Colour::secondary);
    const QColor outline = look.isChecked || look.isHovered || look.hasFocus ? accent : secondary;
    const QColor fill = look.isChecked ? accent : theme.colour(Theme::Colour::window);

    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    if (!look.isEnabled) {
        painter.setOpacity(0.5);
    }
    painter.setPen(QPen{outline, 1.2});
    painter.setBrush(fill);
    painter.drawRoundedRect(box.adjusted(0.6, 0.6, -0.6, -0.6), Theme::badgeRadius, Theme::badgeRadius);
    if (look.isChecked) {
        // By hand: the symbol's own stroke is too thin at this size.
        painter.setPen(QPen{Theme::readableOn(fill), 1.8, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin});
        const QPointF corner = box.topLeft();
        painter.drawPolyline(
            QPolygonF{{corner + QPointF{4.4, 8.3}, corner + QPointF{7, 10.9}, corner + QPointF{11.7, 5.6}}});
    }
    painter.restore();
}

QSize SelectionCheckbox::sizeHint() const
{
    return {Theme::checkBoxSize + Theme::gap, Theme::checkBoxSize + Theme::gap};
}

void SelectionCheckbox::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter{this};
    paintBox(painter, rect(), {isChecked(), isEnabled(), underMouse(), hasFocus()});
}

bool SelectionCheckbox::hitButton(const QPoint& position) const
{
    return rect().contains(position);
}

} // namespace tallyroom
