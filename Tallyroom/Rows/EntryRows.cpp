#include "Rows/EntryRows.h"

#include "Rows/EntryRowsModel.h"
#include "Theme/SymbolIcon.h"
#include "Theme/Theme.h"

#include <QAccessible>
#include <QContextMenuEvent>
#include <QHeaderView>
#include <QMenu>
#include <QScopedValueRollback>
#include <QScrollBar>

#include <algorithm>
#include <utility>

namespace tallyroom {

EntryRows::EntryRows(EntryRowsModel* model, int rowHeight, QWidget* parent)
    : QTableView(parent), m_rows(*model)
{
    model->setParent(this);
    setUp(rowHeight);
    setModel(model);
    connect(&Theme::shared(), &Theme::changed, viewport(), qOverload<>(&QWidget::update));
    connect(&model->selection(), &Selection::changed, this, &EntryRows::announceCheck);
    connect(model, &EntryRowsModel::rowsAboutToChange, this, [this] { rememberPlace(); });
    connect(model, &EntryRowsModel::rowsChanged, this, [this] {
        showChangedRows();
        Q_EMIT rowsChanged();
    });
}

void EntryRows::showChangedRows()
{
    restorePlace();
    hoverAgain();
    viewport()->update();
}

Selection& EntryRows::selection() const
{
    return m_rows.selection();
}

bool EntryRows::hasRows() const
{
    return m_rows.rowCount({}) > 0;
}

bool EntryRows::isUpToDate() const
{
    return m_rows.isUpToDate();
}

std::optional<Entry> EntryRows::currentEntry() const
{
    const Entry* const entry = currentRow() >= 0 ? m_rows.entryAt(currentRow()) : nullptr;
    return entry != nullptr ? std::optional{*entry} : std::nullopt;
}

bool EntryRows::setCurrentEntry(const FileUrl& url)
{
    const std::optional<int> row = m_rows.rowOf(url, 0);
    if (row) {
        goTo(*row);
    }
    return row.has_value();
}

void EntryRows::setUp(int rowHeight)
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

QRect EntryRows::visualRect(const QModelIndex& index) const
{
    return isVisible() ? QTableView::visualRect(index) : QRect{};
}

int EntryRows::trailingMargin() const
{
    return endMargin() + m_spareWidth;
}

int EntryRows::endMargin() const
{
    return std::max(Theme::margin - (width() - viewport()->width()), 0);
}

void EntryRows::setNameWidth(int left, int last, int lastWidth)
{
    const int nameWidth = std::clamp(left, Theme::checkColumnWidth, Theme::nameColumnMaximum);
    m_spareWidth = std::max(left - nameWidth, 0);
    setColumnWidth(EntryRowsModel::nameColumn, nameWidth);
    setColumnWidth(last, lastWidth + trailingMargin());
}

void EntryRows::makeCurrent(int row)
{
    const bool scrolls = hasAutoScroll();
    setAutoScroll(false);
    selectionModel()->setCurrentIndex(row < 0 ? QModelIndex{} : m_rows.index(row, EntryRowsModel::nameColumn),
                                      QItemSelectionModel::NoUpdate);
    setAutoScroll(scrolls);
}

void EntryRows::goTo(int row)
{
    makeCurrent(row);
    scrollTo(currentIndex());
}

void EntryRows::resetView()
{
    makeCurrent(-1);
    m_staysAtFirst = m_isEntering;
    m_rangeStart.reset();
    verticalScrollBar()->setValue(0);
}

QModelIndex EntryRows::moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers)
{
    if (action == MoveLeft || action == MoveRight) {
        return currentIndex();
    }
    if (!currentIndex().isValid() && hasRows()) {
        return m_rows.index(std::max(rowAt(0), 0), EntryRowsModel::nameColumn);
    }
    // Home and End mean the first and the last row, not the first and the last column.
    if (action == MoveHome || action == MoveEnd) {
        modifiers |= Qt::ControlModifier;
    }
    return QTableView::moveCursor(action, modifiers).siblingAtColumn(EntryRowsModel::nameColumn);
}

void EntryRows::goToFirstOnScreen()
{
    if (hasRows()) {
        goTo(std::max(rowAt(0), 0));
        viewport()->update();
    }
}

void EntryRows::activateRow(int row)
{
    if (const Entry* const entry = m_rows.shownAt(row)) {
        Q_EMIT activated(Entry{*entry});
    }
}

std::optional<FileUrl> EntryRows::urlAt(int row) const
{
    const Entry* const entry = m_rows.entryAt(row);
    return entry != nullptr ? std::optional{entry->url} : std::nullopt;
}

void EntryRows::toggle(int row, bool isRange)
{
    const std::optional<FileUrl> url = urlAt(row);
    if (!url) {
        Q_EMIT sectionToggled(row);
        return;
    }
    const int start = isRange && m_rangeStart ? m_rows.rowOf(*m_rangeStart, row).value_or(row) : row;
    const auto [first, last] = std::minmax(start, row);
    m_rangeStart = url;
    m_rows.setRangeChecked(first, last, !m_rows.isChecked(row));
}

/// The view sends nothing to screen readers when data change: the box of the current row has another state,
/// and the name cell, which speaks for the row, another name.
void EntryRows::announceCheck()
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

void EntryRows::mousePressEvent(QMouseEvent* event)
{
    const QModelIndex index = indexAt(event->position().toPoint());
    m_press.reset();
    m_staysAtFirst = false;
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

void EntryRows::mouseReleaseEvent(QMouseEvent* event)
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
    if (const std::optional<int> row = m_rows.rowOf(press->url, near)) {
        toggle(*row, event->modifiers().testFlag(Qt::ShiftModifier));
    }
}

void EntryRows::mouseDoubleClickEvent(QMouseEvent* event)
{
    const QModelIndex index = indexAt(event->position().toPoint());
    if (index.isValid() && index.column() == EntryRowsModel::checkColumn) {
        mousePressEvent(event); // two quick clicks on a box are two clicks
    } else if (index.isValid() && event->button() == Qt::LeftButton) {
        activateRow(index.row());
    }
}

void EntryRows::mouseMoveEvent(QMouseEvent* event)
{
    hover(event->position().toPoint());
    if (!m_press) {
        QTableView::mouseMoveEvent(event);
    }
}

/// The toolkit makes the first row current whenever the list gets the focus. Only a user who comes by the
/// keyboard wants that.
void EntryRows::focusInEvent(QFocusEvent* event)
{
    const bool isByKey = event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason;
    if (isByKey && currentRow() < 0) {
        goToFirstOnScreen();
    }
    viewport()->update();
}

void EntryRows::leaveEvent(QEvent* event)
{
    hover({-1, -1});
    QTableView::leaveEvent(event);
}

/// The mouse stands still, but maybe over another row.
void EntryRows::hoverAgain()
{
    if (m_hoveredRow >= 0) {
        hover(viewport()->mapFromGlobal(QCursor::pos()));
    }
}

void EntryRows::hover(const QPoint& position)
{
    const int row = viewport()->rect().contains(position) ? rowAt(position.y()) : -1;
    if (std::exchange(m_hoveredRow, row) != row) {
        viewport()->update();
    }
}

void EntryRows::addActions(QMenu& menu, const Entry& entry)
{
    if (entry.isDirectory) {
        connect(menu.addAction(SymbolIcon::icon("chevron.right"), QStringLiteral("Entrer")),
                &QAction::triggered, this, [this, entry] { Q_EMIT activated(entry); });
    }
}

std::unique_ptr<QMenu> EntryRows::makeContextMenu(const Entry& entry)
{
    auto menu = std::make_unique<QMenu>();
    const auto add = [&](const QIcon& icon, const QString& text, void (EntryRows::*request)(const Entry&)) {
        connect(menu->addAction(icon, text), &QAction::triggered, this, [this, entry, request] {
            Q_EMIT(this->*request)(entry);
        });
    };
    addActions(*menu, entry);
    add(SymbolIcon::icon("arrow.up.forward.app"), QStringLiteral("Ouvrir"), &EntryRows::openRequested);
    add(SymbolIcon::icon("folder"), QStringLiteral("Révéler dans le gestionnaire de fichiers"),
        &EntryRows::revealRequested);
    add(SymbolIcon::icon("terminal"), QStringLiteral("Ouvrir un terminal ici"),
        &EntryRows::terminalRequested);
    add(SymbolIcon::icon("doc.on.doc"), QStringLiteral("Copier le chemin"), &EntryRows::copyPathRequested);
    Q_EMIT menuMade(menu.get(), entry);
    menu->addSeparator();
    add(SymbolIcon::icon("info.circle"), QStringLiteral("Propriétés"), &EntryRows::propertiesRequested);
    if (m_isDeletionEnabled) {
        menu->addSeparator();
        add(SymbolIcon::icon("trash", Theme::Colour::danger), QStringLiteral("Mettre à la corbeille"),
            &EntryRows::deleteRequested);
    }
    return menu;
}

void EntryRows::contextMenuEvent(QContextMenuEvent* event)
{
    const bool isByMouse = event->reason() == QContextMenuEvent::Mouse;
    const int row = isByMouse ? rowAt(event->pos().y()) : currentRow();
    if (row < 0) {
        return;
    }
    const Entry* const entry = m_rows.shownAt(row);
    const QScopedValueRollback deletion{m_isDeletionEnabled,
                                        m_isDeletionEnabled && m_rows.entryAt(row) != nullptr};
    const std::unique_ptr<QMenu> menu =
        entry != nullptr ? makeContextMenu(*entry) : std::make_unique<QMenu>();
    if (entry == nullptr) {
        addSectionActions(*menu, row);
    }
    if (!menu->isEmpty()) {
        const QPoint place = isByMouse ? event->pos() : visualRect(m_rows.index(row, 1)).center();
        menu->exec(viewport()->mapToGlobal(place));
    }
}

} // namespace tallyroom
