#include "Components/EntryTable.h"

#include "Components/EntryTableModel.h"
#include "Components/EntryTableView.h"
#include "Components/SymbolIcon.h"

#include <QMenu>
#include <QVBoxLayout>

#include <utility>

namespace tallyroom {

EntryTable::EntryTable(EntryTableStyle style, QWidget* parent)
    : QWidget(parent), m_model(new EntryTableModel{std::move(style), this}),
      m_view(new EntryTableView{*m_model, this})
{
    auto* const layout = new QVBoxLayout{this};
    layout->setContentsMargins({});
    layout->addWidget(m_view);
    setFocusProxy(m_view);
    connect(m_model, &EntryTableModel::selectionEdited, this, &EntryTable::selectionChanged);
    connect(m_model, &EntryTableModel::sortOrderChanged, this, &EntryTable::sortOrderChanged);
    connect(m_model, &EntryTableModel::rowsChanged, this, &EntryTable::rowsChanged);
    // Entries go out as copies: whoever receives one may well replace the list.
    connect(m_view, &EntryTableView::rowActivated, this,
            [this](int row) { Q_EMIT activated(Entry{m_model->entry(row)}); });
    connect(m_view, &EntryTableView::rowCopyRequested, this,
            [this](int row) { Q_EMIT copyPathRequested(Entry{m_model->entry(row)}); });
    connect(m_view, &EntryTableView::rowMenuRequested, this, &EntryTable::showContextMenu);
}

void EntryTable::setEntries(const EntryList& entries)
{
    m_model->setEntries(entries);
}

const EntryList& EntryTable::entries() const
{
    return m_model->entries();
}

void EntryTable::setFilter(Filter filter)
{
    m_model->setFilter(std::move(filter));
}

void EntryTable::setSortOrder(const EntrySortOrder& order)
{
    m_model->setSortOrder(order);
}

const EntrySortOrder& EntryTable::sortOrder() const
{
    return m_model->sortOrder();
}

void EntryTable::setSelection(Selection selection)
{
    m_model->setSelection(std::move(selection));
}

const EntryTable::Selection& EntryTable::selection() const
{
    return m_model->selection();
}

void EntryTable::selectAllVisible()
{
    if (m_model->rowCount() > 0) {
        m_model->setRangeChecked(0, m_model->rowCount() - 1, true);
    }
}

std::size_t EntryTable::visibleCount() const
{
    return m_model->rows().rowCount();
}

const Entry& EntryTable::visibleEntry(std::size_t row) const
{
    return m_model->rows().entry(row);
}

std::optional<Entry> EntryTable::currentEntry() const
{
    const QModelIndex current = m_view->currentIndex();
    return current.isValid() ? std::optional{m_model->entry(current.row())} : std::nullopt;
}

bool EntryTable::setCurrentEntry(const FileUrl& url)
{
    const std::optional<std::size_t> row = m_model->rows().rowOf(url);
    if (row) {
        m_view->goTo(static_cast<int>(*row));
    }
    return row.has_value();
}

void EntryTable::startOver()
{
    m_view->startOver();
}

void EntryTable::setDeletionEnabled(bool isEnabled)
{
    m_isDeletionEnabled = isEnabled;
}

std::unique_ptr<QMenu> EntryTable::makeContextMenu(const Entry& entry)
{
    auto menu = std::make_unique<QMenu>();
    const auto add = [&](const char* symbol, const QString& text, void (EntryTable::*request)(const Entry&)) {
        QAction* const action = menu->addAction(SymbolIcon::icon(symbol), text);
        connect(action, &QAction::triggered, this, [this, entry, request] { Q_EMIT(this->*request)(entry); });
        return action;
    };
    if (entry.isDirectory) {
        add("chevron.right", QStringLiteral("Entrer"), &EntryTable::activated);
    }
    add("folder", QStringLiteral("Révéler dans le Finder"), &EntryTable::revealRequested);
    if (m_isDeletionEnabled) {
        menu->addSeparator();
        add("trash", QStringLiteral("Mettre à la corbeille"), &EntryTable::deleteRequested)
            ->setIcon(SymbolIcon::icon("trash", Theme::Colour::danger));
    }
    return menu;
}

void EntryTable::showContextMenu(int row, const QPoint& globalPosition)
{
    const std::unique_ptr<QMenu> menu = makeContextMenu(Entry{m_model->entry(row)});
    menu->exec(globalPosition);
}

} // namespace tallyroom
