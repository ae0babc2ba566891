#include "Rows/EntryTableHeader.h"

#include "Theme/SymbolIcon.h"

#include <QContextMenuEvent>
#include <QFocusEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace tallyroom {

EntryTableHeader::EntryTableHeader(QWidget* parent) : QHeaderView(Qt::Horizontal, parent)
{
    setFixedHeight(Theme::headerHeight);
    setSectionsClickable(true);
    setHighlightSections(false);
    setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    setFocusPolicy(Qt::TabFocus);
    setMouseTracking(true); // for the pointer over an edge
}

void EntryTableHeader::showSortOrder(int column, bool isAscending)
{
    m_sortColumn = column;
    m_isAscending = isAscending;
    // For assistive tools; `paintSection` draws the visible mark.
    setSortIndicator(column, isAscending ? Qt::AscendingOrder : Qt::DescendingOrder);
    nameChoice();
    viewport()->update();
}

QString EntryTableHeader::title(int column) const
{
    return model()->headerData(column, orientation(), Qt::DisplayRole).toString();
}

/// Goes on to the next title that is on show; stays where there is none.
void EntryTableHeader::moveChoice(int step)
{
    for (int place = visualIndex(m_chosenColumn) + step; place >= 0 && place < count(); place += step) {
        const int column = logicalIndex(place);
        if (!isSectionHidden(column) && !title(column).isEmpty()) {
            m_chosenColumn = column;
            nameChoice();
            viewport()->update();
            return;
        }
    }
}

/// What a screen reader says of the header: the title that the keyboard is on.
void EntryTableHeader::nameChoice()
{
    if (m_chosenColumn < 0) {
        return;
    }
    QString name = QStringLiteral("Trier par : ") + title(m_chosenColumn);
    if (m_chosenColumn == m_sortColumn) {
        name += m_isAscending ? QStringLiteral(", croissant") : QStringLiteral(", décroissant");
    }
    setAccessibleName(name);
}

std::optional<int> EntryTableHeader::edgeAt(int x) const
{
    for (int column = 0; column < count(); ++column) {
        const bool isNear = std::abs(sectionViewportPosition(column) - x) <= Theme::gap / 2;
        if (isNear && !isSectionHidden(column) &&
            model()->headerData(column, orientation(), widthRole).toBool()) {
            return column;
        }
    }
    return std::nullopt;
}

void EntryTableHeader::contextMenuEvent(QContextMenuEvent* event)
{
    const bool isByMouse = event->reason() == QContextMenuEvent::Mouse;
    const QPoint below{sectionViewportPosition(std::max(m_chosenColumn, 0)), height()};
    Q_EMIT menuRequested(isByMouse ? event->globalPos() : viewport()->mapToGlobal(below));
}

void EntryTableHeader::mousePressEvent(QMouseEvent* event)
{
    const int x = event->position().toPoint().x();
    const std::optional<int> column = event->button() == Qt::LeftButton ? edgeAt(x) : std::nullopt;
    if (column) {
        m_drag = {*column, sectionSize(*column), x};
    } else {
        QHeaderView::mousePressEvent(event);
    }
}

void EntryTableHeader::mouseMoveEvent(QMouseEvent* event)
{
    const int x = event->position().toPoint().x();
    if (m_drag) {
        Q_EMIT widthChosen(m_drag->column, m_drag->width + m_drag->x - x);
        return;
    }
    viewport()->setCursor(edgeAt(x) ? Qt::SplitHCursor : Qt::ArrowCursor);
    QHeaderView::mouseMoveEvent(event);
}

void EntryTableHeader::mouseReleaseEvent(QMouseEvent* event)
{
    if (!std::exchange(m_drag, std::nullopt)) {
        QHeaderView::mouseReleaseEvent(event);
    }
}

const OwnKeys<EntryTableHeader::Act>& EntryTableHeader::ownKeys()
{
    static const OwnKeys<Act> keys{
        {QStringLiteral("Choisir un titre"), {{Qt::Key_Left, Act::previous}, {Qt::Key_Right, Act::next}}},
        {QStringLiteral("Trier par cette colonne"),
         {{Qt::Key_Space, Act::sort}, {Qt::Key_Return, Act::sort}, {Qt::Key_Enter, Act::sort}}},
        {QStringLiteral("Rétrécir ou élargir la colonne"),
         {{Qt::CTRL | Qt::Key_Left, Act::narrow}, {Qt::CTRL | Qt::Key_Right, Act::widen}}},
        {QStringLiteral("Aller aux lignes"), {{Qt::Key_Down, Act::leave}}},
    };
    return keys;
}

std::vector<ToldKeys> EntryTableHeader::keys()
{
    return ownKeys().told();
}

void EntryTableHeader::keyPressEvent(QKeyEvent* event)
{
    const std::optional<Act> act = ownKeys().find(*event);
    if (!act) {
        event->ignore();
        return;
    }
    switch (*act) {
    case Act::previous:
        moveChoice(-1);
        break;
    case Act::next:
        moveChoice(1);
        break;
    case Act::sort:
        Q_EMIT sectionClicked(m_chosenColumn);
        break;
    case Act::narrow:
        changeWidth(-1);
        break;
    case Act::widen:
        changeWidth(1);
        break;
    case Act::leave:
        parentWidget()->setFocus();
        break;
    }
}

void EntryTableHeader::changeWidth(int step)
{
    Q_EMIT widthChosen(m_chosenColumn, sectionSize(m_chosenColumn) + step * Theme::gap);
}

void EntryTableHeader::focusInEvent(QFocusEvent* event)
{
    // A narrower window may have taken the chosen column away.
    if (m_chosenColumn < 0 || isSectionHidden(m_chosenColumn)) {
        m_chosenColumn = m_sortColumn;
    }
    nameChoice();
    QHeaderView::focusInEvent(event);
    viewport()->update();
}

void EntryTableHeader::focusOutEvent(QFocusEvent* event)
{
    QHeaderView::focusOutEvent(event);
    viewport()->update();
}

void EntryTableHeader::paintSection(QPainter* painter, const QRect& rect, int logicalIndex) const
{
    const Theme& theme = Theme::shared();
    const bool isSorting = logicalIndex == m_sortColumn;
    QFont font = theme.small();
    font.setWeight(QFont::DemiBold);
    painter->fillRect(rect, theme.colour(Theme::Colour::window));
    painter->setFont(font);
    painter->setPen(theme.colour(isSorting ? Theme::Colour::text : Theme::Colour::secondary));
    const int mark = isSorting ? Theme::sortMarkSize + 4 : 0;
    const QFontMetrics metrics{font};
    const bool isRight = (model()->headerData(logicalIndex, orientation(), Qt::TextAlignmentRole).toInt() &
                          static_cast<int>(Qt::AlignRight)) != 0;
    const int room = rect.width() - mark - (isRight ? 2 * Theme::gap : 0);
    const QString shown = metrics.elidedText(title(logicalIndex), Qt::ElideRight, room);
    const int width = metrics.horizontalAdvance(shown);
    const int left = rect.x() + (isRight ? room - width : 0);
    painter->drawText(QRect{left, rect.y(), width, rect.height()}, Qt::AlignLeft | Qt::AlignVCenter, shown);
    if (hasFocus() && logicalIndex == m_chosenColumn) {
        painter->setPen(theme.colour(Theme::Colour::accent));
        painter->drawRoundedRect(QRectF{left - 4.5, rect.y() + 3.5, width + mark + 9.0, rect.height() - 7.0},
                                 Theme::badgeRadius, Theme::badgeRadius);
    }
    if (isSorting) {
        const QRect place{left + width + 4, rect.y(), Theme::sortMarkSize, rect.height()};
        SymbolIcon::paint(*painter, place, m_isAscending ? "chevron.up" : "chevron.down",
                          theme.colour(Theme::Colour::text), Theme::sortMarkSize);
    }
    painter->setPen(theme.colour(Theme::Colour::line));
    painter->drawLine(rect.bottomLeft(), rect.bottomRight());
}

} // namespace tallyroom
