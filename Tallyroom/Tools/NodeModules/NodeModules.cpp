#include "Tools/NodeModules/NodeModules.h"

#include "Caches/FindInspectors.h"
#include "Text/AgeText.h"
#include "Text/MarkText.h"
#include "Text/NodeModulesProgress.h"
#include "Text/RecoveryText.h"
#include "Tools/Frame/ToolStyles.h"

namespace tallyroom {

NodeModulesViewModel::NodeModulesViewModel(DeletionRunner& deletions)
    : ListToolViewModel(deletions),
      m_threshold(*this,
                  Settings::storedCase(QStringLiteral("nm.threshold"), AgeThreshold{AgeThreshold::oneMonth}),
                  oneCase(QStringLiteral("Ancien après : "), thresholdText)),
      m_projects(*this, SafeRemoval::projectOf)
{}

std::vector<Entry> NodeModulesViewModel::oldEntries() const
{
    return entries().parted(SafeRemoval::oldNodeModules(threshold())).first.toVector();
}

ScanLine NodeModulesViewModel::scanLine() const
{
    const NodeModulesProgress progress{isDiscovering(), scanTotal(), scanCompleted(), scanFraction()};
    return {progress.text(), isDiscovering() ? std::nullopt : std::optional{progress.fraction}};
}

Recovery NodeModulesViewModel::recovery() const
{
    Recovery recovery = m_projects.recovery(SafeRemoval::safeNodeModules(threshold()));
    recovery.words = RecoveryText::nodeModules(recovery.safe.size(), entries().size(), threshold());
    return recovery;
}

FileScanner::ScanStream NodeModulesViewModel::startStream()
{
    return FileScanner::findNodeModulesStream(*rootURL(), FindInspectors::ofNodeModules());
}

ListToolScreen* makeNodeModulesScreen(NodeModulesViewModel& tool)
{
    ListToolStyle style = ToolStyles::projects(ToolTexts::nodeModules);
    style.table.badges = [&tool](const Entry& entry) {
        return ToolStyles::badges(MarkText::nodeModulesWords(entry, tool.threshold()));
    };
    style.table.toolTip = [&tool](const Entry& entry) {
        return MarkText::nodeModulesExplanation(entry, tool.project(entry).changedAt);
    };
    style.sweep = {QStringLiteral("ancien"), [&tool] { return tool.oldEntries(); }};
    return new ListToolScreen(tool, style);
}

} // namespace tallyroom
