#include "Tools/BuildCaches/BuildCachesView.h"

#include "Controls/OptionMenu.h"
#include "Tools/Frame/ToolHeader.h"
#include "Tools/Frame/ToolStyles.h"

namespace tallyroom {

namespace {

QString nameOf(Ecosystem ecosystem)
{
    const std::string_view name = ecosystem.displayName();
    return QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size()));
}

std::string symbolOf(const Entry& entry)
{
    const auto ecosystem = Ecosystem::first(entry.name);
    return std::string{ecosystem ? ecosystem->symbolName() : std::string_view{"folder.fill"}};
}

/// The place of an ecosystem in their order, to sort by; unknown ones last.
double orderOf(const Entry& entry)
{
    return static_cast<double>(Ecosystem::first(entry.name).value_or(Ecosystem::xcode).index());
}

ListToolStyle buildCachesStyle()
{
    ListToolStyle style = ToolStyles::search(
        "hammer", QStringLiteral("Caches de build"),
        QStringLiteral("Choisissez un dossier de code : Tallyroom y cherche ce que vos outils de "
                       "développement savent refaire."));
    style.emptyMessage = QStringLiteral("Aucun cache de build ici.");
    style.table.firstColumnTitle = QStringLiteral("Cache");
    style.table.name = [](const Entry& entry) { return ToolStyles::projectName(entry) + " / " + entry.name; };
    style.table.symbol = symbolOf;
    style.table.columns.push_back({QStringLiteral("Écosystème"), 130,
                                   [](const Entry& entry) {
                                       const auto ecosystem = Ecosystem::first(entry.name);
                                       return ecosystem ? nameOf(*ecosystem) : QString{};
                                   },
                                   orderOf});
    for (const Ecosystem ecosystem : Ecosystem::all) {
        style.categories.push_back(
            {std::string{ecosystem.rawValue()}, nameOf(ecosystem), std::string{ecosystem.symbolName()}});
    }
    return style;
}

} // namespace

BuildCachesView::BuildCachesView(BuildCachesViewModel& tool, QWidget* parent)
    : ListToolScreen(tool, buildCachesStyle(), parent), m_caches(tool),
      m_ecosystems(new OptionMenu(OptionMenu::Choices::many))
{
    for (const Ecosystem ecosystem : Ecosystem::all) {
        m_ecosystems->addChoice(nameOf(ecosystem), tool.enabledEcosystems().contains(ecosystem),
                                [this, ecosystem](bool isOn) { enable(ecosystem, isOn); });
    }
    header().addOption(m_ecosystems);
    connect(&tool, &BuildCachesViewModel::enabledEcosystemsChanged, this, &BuildCachesView::showEcosystems);
    showEcosystems();
}

void BuildCachesView::enable(Ecosystem ecosystem, bool isOn)
{
    std::set<Ecosystem> ecosystems = m_caches.enabledEcosystems();
    if (isOn) {
        ecosystems.insert(ecosystem);
    } else {
        ecosystems.erase(ecosystem);
    }
    m_caches.setEnabledEcosystems(ecosystems);
}

void BuildCachesView::showEcosystems()
{
    m_ecosystems->setTitle(QStringLiteral("Écosystèmes (%1)").arg(m_caches.enabledEcosystems().size()));
}

} // namespace tallyroom
