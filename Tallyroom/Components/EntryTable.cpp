#include "Components/EntryTable.h"

#include "Components/EntryTableModel.h"
#include "Components/EntryTableView.h"

#include <utility>

namespace tallyroom {

EntryTable::EntryTable(EntryTableStyle style, QWidget* parent)
    : EntryTable(new EntryTableModel{std::move(style)}, parent)
{}

EntryTable::EntryTable(EntryTableModel* model, QWidget* parent)
    : EntryRows(model, new EntryTableView{*model}, parent), m_model(model)
{
    connect(m_model, &EntryTableModel::sortOrderChanged, this, &EntryTable::sortOrderChanged);
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

std::size_t EntryTable::visibleCount() const
{
    return m_model->rows().rowCount();
}

const Entry& EntryTable::visibleEntry(std::size_t row) const
{
    return m_model->rows().entry(row);
}

const EntryArrangement& EntryTable::arrangement() const
{
    return m_model->rows();
}

const EntryArrangement::Request& EntryTable::request() const
{
    return m_model->request();
}

} // namespace tallyroom
