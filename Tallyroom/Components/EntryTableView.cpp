#include "Components/EntryTableView.h"

#include "Components/EntryRowDelegate.h"
#include "Components/EntryTableHeader.h"
#include "Components/EntryTableModel.h"

#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QScrollBar>

#include <algorithm>

namespace tallyroom {

EntryTableView::EntryTableView(EntryTableModel& model, QWidget* parent)
    : QTableView(parent), m_model(model), m_header(new EntryTableHeader{this})
{
    setUp();
    setModel(&model);
    setHorizontalHeader(m_header);
    setItemDelegate(new EntryRowDelegate{model, *this});
    connect(m_header, &QHeaderView::sectionClicked, this, &EntryTableView::sortBy);
    connect(&model, &EntryTableModel::sortOrderChanged, this, &EntryTableView::showSortOrder);
    connect(&model, &EntryTableModel::rowsAboutToChange, this, &EntryTableView::rememberPlace);
    connect(&model, &EntryTableModel::rowsChanged, this, &EntryTableView::restorePlace);
    connect(&Theme::shared(), &Theme::changed, viewport(), qOverload<>(&QWidget::update));
    showSortOrder();
    layOutColumns();
}

void EntryTableView::setUp()
{
    setSelectionMode(NoSelection);
    setEditTriggers(NoEditTriggers);
    setVerticalScrollMode(ScrollPerPixel);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setShowGrid(false);
    setMouseTracking(true);
    setTabKeyNavigation(false);
    setFrameShape(NoFrame);
    setCornerButtonEnabled(false);
    QHeaderView* const rows = verticalHeader();
    rows->setVisible(false);
    rows->setMinimumSectionSize(1);
    rows->setSectionResizeMode(QHeaderView::Fixed);
    rows->setDefaultSectionSize(m_model.style().secondLine ? Theme::tallRowHeight : Theme::rowHeight);
}

void EntryTableView::layOutColumns()
{
    const int own = static_cast<int>(m_model.style().columns.size());
    m_header->setMinimumSectionSize(Theme::checkColumnWidth);
    m_header->setSectionResizeMode(QHeaderView::Fixed);
    const int width = viewport()->width();
    int rest = width - Theme::margin - Theme::checkColumnWidth;
    // Where the room is small the size keeps its minimum, and a tool's own columns give way.
    const bool isNarrow = width < Theme::narrowWidth;
    const int sizeWidth = (isNarrow ? Theme::sizeColumnMinimum : Theme::sizeColumnIdeal) + trailingMargin();
    rest -= sizeWidth;
    for (int column = 0; column < own; ++column) {
        const int wanted = m_model.style().columns[static_cast<std::size_t>(column)].width;
        const bool fits = rest - wanted >= Theme::nameColumnMinimum;
        setColumnHidden(EntryTableModel::firstOwnColumn + column, !fits);
        setColumnWidth(EntryTableModel::firstOwnColumn + column, wanted);
        rest -= fits ? wanted : 0;
    }
    setColumnWidth(EntryTableModel::checkColumn, Theme::margin + Theme::checkColumnWidth);
    setColumnWidth(EntryTableModel::nameColumn, std::max(rest, Theme::checkColumnWidth));
    setColumnWidth(m_model.sizeColumn(), sizeWidth);
}

int EntryTableView::trailingMargin() const
{
    return std::max(Theme::margin - (width() - viewport()->width()), 0);
}

void EntryTableView::resizeEvent(QResizeEvent* event)
{
    QTableView::resizeEvent(event);
    layOutColumns();
}

void EntryTableView::showSortOrder()
{
    const EntrySortOrder& order = m_model.sortOrder();
    int column = m_model.sizeColumn();
    switch (order.key) {
    case EntrySortOrder::Key::name:
        column = EntryTableModel::nameColumn;
        break;
    case EntrySortOrder::Key::column:
        column = EntryTableModel::firstOwnColumn + static_cast<int>(order.column);
        break;
    case EntrySortOrder::Key::size:
        break;
    }
    m_header->showSortOrder(column, order.isAscending);
}

void EntryTableView::sortBy(int column)
{
    const std::optional<EntrySortOrder::Key> key = m_model.sortKey(column);
    if (!key) {
        return;
    }
    EntrySortOrder order{*key, 0, *key == EntrySortOrder::Key::name};
    if (*key == EntrySortOrder::Key::column) {
        order.column = static_cast<std::size_t>(column - EntryTableModel::firstOwnColumn);
    }
    if (const EntrySortOrder& shown = m_model.sortOrder();
        shown.key == order.key && shown.column == order.column) {
        order.isAscending = !shown.isAscending;
    }
    m_model.setSortOrder(order);
}

std::optional<int> EntryTableView::anchorRow() const
{
    const auto isOnScreen = [this](int row) {
        const int top = rowViewportPosition(row);
        return row >= 0 && top + rowHeight(row) > 0 && top < viewport()->height();
    };
    if (isOnScreen(currentRow())) {
        return currentRow();
    }
    if (verticalScrollBar()->value() == 0) {
        return std::nullopt; // at the top the largest are shown, whichever they are
    }
    const int row = m_hoveredRow >= 0 ? m_hoveredRow : rowAt(0);
    return isOnScreen(row) ? std::optional{row} : std::nullopt;
}

void EntryTableView::rememberPlace()
{
    m_place = {m_model.rows(), {}, anchorRow(), 0};
    if (currentRow() >= 0) {
        m_place.currentRow = currentRow();
    }
    if (m_place.anchorRow) {
        m_place.anchorTop = rowViewportPosition(*m_place.anchorRow);
    }
}

int EntryTableView::rowAfterChange(int row) const
{
    const auto found = m_model.rows().rowOf(m_place.rows, static_cast<std::size_t>(row));
    // The neighbour takes the place of a row that went away, so that eyes and keyboard stay where they were.
    return found ? static_cast<int>(*found) : std::min(row, m_model.rowCount() - 1);
}

void EntryTableView::restorePlace()
{
    const bool isEmpty = m_model.rowCount() == 0;
    const int current = isEmpty || !m_place.currentRow ? -1 : rowAfterChange(*m_place.currentRow);
    makeCurrent(current);
    if (m_place.anchorRow && !isEmpty) {
        const int row =
            m_place.anchorRow == m_place.currentRow ? current : rowAfterChange(*m_place.anchorRow);
        executeDelayedItemsLayout();
        verticalScrollBar()->setValue(verticalHeader()->sectionPosition(row) - m_place.anchorTop);
    }
    m_place = {};
    if (m_hoveredRow >= 0) {
        hover(viewport()->mapFromGlobal(QCursor::pos()));
    }
    viewport()->update();
}

void EntryTableView::makeCurrent(int row)
{
    const bool scrolls = hasAutoScroll();
    setAutoScroll(false);
    selectionModel()->setCurrentIndex(row < 0 ? QModelIndex{}
                                              : m_model.index(row, EntryTableModel::nameColumn),
                                      QItemSelectionModel::NoUpdate);
    setAutoScroll(scrolls);
}

void EntryTableView::goTo(int row)
{
    makeCurrent(row);
    scrollTo(currentIndex());
}

void EntryTableView::startOver()
{
    makeCurrent(-1);
    m_rangeStart.reset();
    verticalScrollBar()->setValue(0);
}

QModelIndex EntryTableView::moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers)
{
    if (action == MoveLeft || action == MoveRight) {
        return currentIndex();
    }
    if (!currentIndex().isValid() && m_model.rowCount() > 0) {
        return m_model.index(std::max(rowAt(0), 0), EntryTableModel::nameColumn);
    }
    // Home and End mean the first and the last row, not the first and the last column.
    if (action == MoveHome || action == MoveEnd) {
        modifiers |= Qt::ControlModifier;
    }
    return QTableView::moveCursor(action, modifiers).siblingAtColumn(EntryTableModel::nameColumn);
}

void EntryTableView::keyPressEvent(QKeyEvent* event)
{
    const int row = currentRow();
    if (event->matches(QKeySequence::SelectAll)) {
        if (m_model.rowCount() > 0) {
            m_model.setRangeChecked(0, m_model.rowCount() - 1, true);
        }
    } else if (row >= 0 && event->matches(QKeySequence::Copy)) {
        Q_EMIT rowCopyRequested(row);
    } else if (row >= 0 && event->key() == Qt::Key_Space) {
        const FileUrl url = m_model.entry(row).url;
        toggle(url, row, event->modifiers());
    } else if (row >= 0 && (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)) {
        Q_EMIT rowActivated(row);
    } else {
        const int previous = currentRow();
        QTableView::keyPressEvent(event);
        if (currentRow() != previous) {
            viewport()->update();
        }
    }
}

void EntryTableView::keyboardSearch(const QString& /*text*/)
{
    // The filter field searches.
}

void EntryTableView::toggle(const FileUrl& url, int row, Qt::KeyboardModifiers modifiers)
{
    const bool isChecked = !m_model.selection().contains(url);
    const auto start = modifiers.testFlag(Qt::ShiftModifier) && m_rangeStart
                           ? m_model.rows().rowOf(*m_rangeStart, static_cast<std::size_t>(row))
                           : std::nullopt;
    if (start) {
        const auto [first, last] = std::minmax({static_cast<int>(*start), row});
        m_model.setRangeChecked(first, last, isChecked);
    } else {
        m_model.setChecked(url, isChecked);
    }
    m_rangeStart = url;
}

void EntryTableView::mousePressEvent(QMouseEvent* event)
{
    const QModelIndex index = indexAt(event->position().toPoint());
    m_press.reset();
    if (event->button() == Qt::LeftButton && index.isValid() &&
        index.column() == EntryTableModel::checkColumn) {
        m_press = Press{m_model.entry(index.row()).url, event->position().toPoint()};
        setFocus(Qt::MouseFocusReason);
    } else {
        QTableView::mousePressEvent(event);
        if (index.isValid()) {
            makeCurrent(index.row());
        }
        viewport()->update();
    }
}

void EntryTableView::mouseReleaseEvent(QMouseEvent* event)
{
    const std::optional<Press> press = std::exchange(m_press, std::nullopt);
    if (!press) {
        QTableView::mouseReleaseEvent(event);
        return;
    }
    // The entry that was pressed is meant, even when another row has moved under the mouse since.
    const QPoint moved = event->position().toPoint() - press->position;
    if (moved.manhattanLength() < Theme::rowHeight / 2) {
        const int near = std::max(rowAt(press->position.y()), 0);
        const auto row = m_model.rows().rowOf(press->url, static_cast<std::size_t>(near));
        toggle(press->url, row ? static_cast<int>(*row) : near, event->modifiers());
    }
}

void EntryTableView::mouseDoubleClickEvent(QMouseEvent* event)
{
    const QModelIndex index = indexAt(event->position().toPoint());
    if (index.isValid() && index.column() == EntryTableModel::checkColumn) {
        mousePressEvent(event); // two quick clicks on a box are two clicks
    } else if (index.isValid() && event->button() == Qt::LeftButton) {
        Q_EMIT rowActivated(index.row());
    }
}

void EntryTableView::mouseMoveEvent(QMouseEvent* event)
{
    hover(event->position().toPoint());
    if (!m_press) {
        QTableView::mouseMoveEvent(event);
    }
}

void EntryTableView::leaveEvent(QEvent* event)
{
    hover({-1, -1});
    QTableView::leaveEvent(event);
}

void EntryTableView::hover(const QPoint& position)
{
    const int row = viewport()->rect().contains(position) ? rowAt(position.y()) : -1;
    if (std::exchange(m_hoveredRow, row) != row) {
        viewport()->update();
    }
}

void EntryTableView::contextMenuEvent(QContextMenuEvent* event)
{
    const bool isByMouse = event->reason() == QContextMenuEvent::Mouse;
    const int row = isByMouse ? rowAt(event->pos().y()) : currentRow();
    if (row >= 0) {
        const QPoint place = isByMouse ? event->pos() : visualRect(m_model.index(row, 1)).center();
        Q_EMIT rowMenuRequested(row, viewport()->mapToGlobal(place));
    }
}

} // namespace tallyroom
