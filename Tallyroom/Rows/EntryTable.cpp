#include "Rows/EntryTable.h"

#include "Rows/EntryRowDelegate.h"
#include "Rows/EntryTableHeader.h"

#include <QMenu>
#include <QScrollBar>

#include <algorithm>
#include <utility>

namespace tallyroom {

namespace {

constexpr int nameBesideChosen = 150; // of names where somebody has asked for more columns

} // namespace

EntryTable::EntryTable(EntryTableStyle style, QWidget* parent)
    : EntryTable(new EntryTableModel{std::move(style)}, parent)
{}

EntryTable::EntryTable(EntryTableModel* model, QWidget* parent)
    : EntryRows(model, model->style().secondLine ? Theme::tallRowHeight : Theme::rowHeight, parent),
      m_model(*model), m_header(new EntryTableHeader{this})
{
    setHorizontalHeader(m_header);
    setItemDelegate(new EntryRowDelegate{m_model, *this});
    for (const EntryTableColumn& column : m_model.style().columns) {
        m_widths.push_back(column.width);
    }
    connect(m_header, &QHeaderView::sectionClicked, this, &EntryTable::sortBy);
    connect(m_header, &EntryTableHeader::menuRequested, this, &EntryTable::showColumnMenu);
    connect(m_header, &EntryTableHeader::widthChosen, this, &EntryTable::widen);
    connect(model, &EntryTableModel::sortOrderChanged, this, &EntryTable::showSortOrder);
    connect(model, &EntryTableModel::runningAboutToChange, this, [this] { rememberPlace(); });
    connect(model, &EntryTableModel::runningChanged, this, &EntryTable::showChangedRows);
    showSortOrder();
    layOutColumns();
}

void EntryTable::layOutColumns()
{
    m_header->setMinimumSectionSize(Theme::checkColumnWidth);
    m_header->setSectionResizeMode(QHeaderView::Fixed);
    const int width = viewport()->width();
    int rest = width - Theme::margin - Theme::checkColumnWidth;
    int optional = 0;
    for (int column = EntryTableModel::firstOwnColumn; column < m_model.sizeColumn(); ++column) {
        const bool isCounted = m_model.ownColumn(column)->isOptional() && m_model.isChosen(column);
        optional += isCounted ? widthOf(column) : 0;
    }
    // Where the room is small the size keeps its minimum, and a tool's own columns give way. The bar makes
    // room for the columns that somebody has asked for.
    const int spare = rest - endMargin() - nameBesideChosen - optional;
    const int ideal = optional == 0 ? Theme::barWidth(width)
                                    : std::clamp(spare, Theme::sizeColumnMinimum, Theme::barWidth(width));
    const int sizeWidth = width < Theme::narrowWidth ? Theme::sizeColumnMinimum : ideal;
    rest -= sizeWidth + endMargin();
    for (int column = EntryTableModel::firstOwnColumn; column < m_model.sizeColumn(); ++column) {
        const int wanted = widthOf(column);
        const int least =
            m_model.ownColumn(column)->isOptional() ? nameBesideChosen : Theme::nameColumnMinimum;
        const bool fits = m_model.isChosen(column) && rest - wanted >= least;
        setColumnHidden(column, !fits);
        setColumnWidth(column, wanted);
        rest -= fits ? wanted : 0;
    }
    setColumnWidth(EntryTableModel::checkColumn, Theme::margin + Theme::checkColumnWidth);
    setNameWidth(rest, m_model.sizeColumn(), sizeWidth);
}

std::vector<EntryColumnChoice> EntryTable::columnChoices() const
{
    std::vector<EntryColumnChoice> choices;
    for (int column = EntryTableModel::firstOwnColumn; column < m_model.sizeColumn(); ++column) {
        if (const EntryTableColumn& own = *m_model.ownColumn(column); own.isOptional()) {
            choices.push_back({own.optionName, m_model.isChosen(column), widthOf(column)});
        }
    }
    return choices;
}

void EntryTable::chooseColumns(const std::vector<EntryColumnChoice>& choices)
{
    for (int column = EntryTableModel::firstOwnColumn; column < m_model.sizeColumn(); ++column) {
        const auto choice =
            std::ranges::find(choices, m_model.ownColumn(column)->optionName, &EntryColumnChoice::optionName);
        if (m_model.ownColumn(column)->isOptional() && choice != choices.end()) {
            m_model.setChosen(column, choice->isShown);
            if (choice->width >= Theme::ownColumnMinimum && choice->width <= Theme::ownColumnMaximum) {
                widthOf(column) = choice->width;
            }
        }
    }
    layOutColumns();
}

void EntryTable::choose(int column, bool isShown)
{
    m_model.setChosen(column, isShown);
    layOutColumns();
    Q_EMIT columnsChosen();
}

/// The name keeps its minimum.
void EntryTable::widen(int column, int width)
{
    const int spare = columnWidth(EntryTableModel::nameColumn) - nameBesideChosen;
    const int most = std::min(columnWidth(column) + std::max(spare, 0), Theme::ownColumnMaximum);
    const EntryTableColumn* const own = m_model.ownColumn(column);
    if (own != nullptr && own->isOptional() && !isColumnHidden(column)) {
        widthOf(column) = std::clamp(width, Theme::ownColumnMinimum, std::max(most, Theme::ownColumnMinimum));
        layOutColumns();
        Q_EMIT columnsChosen();
    }
}

void EntryTable::showColumnMenu(const QPoint& globalPosition)
{
    auto* const menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    for (int column = EntryTableModel::firstOwnColumn; column < m_model.sizeColumn(); ++column) {
        if (const EntryTableColumn& own = *m_model.ownColumn(column); own.isOptional()) {
            QAction* const action = menu->addAction(own.title);
            action->setCheckable(true);
            action->setChecked(m_model.isChosen(column));
            connect(action, &QAction::triggered, this,
                    [this, column](bool isShown) { choose(column, isShown); });
        }
    }
    if (menu->isEmpty()) {
        delete menu;
        return;
    }
    menu->popup(globalPosition);
    menu->setActiveAction(menu->actions().front());
}

void EntryTable::resizeEvent(QResizeEvent* event)
{
    EntryRows::resizeEvent(event);
    layOutColumns();
}

void EntryTable::showSortOrder()
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

void EntryTable::sortBy(int column)
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

std::optional<int> EntryTable::anchorRow() const
{
    const auto isOnScreen = [this](int row) {
        const int top = rowViewportPosition(row);
        return row >= 0 && top + rowHeight(row) > 0 && top < viewport()->height();
    };
    if (verticalScrollBar()->value() == 0) {
        return std::nullopt; // at the top the largest are shown, whichever they are
    }
    if (isOnScreen(currentRow())) {
        return currentRow();
    }
    const int row = hoveredRow() >= 0 ? hoveredRow() : rowAt(0);
    return isOnScreen(row) ? std::optional{row} : std::nullopt;
}

EntryBookmark EntryTable::bookmark() const
{
    EntryBookmark result;
    if (const auto entry = currentEntry()) {
        result.current = entry->url;
    }
    if (const std::optional<int> row = anchorRow()) {
        result.anchor = m_model.entry(*row).url;
        result.anchorTop = rowViewportPosition(*row);
    }
    return result;
}

void EntryTable::goTo(const EntryBookmark& bookmark)
{
    executeDelayedItemsLayout();
    if (bookmark.current) {
        setCurrentEntry(*bookmark.current);
    }
    if (const auto row = bookmark.anchor ? m_model.rowOf(*bookmark.anchor, 0) : std::nullopt) {
        scrollTo(*row, bookmark.anchorTop);
    }
}

/// Scrolls until the top of `row` is at `top` in the viewport.
void EntryTable::scrollTo(int row, int top)
{
    executeDelayedItemsLayout();
    verticalScrollBar()->setValue(verticalHeader()->sectionPosition(row) - top);
}

void EntryTable::rememberPlace()
{
    m_place = {m_model.rows(), m_model.running(), {}, anchorRow(), 0};
    if (currentRow() >= 0) {
        m_place.currentRow = currentRow();
    }
    if (m_place.anchorRow) {
        m_place.anchorTop = rowViewportPosition(*m_place.anchorRow);
    }
}

int EntryTable::rowAfterChange(int row) const
{
    std::optional<int> found;
    if (const auto running = m_place.running.find(row)) {
        found = m_model.rowOf(m_place.running.entry(*running).url, row);
    } else if (const auto arranged = m_model.rows().rowOf(m_place.rows, m_place.running.arrangedRow(row))) {
        found = m_model.running().rowOf(*arranged);
    }
    // The neighbour takes the place of a row that went away, so that eyes and keyboard stay where they were.
    return found.value_or(std::min(row, m_model.rowCount() - 1));
}

void EntryTable::restorePlace()
{
    const bool isEmpty = m_model.rowCount() == 0;
    int current = isEmpty || !m_place.currentRow ? -1 : rowAfterChange(*m_place.currentRow);
    if (staysAtFirst() && !isEmpty) {
        current = 0;
    }
    makeCurrent(current);
    if (m_place.anchorRow && !isEmpty) {
        const int row =
            m_place.anchorRow == m_place.currentRow ? current : rowAfterChange(*m_place.anchorRow);
        scrollTo(row, m_place.anchorTop);
    }
    m_place = {};
}

} // namespace tallyroom
