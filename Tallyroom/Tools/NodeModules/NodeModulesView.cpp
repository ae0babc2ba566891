#include "Tools/NodeModules/NodeModulesView.h"

#include "Controls/OptionMenu.h"
#include "Rows/EntryTable.h"
#include "Rows/Selection.h"
#include "Text/SizeText.h"
#include "Tools/Frame/ToolHeader.h"
#include "Tools/Frame/ToolStyles.h"

#include <algorithm>
#include <iterator>

namespace tallyroom {

namespace {

QString labelOf(AgeThreshold threshold)
{
    const std::string_view label = threshold.label();
    return QString::fromUtf8(label.data(), static_cast<qsizetype>(label.size()));
}

ListToolStyle nodeModulesStyle(const NodeModulesViewModel& tool)
{
    ListToolStyle style = ToolStyles::search(
        "shippingbox", QStringLiteral("node_modules"),
        QStringLiteral("Choisissez un dossier de projets : Tallyroom y cherche les dossiers node_modules et "
                       "signale ceux qui n’ont plus servi depuis longtemps."));
    style.emptyMessage = QStringLiteral("Aucun dossier node_modules ici.");
    style.table.firstColumnTitle = QStringLiteral("Projet");
    style.table.name = ToolStyles::projectName;
    style.table.symbol = [](const Entry&) { return std::string{"shippingbox"}; };
    style.table.columns.push_back(ToolStyles::ageColumn());
    style.table.badges = [&tool](const Entry& entry) -> std::vector<EntryBadge> {
        if (tool.threshold().isOld(entry.modifiedAt, std::chrono::system_clock::now())) {
            return {{QStringLiteral("ancien"), Theme::Colour::old}};
        }
        return {};
    };
    return style;
}

} // namespace

NodeModulesView::NodeModulesView(NodeModulesViewModel& tool, QWidget* parent)
    : ListToolScreen(tool, nodeModulesStyle(tool), parent), m_nodeModules(tool),
      m_threshold(new OptionMenu(OptionMenu::Choices::one)), m_deleteOld(new QPushButton)
{
    for (const AgeThreshold threshold : AgeThreshold::all) {
        m_threshold->addChoice(labelOf(threshold), threshold == tool.threshold(),
                               [&tool, threshold](bool) { tool.setThreshold(threshold); });
    }
    Theme::dress(m_deleteOld, Theme::Button::danger);
    header().addOption(m_threshold);
    header().addOption(m_deleteOld);
    connect(m_deleteOld, &QPushButton::clicked, this, &NodeModulesView::askDeletionOfOld);
    connect(&tool, &NodeModulesViewModel::thresholdChanged, this, &NodeModulesView::showThreshold);
    showThreshold();
}

void NodeModulesView::showThreshold()
{
    m_threshold->setTitle(QStringLiteral("Ancien après : ") + labelOf(m_nodeModules.threshold()));
    showOld();
    showSummary();
    table().update(); // the badges
}

void NodeModulesView::showEntries()
{
    ListToolScreen::showEntries();
    showOld();
}

void NodeModulesView::showOld()
{
    const std::size_t old = m_nodeModules.oldEntries().size();
    m_deleteOld->setText(QStringLiteral("Supprimer anciens (%1)").arg(old));
    m_deleteOld->setEnabled(old > 0);
}

QString NodeModulesView::summary() const
{
    QString text = ListToolScreen::summary();
    const std::vector<Entry> old = m_nodeModules.oldEntries();
    if (!old.empty()) {
        text += QStringLiteral(" · %1 ancien%2, %3 à récupérer")
                    .arg(QString::number(old.size()), old.size() >= 2 ? QStringLiteral("s") : QString{},
                         sizeText(totalSize(old)));
    }
    return text;
}

void NodeModulesView::askDeletionOfOld()
{
    const std::vector<Entry> old = m_nodeModules.oldEntries();
    UrlSet urls;
    std::ranges::transform(old, std::inserter(urls, urls.end()), &Entry::url);
    selection().setUrls(std::move(urls));
    askDeletion(old, DeleteConfirmation::Default::trash);
}

} // namespace tallyroom
