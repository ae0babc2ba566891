#include "Tools/Duplicates/DuplicateTable.h"

#include "Text/FileUrlText.h"
#include "Theme/SymbolIcon.h"
#include "Tools/Duplicates/DuplicateRowDelegate.h"
#include "Tools/Duplicates/DuplicateTableModel.h"

#include <QHeaderView>
#include <QMenu>

#include <algorithm>
#include <utility>

namespace tallyroom {

DuplicateTable::DuplicateTable(QWidget* parent) : DuplicateTable(new DuplicateTableModel, parent) {}

DuplicateTable::DuplicateTable(DuplicateTableModel* model, QWidget* parent)
    : EntryRows(model, Theme::rowHeight, parent), m_model(*model)
{
    setItemDelegate(new DuplicateRowDelegate{*model, *this});
    horizontalHeader()->setVisible(false);
    horizontalHeader()->setMinimumSectionSize(Theme::checkColumnWidth);
    connect(this, &EntryRows::sectionToggled, model, &DuplicateTableModel::toggleGroup);
}

void DuplicateTable::rememberPlace()
{
    m_rowBefore = currentRow();
}

/// The row that comes into the place of a removed one is the current one.
void DuplicateTable::restorePlace()
{
    makeCurrent(std::min(m_rowBefore, m_model.rowCount() - 1));
}

void DuplicateTable::resizeEvent(QResizeEvent* event)
{
    EntryRows::resizeEvent(event);
    const int check = Theme::margin + Theme::checkColumnWidth;
    const int width = viewport()->width();
    const int detail = width < Theme::narrowWidth ? Theme::gainColumnMinimum : Theme::barWidth(width);
    setColumnWidth(DuplicateTableModel::checkColumn, check);
    setNameWidth(width - check - detail - endMargin(), DuplicateTableModel::detailColumn, detail);
}

void DuplicateTable::setGroups(DuplicateGroups groups, const std::vector<std::uint32_t>& shown)
{
    m_model.setGroups(std::move(groups), shown);
}

void DuplicateTable::setPolicy(const KeepPolicy& policy)
{
    m_model.setPolicy(policy);
}

void DuplicateTable::addActions(QMenu& menu, const Entry& entry)
{
    connect(
        menu.addAction(SymbolIcon::icon("checklist"), QStringLiteral("Garder celui-ci, cocher les autres")),
        &QAction::triggered, this, [this, entry] { m_model.checkOthers(entry); });
    const bool isProtected = m_model.policy().isProtected(entry.url);
    const QString folder = FileUrlText::display(entry.url.parent().lastPathComponent());
    connect(menu.addAction(SymbolIcon::icon("lock"),
                           (isProtected ? QStringLiteral("Proposer de nouveau dans « %1 »")
                                        : QStringLiteral("Ne jamais proposer dans « %1 »"))
                               .arg(folder)),
            &QAction::triggered, this,
            [this, entry, isProtected] { Q_EMIT protectionRequested(entry.url, !isProtected); });
    menu.addSeparator();
}

void DuplicateTable::addSectionActions(QMenu& menu, int row)
{
    connect(menu.addAction(SymbolIcon::icon("checklist"),
                           m_model.isGroupChecked(row) ? QStringLiteral("Décocher ce groupe")
                                                       : QStringLiteral("Cocher les doublons de ce groupe")),
            &QAction::triggered, this, [this, row] { m_model.toggleGroup(row); });
}

} // namespace tallyroom
