#include "Tools/DiskUsage/Treemap/TreemapGrowth.h"

#include <QStyle>
#include <QWidget>

#include <algorithm>

namespace tallyroom {

namespace {

constexpr int milliseconds = 150;

} // namespace

TreemapGrowth::TreemapGrowth(QWidget& widget) : m_widget(widget)
{
    m_animation.setDuration(milliseconds);
    m_animation.setEasingCurve(QEasingCurve::OutCubic);
    connect(&m_animation, &QVariantAnimation::valueChanged, &m_widget, [this] { m_widget.update(); });
    connect(&m_animation, &QAbstractAnimation::finished, &m_widget, [this] {
        m_left = {};
        m_widget.update();
    });
}

void TreemapGrowth::growFrom(const QImage& map, const QRectF& tile)
{
    m_left = map;
    m_animation.setStartValue(0.0);
    m_animation.setEndValue(1.0);
    start(tile);
}

void TreemapGrowth::shrinkTo(const QRectF& tile)
{
    m_left = {};
    m_animation.setStartValue(1.0);
    m_animation.setEndValue(0.0);
    start(tile);
}

void TreemapGrowth::start(const QRectF& tile)
{
    m_animation.stop();
    m_tile = tile;
    const int desired = m_widget.style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, &m_widget);
    if (desired > 0 && m_widget.isVisible() && !tile.isEmpty()) {
        m_animation.start();
    }
}

void TreemapGrowth::paint(QPainter& painter, const QRectF& area, const QImage& map) const
{
    const double nearness = m_animation.currentValue().toDouble();
    const auto between = [nearness](double whole, double tile) { return whole + (tile - whole) * nearness; };
    const QRectF part{
        QPointF{between(area.left(), m_tile.left()), between(area.top(), m_tile.top())},
        QPointF{between(area.right(), m_tile.right()), between(area.bottom(), m_tile.bottom())}};
    const QImage& shown = m_left.isNull() ? map : m_left;
    const double scale = shown.devicePixelRatio();
    painter.drawImage(area, shown, {part.topLeft() * scale, part.size() * scale});
}

} // namespace tallyroom
