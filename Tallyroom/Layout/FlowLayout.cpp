#include "Layout/FlowLayout.h"

#include "Theme/Theme.h"

#include <algorithm>

namespace tallyroom {

FlowLayout::FlowLayout(QWidget* parent) : QLayout(parent)
{
    setContentsMargins({});
    setSpacing(Theme::gap);
}

FlowLayout::~FlowLayout()
{
    qDeleteAll(m_items);
}

void FlowLayout::addItem(QLayoutItem* item)
{
    m_items.append(item);
}

QLayoutItem* FlowLayout::takeAt(int index)
{
    return index >= 0 && index < count() ? m_items.takeAt(index) : nullptr;
}

int FlowLayout::heightForWidth(int width) const
{
    return arrange({0, 0, width, 0}, false);
}

QSize FlowLayout::sizeHint() const
{
    QSize size{0, 0};
    for (const QLayoutItem* const item : m_items) {
        if (!item->isEmpty()) {
            const QSize one = item->sizeHint();
            size = {size.width() + (size.width() == 0 ? 0 : spacing()) + one.width(),
                    std::max(size.height(), one.height())};
        }
    }
    return size;
}

QSize FlowLayout::minimumSize() const
{
    QSize size{0, 0};
    for (const QLayoutItem* const item : m_items) {
        size = item->isEmpty() ? size : size.expandedTo(item->minimumSize());
    }
    return size;
}

void FlowLayout::setGeometry(const QRect& rect)
{
    QLayout::setGeometry(rect);
    arrange(rect, true);
}

int FlowLayout::arrange(const QRect& rect, bool isReal) const
{
    QPoint place = rect.topLeft();
    int rowHeight = 0;
    for (QLayoutItem* const item : m_items) {
        if (item->isEmpty()) {
            continue;
        }
        const QSize size = item->sizeHint();
        const bool isFirst = place.x() == rect.left();
        if (!isFirst && place.x() + size.width() > rect.right() + 1) {
            place = {rect.left(), place.y() + rowHeight + spacing()};
            rowHeight = 0;
        }
        if (isReal) {
            item->setGeometry({place, size});
        }
        place.rx() += size.width() + spacing();
        rowHeight = std::max(rowHeight, size.height());
    }
    return place.y() + rowHeight - rect.top();
}

} // namespace tallyroom
