#include "Tools/ListToolScreen.h"

#include "Bridge/SizeText.h"
#include "Components/EntryTable.h"
#include "Text/CSVExport.h"
#include "Tools/ExportFlow.h"
#include "Tools/ToolHeader.h"

namespace tallyroom {

namespace {

/// The table's rows from the top, made anew: those on screen may be a moment behind the filter.
std::string exportedRows(const EntryArrangement::Request& request)
{
    const EntryArrangement rows{request};
    std::string text{CSVExport::header};
    for (std::size_t row = 0; row < rows.rowCount(); ++row) {
        text.append("\n").append(CSVExport::line(rows.entry(row)));
    }
    return text;
}

} // namespace

ListToolScreen::ListToolScreen(ListToolViewModel& tool, const ListToolStyle& style, QWidget* parent)
    : ListToolScreen(tool, style, new EntryTable(style.table), parent)
{}

ListToolScreen::ListToolScreen(ListToolViewModel& tool, const ListToolStyle& style, EntryTable* table,
                               QWidget* parent)
    : ToolScreen(tool, style, table, parent), m_list(tool), m_table(table)
{
    connect(&tool, &ListToolViewModel::entriesChanged, this, [this] { showEntries(); });
    connect(&tool, &ListToolViewModel::scanCompletedChanged, this, [this] { showProgress(); });
    connect(&tool, &ListToolViewModel::scanTotalChanged, this, [this] { showProgress(); });
    connect(&tool, &ListToolViewModel::isDiscoveringChanged, this, [this] { showProgress(); });
    connect(&tool, &ListToolViewModel::categoryChanged, this, [this] { showFilter(); });
    if (!style.categories.empty()) {
        addChips(style.categories);
    }
}

void ListToolScreen::addChips(const std::vector<CategoryChips::Chip>& chips)
{
    m_chips = new CategoryChips(chips);
    header().addRow(m_chips);
    connect(m_chips, &CategoryChips::chosen, &m_list, &ListToolViewModel::setCategory);
}

QString ListToolScreen::summary() const
{
    QString text = counted(m_list.entries().size(), QStringLiteral("élément")) + QStringLiteral(" · ") +
                   sizeText(m_list.totalSize());
    if (m_list.isFiltering()) {
        const EntryArrangement& shown = m_table->arrangement();
        text += QStringLiteral(" · ") + counted(shown.rowCount(), QStringLiteral("affiché")) +
                QStringLiteral(" · ") + sizeText(shown.shownBytes());
    }
    return text;
}

void ListToolScreen::showEntries()
{
    m_table->setEntries(m_list.entries());
    if (m_chips != nullptr) {
        m_chips->showCounts(m_list.categoryCounts());
    }
    ToolScreen::showEntries();
}

void ListToolScreen::showFilter()
{
    m_table->setFilter(m_list.filter());
    if (m_chips != nullptr) {
        m_chips->showChoice(m_list.category());
    }
    ToolScreen::showFilter();
}

void ListToolScreen::exportEntries()
{
    if (m_list.filteredEntries().empty()) {
        return;
    }
    exportAsCSV(
        this, [request = m_table->request()] { return exportedRows(request); }, exportName());
}

} // namespace tallyroom
