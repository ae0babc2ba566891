#include "Tools/NodeModules/NodeModules.h"

#include "Caches/FindInspectors.h"
#include "Text/AgeText.h"
#include "Text/MarkText.h"
#include "Text/NodeModulesProgress.h"
#include "Text/NumberText.h"
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
    return entries()
        .parted([this, now = Timestamp{std::chrono::system_clock::now()}](const Entry& entry) {
            return SafeRemoval::isOldNodeModules(entry, threshold(), now);
        })
        .first.toVector();
}

ScanLine NodeModulesViewModel::scanLine() const
{
    const NodeModulesProgress progress{isDiscovering(), scanTotal(), scanCompleted(), scanFraction()};
    return {progress.text(), isDiscovering() ? std::nullopt : std::optional{progress.fraction}};
}

Recovery NodeModulesViewModel::recovery() const
{
    const Timestamp now = std::chrono::system_clock::now();
    Recovery recovery = m_projects.recovery([&](const Entry& entry, const SafeRemoval::NodeProject& project) {
        return SafeRemoval::isSafeNodeModules(entry, project, threshold(), now);
    });
    recovery.words = QStringLiteral("%1 sur %2 · projets sans changement depuis %3")
                         .arg(NumberText::plural(recovery.safe.size(), QStringLiteral("ancien")),
                              NumberText::grouped(entries().size()), thresholdText(threshold()));
    return recovery;
}

FileScanner::ScanStream NodeModulesViewModel::startStream()
{
    return FileScanner::findNodeModulesStream(*rootURL(), FindInspectors::ofNodeModules());
}

ListToolScreen* makeNodeModulesScreen(NodeModulesViewModel& tool)
{
    ListToolStyle style = ToolStyles::projects(
        {.icon = "shippingbox",
         .title = QStringLiteral("node_modules"),
         .message = QStringLiteral("Choisissez un dossier de projets : Tallyroom y cherche les dossiers "
                                   "node_modules et signale ceux qui n’ont plus servi depuis longtemps."),
         .emptyMessage = QStringLiteral("Aucun dossier node_modules ici.")},
        QStringLiteral("Projet"));
    style.table.badges = [&tool](const Entry& entry) {
        QStringList words = MarkText::words(entry);
        if (tool.threshold().isOld(entry.modifiedAt, std::chrono::system_clock::now())) {
            words += QStringLiteral("ancien");
        }
        return ToolStyles::badges(words);
    };
    style.table.toolTip = [&tool](const Entry& entry) {
        return MarkText::nodeModulesExplanation(entry, tool.projectDate(entry));
    };
    style.sweep = {QStringLiteral("ancien"), [&tool] { return tool.oldEntries(); }};
    return new ListToolScreen(tool, style);
}

} // namespace tallyroom
