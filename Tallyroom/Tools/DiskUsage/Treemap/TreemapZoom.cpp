#include "Tools/DiskUsage/Treemap/TreemapZoom.h"

#include <algorithm>

namespace tallyroom {

QRectF TreemapZoom::area(const QRectF& window) const
{
    return {window.topLeft() + m_offset, window.size() * m_factor};
}

bool TreemapZoom::zoom(double by, const QPointF& place, const QRectF& window)
{
    const double factor = std::clamp(m_factor * by, 1.0, most);
    if (factor == m_factor) {
        return false;
    }
    const QPointF within = place - window.topLeft();
    m_offset = within - (within - m_offset) * (factor / m_factor);
    m_factor = factor;
    keepWithin(window.size());
    return true;
}

bool TreemapZoom::move(const QPointF& by, const QRectF& window)
{
    const QPointF before = m_offset;
    m_offset += by;
    keepWithin(window.size());
    return m_offset != before;
}

void TreemapZoom::keepWithin(const QSizeF& window)
{
    const auto within = [this](double offset, double length) {
        return std::clamp(offset, length - length * m_factor, 0.0);
    };
    m_offset = {within(m_offset.x(), window.width()), within(m_offset.y(), window.height())};
}

} // namespace tallyroom
