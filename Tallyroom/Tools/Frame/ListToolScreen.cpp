#include "Tools/Frame/ListToolScreen.h"

#include "Rows/EntryTable.h"
#include "Settings/Settings.h"
#include "Text/CSVExport.h"
#include "Text/NumberText.h"
#include "Text/SizeText.h"
#include "Tools/Frame/ToolHeader.h"

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

/// As "+files:92" for one that is shown, "-files:92" for one that is not.
std::vector<EntryColumnChoice> storedColumns(const QString& key)
{
    std::vector<EntryColumnChoice> choices;
    for (const QString& text : Settings::textList(key).value_or(QStringList{})) {
        const QString name = text.section(u':', 0, 0);
        choices.push_back({name.mid(1), name.startsWith(u'+'), text.section(u':', 1).toInt()});
    }
    return choices;
}

void storeColumns(const QString& key, const std::vector<EntryColumnChoice>& choices)
{
    QStringList texts;
    for (const EntryColumnChoice& choice : choices) {
        texts += (choice.isShown ? u'+' : u'-') + choice.optionName + u':' + QString::number(choice.width);
    }
    Settings::write(key, texts);
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
    if (!style.columnsKey.isEmpty()) {
        m_table->chooseColumns(storedColumns(style.columnsKey));
        connect(m_table, &EntryTable::columnsChosen, this,
                [this, key = style.columnsKey] { storeColumns(key, m_table->columnChoices()); });
    }
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
    QString text = NumberText::plural(rows.entries().size(), QStringLiteral("élément")) +
                   QStringLiteral(" · ") + sizeText(m_table->countedBytes());
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
