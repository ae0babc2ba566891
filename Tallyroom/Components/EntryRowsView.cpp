#include "Components/EntryRowsView.h"

#include "Components/EntryRowsModel.h"
#include "Components/Theme.h"

#include <QAccessible>
#include <QContextMenuEvent>
#include <QHeaderView>
#include <QKeyEvent>
#include <QScrollBar>

#include <algorithm>
#include <utility>

namespace tallyroom {

EntryRowsView::EntryRowsView(EntryRowsModel& model, int rowHeight, QWidget* parent)
    : QTableView(parent), m_rows(model)
{
    setUp(rowHeight);
    setModel(&model);
    connect(&Theme::shared(), &Theme::changed, viewport(), qOverload<>(&QWidget::update));
    connect(&model, &EntryRowsModel::selectionEdited, this, &EntryRowsView::announceCheck);
}

void EntryRowsView::setUp(int rowHeight)
{
    setSelectionMode(NoSelection);
    setSelectionBehavior(SelectRows); // or a click on a title would make the first row current
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
    rows->setDefaultSectionSize(rowHeight);
}

int EntryRowsView::trailingMargin() const
{
    return std::max(Theme::margin - (width() - viewport()->width()), 0);
}

void EntryRowsView::makeCurrent(int row)
{
    const bool scrolls = hasAutoScroll();
    setAutoScroll(false);
    selectionModel()->setCurrentIndex(row < 0 ? QModelIndex{} : m_rows.index(row, EntryRowsModel::nameColumn),
                                      QItemSelectionModel::NoUpdate);
    setAutoScroll(scrolls);
}

void EntryRowsView::goTo(int row)
{
    makeCurrent(row);
    scrollTo(currentIndex());
}

void EntryRowsView::startOver()
{
    makeCurrent(-1);
    m_rangeStart.reset();
    verticalScrollBar()->setValue(0);
}

QModelIndex EntryRowsView::moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers)
{
    if (action == MoveLeft || action == MoveRight) {
        return currentIndex();
    }
    if (!currentIndex().isValid() && m_rows.rowCount({}) > 0) {
        return m_rows.index(std::max(rowAt(0), 0), EntryRowsModel::nameColumn);
    }
    // Home and End mean the first and the last row, not the first and the last column.
    if (action == MoveHome || action == MoveEnd) {
        modifiers |= Qt::ControlModifier;
    }
    return QTableView::moveCursor(action, modifiers).siblingAtColumn(EntryRowsModel::nameColumn);
}

void EntryRowsView::keyPressEvent(QKeyEvent* event)
{
    const int row = currentRow();
    if (event->matches(QKeySequence::SelectAll)) {
        if (m_rows.rowCount({}) > 0) {
            m_rows.setRangeChecked(0, m_rows.rowCount({}) - 1, true);
        }
    } else if (row >= 0 && event->matches(QKeySequence::Copy)) {
        Q_EMIT rowCopyRequested(row);
    } else if (event->key() == Qt::Key_Space || event->key() == Qt::Key_Return ||
               event->key() == Qt::Key_Enter) {
        if (row < 0) {
            goToFirstOnScreen(); // rows came after the focus: the first key only says where one is
        } else if (event->key() == Qt::Key_Space) {
            toggle(row, event->modifiers());
        } else {
            Q_EMIT rowActivated(row);
        }
    } else {
        const int previous = currentRow();
        QTableView::keyPressEvent(event);
        if (currentRow() != previous) {
            viewport()->update();
        }
    }
}

void EntryRowsView::goToFirstOnScreen()
{
    if (m_rows.rowCount({}) > 0) {
        goTo(std::max(rowAt(0), 0));
        viewport()->update();
    }
}

void EntryRowsView::keyboardSearch(const QString& /*text*/)
{
    // The filter field searches.
}

std::optional<FileUrl> EntryRowsView::urlAt(int row) const
{
    const Entry* const entry = m_rows.entryAt(row);
    return entry != nullptr ? std::optional{entry->url} : std::nullopt;
}

void EntryRowsView::toggle(int row, Qt::KeyboardModifiers modifiers)
{
    if (const std::optional<FileUrl> url = urlAt(row)) {
        toggle(*url, row, modifiers);
    } else {
        Q_EMIT sectionToggled(row);
    }
}

void EntryRowsView::toggle(const FileUrl& url, int row, Qt::KeyboardModifiers modifiers)
{
    const bool isChecked = !m_rows.selection().contains(url);
    const auto start = modifiers.testFlag(Qt::ShiftModifier) && m_rangeStart
                           ? m_rows.rowOf(*m_rangeStart, row)
                           : std::nullopt;
    if (start) {
        const auto [first, last] = std::minmax(*start, row);
        m_rows.setRangeChecked(first, last, isChecked);
    } else {
        m_rows.setChecked(url, isChecked);
    }
    m_rangeStart = url;
}

/// The view sends nothing to screen readers when data change: the box of the current row has another state,
/// and the name cell, which speaks for the row, another name.
void EntryRowsView::announceCheck()
{
    if (currentRow() < 0 || !QAccessible::isActive()) {
        return;
    }
    QAccessibleTableInterface* const cells = QAccessible::queryAccessibleInterface(this)->tableInterface();
    QAccessible::State changed;
    changed.checked = true;
    QAccessibleStateChangeEvent box{cells->cellAt(currentRow(), EntryRowsModel::checkColumn), changed};
    QAccessible::updateAccessibility(&box);
    QAccessibleEvent row{cells->cellAt(currentRow(), EntryRowsModel::nameColumn), QAccessible::NameChanged};
    QAccessible::updateAccessibility(&row);
}

void EntryRowsView::mousePressEvent(QMouseEvent* event)
{
    const QModelIndex index = indexAt(event->position().toPoint());
    m_press.reset();
    const std::optional<FileUrl> url =
        index.isValid() && index.column() == EntryRowsModel::checkColumn ? urlAt(index.row()) : std::nullopt;
    if (event->button() == Qt::LeftButton && url) {
        m_press = Press{*url, event->position().toPoint()};
        setFocus(Qt::MouseFocusReason);
    } else {
        QTableView::mousePressEvent(event);
        if (index.isValid()) {
            makeCurrent(index.row());
        }
        viewport()->update();
    }
}

void EntryRowsView::mouseReleaseEvent(QMouseEvent* event)
{
    const std::optional<Press> press = std::exchange(m_press, std::nullopt);
    if (!press) {
        QTableView::mouseReleaseEvent(event);
        return;
    }
    const QPoint moved = event->position().toPoint() - press->position;
    if (moved.manhattanLength() >= Theme::rowHeight / 2) {
        return;
    }
    const int near = std::max(rowAt(press->position.y()), 0);
    // The entry that was pressed is meant, even when another row has moved under the mouse since.
    toggle(press->url, m_rows.rowOf(press->url, near).value_or(near), event->modifiers());
}

void EntryRowsView::mouseDoubleClickEvent(QMouseEvent* event)
{
    const QModelIndex index = indexAt(event->position().toPoint());
    if (index.isValid() && index.column() == EntryRowsModel::checkColumn) {
        mousePressEvent(event); // two quick clicks on a box are two clicks
    } else if (index.isValid() && event->button() == Qt::LeftButton) {
        Q_EMIT rowActivated(index.row());
    }
}

void EntryRowsView::mouseMoveEvent(QMouseEvent* event)
{
    hover(event->position().toPoint());
    if (!m_press) {
        QTableView::mouseMoveEvent(event);
    }
}

/// The toolkit would make the first row current whoever set the focus. Only who comes by the keyboard means
/// it.
void EntryRowsView::focusInEvent(QFocusEvent* event)
{
    const bool isByKey = event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason;
    if (isByKey && currentRow() < 0) {
        goToFirstOnScreen();
    }
    viewport()->update();
}

void EntryRowsView::leaveEvent(QEvent* event)
{
    hover({-1, -1});
    QTableView::leaveEvent(event);
}

void EntryRowsView::hoverAgain()
{
    if (m_hoveredRow >= 0) {
        hover(viewport()->mapFromGlobal(QCursor::pos()));
    }
}

void EntryRowsView::hover(const QPoint& position)
{
    const int row = viewport()->rect().contains(position) ? rowAt(position.y()) : -1;
    if (std::exchange(m_hoveredRow, row) != row) {
        viewport()->update();
    }
}

void EntryRowsView::contextMenuEvent(QContextMenuEvent* event)
{
    const bool isByMouse = event->reason() == QContextMenuEvent::Mouse;
    const int row = isByMouse ? rowAt(event->pos().y()) : currentRow();
    if (row >= 0) {
        const QPoint place = isByMouse ? event->pos() : visualRect(m_rows.index(row, 1)).center();
        Q_EMIT rowMenuRequested(row, viewport()->mapToGlobal(place));
    }
}

} // namespace tallyroom
