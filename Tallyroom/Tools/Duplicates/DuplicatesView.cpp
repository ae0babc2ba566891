#include "Tools/Duplicates/DuplicatesView.h"

#include "Controls/OptionMenu.h"
#include "Duplicates/DuplicateExport.h"
#include "Model/CheckedArithmetic.h"
#include "Rows/Selection.h"
#include "Text/FileUrlText.h"
#include "Text/NumberText.h"
#include "Text/SizeText.h"
#include "Theme/SymbolIcon.h"
#include "Tools/Duplicates/DuplicateTable.h"
#include "Tools/Frame/ToolHeader.h"

#include <QPushButton>

namespace tallyroom {

namespace {

QString ruleName(KeepRule rule)
{
    switch (rule) {
    case KeepRule::firstByPath:
        return QStringLiteral("le premier par chemin");
    case KeepRule::oldest:
        return QStringLiteral("le plus ancien");
    case KeepRule::newest:
        return QStringLiteral("le plus récent");
    case KeepRule::shortestPath:
        return QStringLiteral("le chemin le plus court");
    case KeepRule::inFolder:
        break;
    }
    return QStringLiteral("ceux d’un dossier…");
}

QString ruleText(const KeepPolicy& policy)
{
    if (policy.rule != KeepRule::inFolder || policy.folder.isEmpty()) {
        return ruleName(policy.rule);
    }
    constexpr qsizetype longest = 24; // the button is as wide as its text
    const QString name = FileUrlText::display(policy.folder.lastPathComponent());
    return QStringLiteral("ceux de ") +
           (name.size() <= longest ? name : name.first(longest - 1) + QStringLiteral("…"));
}

} // namespace

DuplicatesView::DuplicatesView(DuplicatesViewModel& tool, QWidget* parent)
    : DuplicatesView(tool, new DuplicateTable, parent)
{}

DuplicatesView::DuplicatesView(DuplicatesViewModel& tool, DuplicateTable* table, QWidget* parent)
    : ToolScreen(tool, ToolTexts::duplicates, table, parent), m_duplicates(tool), m_table(table),
      m_checkRedundant(new QPushButton(QStringLiteral("Cocher les doublons (garder 1 par groupe)")))
{
    addKeepRules();
    m_checkRedundant->setIcon(SymbolIcon::icon("checkmark.circle.fill"));
    Theme::style(m_checkRedundant, Theme::Button::plain);
    table->setPolicy(tool.policy());
    header().addAction(m_checkRedundant);
    connect(m_checkRedundant, &QPushButton::clicked, this,
            [this] { selection().setUrls(m_duplicates.redundantURLs()); });
    connect(table, &DuplicateTable::protectionRequested, this,
            [&tool](const FileUrl& copy, bool isProtected) {
                isProtected ? tool.protect(copy.parent()) : tool.unprotect(copy);
            });
    connect(&tool, &DuplicatesViewModel::policyChanged, table,
            [this] { m_table->setPolicy(m_duplicates.policy()); });
}

void DuplicatesView::addKeepRules()
{
    const auto rule = [&tool = m_duplicates] { return tool.policy().rule; };
    Option option{[&tool = m_duplicates] { return QStringLiteral("Garder : ") + ruleText(tool.policy()); },
                  {}};
    for (const KeepRule one : KeepPolicy::rules) {
        option.choices.push_back(
            {ruleName(one), [rule, one] { return rule() == one; }, [this, one](bool) { chooseRule(one); }});
    }
    auto* const menu = new OptionMenu(option);
    connect(&m_duplicates, &DuplicatesViewModel::policyChanged, menu, &OptionMenu::showTitle);
    header().addOption(menu);
}

void DuplicatesView::chooseRule(KeepRule rule)
{
    if (rule != KeepRule::inFolder) {
        m_duplicates.setKeepRule(rule);
        return;
    }
    // Until a folder is chosen nothing is kept in none.
    m_duplicates.setKeepRule(KeepRule::inFolder);
    Desktop::chooseFolder(this, m_duplicates.rootURL(), [&tool = m_duplicates](const FolderChoice& choice) {
        if (choice && !choice->empty()) {
            tool.setKeepRule(KeepRule::inFolder, choice->front());
        }
    });
}

void DuplicatesView::showEntries()
{
    m_table->setGroups(m_duplicates.sharedGroups(), m_duplicates.shownGroups());
    m_checkRedundant->setEnabled(!m_duplicates.filteredGroups().empty());
}

QString DuplicatesView::notice() const
{
    return m_duplicates.truncated()
               ? QStringLiteral(
                     "Liste incomplète : il y a trop de fichiers, la recherche s’est arrêtée avant "
                     "la fin. Choisissez un dossier plus petit ou une taille minimale plus grande.")
               : QString{};
}

QString DuplicatesView::summary() const
{
    const std::int64_t wasted = m_duplicates.totalWasted();
    const std::int64_t reclaimable = m_duplicates.totalReclaimable();
    QString text = NumberText::plural(m_duplicates.groups().size(), QStringLiteral("groupe")) +
                   QStringLiteral(" · ") + sizeText(reclaimable) + QStringLiteral(" récupérables");
    if (wasted != reclaimable) {
        text += QStringLiteral(" (%1 en double, liens physiques compris)").arg(sizeText(wasted));
    }
    if (m_duplicates.isFiltering()) {
        std::int64_t shownBytes = 0;
        for (const std::uint32_t index : m_duplicates.filteredGroups()) {
            shownBytes = checkedSum(shownBytes, m_duplicates.groups()[index].reclaimableBytes());
        }
        text += QStringLiteral(" · ") +
                NumberText::plural(m_duplicates.filteredGroups().size(), QStringLiteral("affiché")) +
                QStringLiteral(" · ") + sizeText(shownBytes);
    }
    return text;
}

ToolScreen::Caution DuplicatesView::caution(const std::vector<Entry>& entries) const
{
    const std::size_t lost = m_duplicates.groupsLosingAllCopies(urlsOf(entries, &Entry::url));
    if (lost == 0) {
        return {DuplicatesViewModel::copiesStay(), {}};
    }
    const QString groups = NumberText::plural(lost, QStringLiteral("groupe"));
    return {
        QStringLiteral("Dans %1, toutes les copies sont cochées (celles de la corbeille ne comptent pas) : "
                       "il n’en restera aucune.")
            .arg(groups),
        QStringLiteral("Supprimer aussi la dernière copie de %1").arg(groups)};
}

void DuplicatesView::exportEntries()
{
    if (m_duplicates.filteredGroups().empty()) {
        return;
    }
    exportText([groups = m_duplicates.sharedGroups(), shown = m_duplicates.filteredGroups()] {
        std::string text = DuplicateExport::header();
        for (const std::uint32_t index : shown) {
            const DuplicateGroup& group = (*groups)[index];
            for (const Entry& entry : group.entries) {
                text.append("\n").append(DuplicateExport::line(group, entry));
            }
        }
        return text;
    });
}

} // namespace tallyroom
