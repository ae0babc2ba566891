#include "Components/EntryTableHeader.h"

#include "Components/SymbolIcon.h"

#include <QPainter>

namespace tallyroom {

EntryTableHeader::EntryTableHeader(QWidget* parent) : QHeaderView(Qt::Horizontal, parent)
{
    setFixedHeight(Theme::headerHeight);
    setSectionsClickable(true);
    setHighlightSections(false);
    setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
}

void EntryTableHeader::showSortOrder(int column, bool isAscending)
{
    m_sortColumn = column;
    m_isAscending = isAscending;
    // For assistive tools; what is seen is drawn below.
    setSortIndicator(column, isAscending ? Qt::AscendingOrder : Qt::DescendingOrder);
    viewport()->update();
}

void EntryTableHeader::paintSection(QPainter* painter, const QRect& rect, int logicalIndex) const
{
    const Theme& theme = Theme::shared();
    const bool isSorting = logicalIndex == m_sortColumn;
    const QString title = model()->headerData(logicalIndex, orientation(), Qt::DisplayRole).toString();
    QFont font = theme.small();
    font.setWeight(QFont::DemiBold);
    painter->fillRect(rect, theme.colour(Theme::Colour::window));
    painter->setFont(font);
    painter->setPen(theme.colour(isSorting ? Theme::Colour::text : Theme::Colour::secondary));
    const int mark = isSorting ? Theme::sortMarkSize + 4 : 0;
    const QFontMetrics metrics{font};
    const QString shown = metrics.elidedText(title, Qt::ElideRight, rect.width() - mark);
    painter->drawText(rect, Qt::AlignLeft | Qt::AlignVCenter, shown);
    if (isSorting) {
        const QRect place{rect.x() + metrics.horizontalAdvance(shown) + 4, rect.y(), Theme::sortMarkSize,
                          rect.height()};
        SymbolIcon::paint(*painter, place, m_isAscending ? "chevron.up" : "chevron.down",
                          theme.colour(Theme::Colour::text), Theme::sortMarkSize);
    }
    painter->setPen(theme.colour(Theme::Colour::line));
    painter->drawLine(rect.bottomLeft(), rect.bottomRight());
}

} // namespace tallyroom
