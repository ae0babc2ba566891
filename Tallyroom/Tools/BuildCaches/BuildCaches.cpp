#include "Tools/BuildCaches/BuildCaches.h"

#include "Caches/FindInspectors.h"
#include "Recovery/SafeRemoval.h"
#include "Text/MarkText.h"
#include "Text/RecoveryText.h"
#include "Tools/Frame/ToolStyles.h"

namespace tallyroom {

BuildCachesViewModel::BuildCachesViewModel(DeletionRunner& deletions)
    : ListToolViewModel(deletions, [](const Entry& entry) { return Ecosystem::namesOf(entry).rawValue; }),
      m_enabled(*this, Settings::storedCases<Ecosystem>(QStringLiteral("bc.ecosystems")),
                someCases<Ecosystem>(QStringLiteral("Écosystèmes (%1)")), [this] { scan(); })
{}

Recovery BuildCachesViewModel::recovery() const
{
    // node_modules have a tool of their own.
    const auto own = entries().parted([](const Entry& entry) { return entry.name == "node_modules"; }).second;
    Recovery recovery = Recovery::parted(own, SafeRemoval::isSafeCache);
    recovery.words = RecoveryText::caches(recovery.safe.size(), own.size());
    return recovery;
}

FileScanner::ScanStream BuildCachesViewModel::startStream()
{
    return FileScanner::findDirectoriesStream(Ecosystem::ruleNames(enabledEcosystems()), *rootURL(),
                                              FindInspectors::ofCaches());
}

ListToolScreen* makeBuildCachesScreen(BuildCachesViewModel& tool)
{
    ListToolStyle style = ToolStyles::search(ToolTexts::buildCaches);
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
