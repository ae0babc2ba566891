#include "Tools/Frame/ListToolScreen.h"

#include "Rows/EntryTable.h"
#include "Rows/Selection.h"
#include "Settings/Settings.h"
#include "Text/CSVExport.h"
#include "Text/NumberText.h"
#include "Text/SizeText.h"
#include "Tools/Frame/ToolHeader.h"

#include <QPushButton>

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
    : ToolScreen(tool, style, table, parent), m_list(tool), m_sweep(style.sweep), m_warning(style.warning),
      m_table(table)
{
    connect(&tool, &ListToolViewModel::categoryChanged, this, &ListToolScreen::showFilter);
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
    if (!m_sweep.noun.isEmpty()) {
        addSweep();
    }
    connect(&tool, &ScanToolViewModel::remarksChanged, this, [this] {
        m_table->viewport()->update();
        showSummary();
    });
}

void ListToolScreen::addSweep()
{
    m_sweepButton = new QPushButton;
    Theme::style(m_sweepButton, Theme::Button::danger);
    header().addOption(m_sweepButton);
    connect(&m_list, &ScanToolViewModel::progressChanged, m_sweepButton, [this] { showSweep(); });
    connect(&m_list, &ScanToolViewModel::remarksChanged, m_sweepButton, [this] { showSweep(); });
    connect(m_sweepButton, &QPushButton::clicked, this, [this] {
        const std::vector<Entry> entries = m_sweep.entries();
        selection().setUrls(urlsOf(entries, &Entry::url));
        askDeletion(entries, DeleteConfirmation::Default::trash);
    });
    showSweep();
}

void ListToolScreen::showSweep()
{
    const std::vector<Entry> entries = m_sweep.entries();
    m_sweepButton->setText(
        QStringLiteral("Supprimer %1s (%2)").arg(m_sweep.noun, NumberText::grouped(entries.size())));
    m_sweepButton->setEnabled(!entries.empty());
}

QString ListToolScreen::sweepRemark() const
{
    const std::vector<Entry> entries = m_sweep.entries ? m_sweep.entries() : std::vector<Entry>{};
    return entries.empty()
               ? QString{}
               : QStringLiteral(" · %1, %2 à récupérer")
                     .arg(NumberText::plural(entries.size(), m_sweep.noun), sizeText(totalSize(entries)));
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
    return text + sweepRemark();
}

ToolScreen::Caution ListToolScreen::caution(const std::vector<Entry>& entries) const
{
    Caution caution = ToolScreen::caution(entries);
    if (const QString own = m_warning ? m_warning(entries) : QString{}; !own.isEmpty()) {
        caution.warning += (caution.warning.isEmpty() ? QString{} : QStringLiteral("\n\n")) + own;
    }
    return caution;
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
