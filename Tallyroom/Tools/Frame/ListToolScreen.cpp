#include "Tools/Frame/ListToolScreen.h"

#include "Model/CheckedArithmetic.h"
#include "Rows/EntryTable.h"
#include "Text/CSVExport.h"
#include "Text/NumberText.h"
#include "Text/SizeText.h"
#include "Tools/Frame/ToolHeader.h"

#include <numeric>

namespace tallyroom {

namespace {

/// The table's rows from the top.
std::string exportedRows(const EntryArrangement& rows)
{
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
    : ToolScreen(tool, style, table, parent), m_list(tool), m_remark(style.remark), m_warning(style.warning),
      m_table(table)
{
    connect(&tool, &ListToolViewModel::categoryChanged, this, &ListToolScreen::showFilter);
    connect(&tool, &ListToolViewModel::filterChanged, this, &ListToolScreen::showFilter);
    connect(&tool, &ListToolViewModel::runningChanged, this, [this] {
        m_table->setRunning(m_list.running());
        showProgress();
        showSummary();
    });
    if (!style.categories.empty()) {
        addChips(style.categories);
    }
}

void ListToolScreen::addChips(const std::vector<CategoryChips::Chip>& chips)
{
    m_chips = new CategoryChips(chips);
    header().addRow(m_chips);
    connect(m_chips, &CategoryChips::chosen, &m_list, &ListToolViewModel::setCategory);
    connect(&m_list, &FolderTool::stateChanged, m_chips, [this] { showChips(); });
    connect(&m_list, &ScanToolViewModel::rootURLChanged, m_chips, [this] { m_chips->showCounts({}, true); });
}

QString ListToolScreen::summary() const
{
    const EntryArrangement& rows = m_table->arrangement();
    const std::vector<Entry>& running = m_list.running();
    const auto add = [](std::int64_t sum, const Entry& folder) {
        return saturatedSum(sum, folder.sizeBytes);
    };
    const std::int64_t counted = std::accumulate(running.begin(), running.end(), rows.totalBytes(), add);
    QString text = NumberText::plural(rows.entries().size(), QStringLiteral("élément")) +
                   QStringLiteral(" · ") + sizeText(counted);
    if (!running.empty()) {
        text += QStringLiteral(" comptés · %1 en cours de mesure")
                    .arg(NumberText::plural(running.size(), QStringLiteral("dossier")));
    }
    if (m_list.countedAgain() > rows.totalBytes() / 100) {
        text += QStringLiteral(", dont %1 comptés plusieurs fois (liens physiques)")
                    .arg(sizeText(m_list.countedAgain()));
    }
    if (m_list.isFiltering()) {
        text += QStringLiteral(" · ") + NumberText::plural(rows.rowCount(), QStringLiteral("affiché")) +
                QStringLiteral(" · ") + sizeText(rows.shownBytes());
    }
    return m_remark ? text + m_remark() : text;
}

ToolScreen::Caution ListToolScreen::caution(const std::vector<Entry>& entries) const
{
    Caution caution = ToolScreen::caution(entries);
    if (const QString own = m_warning ? m_warning(entries) : QString{}; !own.isEmpty()) {
        caution.warning += (caution.warning.isEmpty() ? QString{} : QStringLiteral("\n\n")) + own;
    }
    return caution;
}

void ListToolScreen::addOption(QWidget* option)
{
    header().addOption(option);
}

void ListToolScreen::showAgain()
{
    m_table->viewport()->update();
    showSummary();
}

void ListToolScreen::showEntries()
{
    m_table->setEntries(m_list.entries());
    showChips();
}

void ListToolScreen::showChips()
{
    if (m_chips != nullptr) {
        m_chips->showCounts(m_list.categoryCounts(), !m_list.isScanning());
    }
}

void ListToolScreen::showFiltered()
{
    m_table->setFilter(m_list.filter());
    if (m_chips != nullptr) {
        m_chips->showChoice(m_list.category());
    }
}

void ListToolScreen::exportEntries()
{
    if (m_table->hasRows()) {
        exportText([rows = m_table->arrangement()] { return exportedRows(rows); });
    }
}

} // namespace tallyroom
