#include "Tools/Duplicates/DuplicateTable.h"

#include "Components/SymbolIcon.h"
#include "Tools/Duplicates/DuplicateRowDelegate.h"
#include "Tools/Duplicates/DuplicateTableModel.h"

#include <QHeaderView>
#include <QMenu>

#include <algorithm>
#include <utility>

namespace tallyroom {

DuplicateTableView::DuplicateTableView(DuplicateTableModel& model, QWidget* parent)
    : EntryRowsView(model, Theme::rowHeight, parent)
{
    setItemDelegate(new DuplicateRowDelegate{model, *this});
    horizontalHeader()->setVisible(false);
    horizontalHeader()->setMinimumSectionSize(Theme::checkColumnWidth);
    connect(&model, &DuplicateTableModel::rowsAboutToChange, this, [this] { m_rowBefore = currentRow(); });
    connect(&model, &DuplicateTableModel::rowsChanged, this, &DuplicateTableView::keepPlace);
}

/// The row that comes into the place of a removed one is the current one.
void DuplicateTableView::keepPlace()
{
    makeCurrent(std::min(m_rowBefore, model()->rowCount() - 1));
    hoverAgain();
    viewport()->update();
}

void DuplicateTableView::resizeEvent(QResizeEvent* event)
{
    EntryRowsView::resizeEvent(event);
    const int check = Theme::margin + Theme::checkColumnWidth;
    const bool isNarrow = viewport()->width() < Theme::narrowWidth;
    const int detail = (isNarrow ? Theme::gainColumnMinimum : Theme::sizeColumnIdeal) + trailingMargin();
    setColumnWidth(DuplicateTableModel::checkColumn, check);
    setColumnWidth(DuplicateTableModel::detailColumn, detail);
    setColumnWidth(DuplicateTableModel::nameColumn,
                   std::max(viewport()->width() - check - detail, Theme::checkColumnWidth));
}

DuplicateTable::DuplicateTable(QWidget* parent) : DuplicateTable(new DuplicateTableModel, parent) {}

DuplicateTable::DuplicateTable(DuplicateTableModel* model, QWidget* parent)
    : DuplicateTable(model, new DuplicateTableView{*model}, parent)
{}

DuplicateTable::DuplicateTable(DuplicateTableModel* model, DuplicateTableView* view, QWidget* parent)
    : EntryRows(model, view, parent), m_model(model)
{
    connect(view, &EntryRowsView::sectionToggled, model, &DuplicateTableModel::toggleGroup);
}

void DuplicateTable::setGroups(DuplicateGroups groups, const std::vector<std::uint32_t>& shown)
{
    m_model->setGroups(std::move(groups), shown);
}

void DuplicateTable::addActions(QMenu& menu, const Entry& entry)
{
    connect(
        menu.addAction(SymbolIcon::icon("checklist"), QStringLiteral("Garder celui-ci, cocher les autres")),
        &QAction::triggered, this, [this, entry] { m_model->checkOthers(entry); });
    menu.addSeparator();
    connect(menu.addAction(SymbolIcon::icon("doc"), QStringLiteral("Ouvrir")), &QAction::triggered, this,
            [this, entry] { Q_EMIT openRequested(entry); });
}

void DuplicateTable::addSectionActions(QMenu& menu, int row)
{
    connect(menu.addAction(SymbolIcon::icon("checklist"),
                           m_model->isGroupChecked(row) ? QStringLiteral("Décocher ce groupe")
                                                        : QStringLiteral("Cocher les doublons de ce groupe")),
            &QAction::triggered, this, [this, row] { m_model->toggleGroup(row); });
}

} // namespace tallyroom
