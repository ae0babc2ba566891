#include "Tools/BuildCaches/BuildCaches.h"

#include "Caches/FindInspectors.h"
#include "Recovery/SafeRemoval.h"
#include "Text/MarkText.h"
#include "Text/NumberText.h"
#include "Tools/Frame/ToolStyles.h"

namespace tallyroom {

BuildCachesViewModel::BuildCachesViewModel(DeletionRunner& deletions)
    : ListToolViewModel(deletions, [](const Entry& entry) { return Ecosystem::namesOf(entry).rawValue; }),
      m_enabled(*this, Settings::storedCases<Ecosystem>(QStringLiteral("bc.ecosystems")),
                {.title = [](const auto& on) { return QStringLiteral("Écosystèmes (%1)").arg(on.size()); },
                 .choices = {Ecosystem::all.begin(), Ecosystem::all.end()},
                 .name = [](Ecosystem ecosystem) { return toText(ecosystem.displayName()); }},
                [this] { scan(); })
{}

Recovery BuildCachesViewModel::recovery() const
{
    // A tool of their own tells of node_modules.
    const auto own = entries().parted([](const Entry& entry) { return entry.name == "node_modules"; }).second;
    Recovery recovery = Recovery::parted(own, SafeRemoval::isSafeCache);
    recovery.words = QStringLiteral("%1 sur %2")
                         .arg(NumberText::plural(recovery.safe.size(), QStringLiteral("cache sans risque"),
                                                 QStringLiteral("caches sans risque")),
                              NumberText::grouped(own.size()));
    return recovery;
}

FileScanner::ScanStream BuildCachesViewModel::startStream()
{
    return FileScanner::findDirectoriesStream(Ecosystem::ruleNames(enabledEcosystems()), *rootURL(),
                                              FindInspectors::ofCaches());
}

ListToolScreen* makeBuildCachesScreen(BuildCachesViewModel& tool)
{
    ListToolStyle style = ToolStyles::search(
        {.icon = "hammer",
         .title = QStringLiteral("Caches de build"),
         .message = QStringLiteral("Choisissez un dossier de code : Tallyroom y cherche ce que vos outils de "
                                   "développement savent refaire."),
         .emptyMessage = QStringLiteral("Aucun cache de build ici.")},
        QStringLiteral("Cache"));
    style.table.name = [](const Entry& entry) { return ToolStyles::projectName(entry) + " / " + entry.name; };
    style.table.symbol = [](const Entry& entry) { return std::string{Ecosystem::namesOf(entry).symbolName}; };
    style.table.toolTip = MarkText::cacheExplanation;
    style.table.columns.push_back(
        {QStringLiteral("Écosystème"), 112,
         [](const Entry& entry) { return toText(Ecosystem::namesOf(entry).displayName); },
         Ecosystem::orderOf});
    style.categories = ToolStyles::chips(Ecosystem::all);
    return new ListToolScreen(tool, style);
}

} // namespace tallyroom
