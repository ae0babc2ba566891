#include "Tools/NodeModules/NodeModules.h"

#include "Caches/FindInspectors.h"
#include "Controls/OptionMenu.h"
#include "Rows/Selection.h"
#include "Settings/Settings.h"
#include "Text/AgeText.h"
#include "Text/MarkText.h"
#include "Text/NumberText.h"
#include "Text/PlainText.h"
#include "Text/SizeText.h"
#include "Tools/Frame/ToolStyles.h"

#include <QPushButton>

#include <algorithm>
#include <iterator>

namespace tallyroom {

namespace {

const QString thresholdKey = QStringLiteral("nm.threshold");

AgeThreshold storedThreshold()
{
    const QString text = Settings::text(thresholdKey).value_or(QString{});
    return AgeThreshold::fromRawValue(text.toStdString()).value_or(AgeThreshold::oneMonth);
}

QString labelOf(AgeThreshold threshold)
{
    return toText(threshold.label());
}

/// Both ages: installing changes one of them, working on the project the other.
QString toolTipOf(const NodeModulesViewModel& tool, const Entry& entry)
{
    const Timestamp now = std::chrono::system_clock::now();
    QStringList lines{QStringLiteral("node_modules modifié : ") + ageText(entry.modifiedAt, now)};
    if (const auto* const project = tool.projectDate(entry); project != nullptr && *project) {
        lines += QStringLiteral("Fichiers du projet modifiés : ") + ageText(*project, now);
    }
    if (const QString marks = MarkText::explanation(entry); !marks.isEmpty()) {
        lines += marks;
    }
    return lines.join(QLatin1Char{'\n'});
}

ListToolStyle nodeModulesStyle(const NodeModulesViewModel& tool)
{
    ListToolStyle style = ToolStyles::projects(
        "shippingbox", QStringLiteral("node_modules"),
        QStringLiteral("Choisissez un dossier de projets : Tallyroom y cherche les dossiers node_modules et "
                       "signale ceux qui n’ont plus servi depuis longtemps."));
    style.emptyMessage = QStringLiteral("Aucun dossier node_modules ici.");
    style.table.firstColumnTitle = QStringLiteral("Projet");
    style.table.badges = [&tool](const Entry& entry) -> std::vector<EntryBadge> {
        std::vector<EntryBadge> badges = ToolStyles::markBadges(entry);
        if (tool.threshold().isOld(entry.modifiedAt, std::chrono::system_clock::now())) {
            badges.push_back({QStringLiteral("ancien"), Theme::Colour::old});
        }
        return badges;
    };
    style.table.toolTip = [&tool](const Entry& entry) { return toolTipOf(tool, entry); };
    style.remark = [&tool] {
        const std::vector<Entry> old = tool.oldEntries();
        return old.empty() ? QString{}
                           : QStringLiteral(" · %1, %2 à récupérer")
                                 .arg(NumberText::plural(old.size(), QStringLiteral("ancien")),
                                      sizeText(totalSize(old)));
    };
    return style;
}

} // namespace

QString NodeModulesProgress::text() const
{
    return isDiscovering
               ? QStringLiteral("Recherche… %1 node_modules trouvés").arg(NumberText::grouped(found))
               : QStringLiteral("Mesure des tailles… %1/%2")
                     .arg(NumberText::grouped(sized), NumberText::grouped(found));
}

NodeModulesViewModel::NodeModulesViewModel(DeletionRunner& deletions)
    : ListToolViewModel(deletions), m_threshold(storedThreshold()),
      m_projects(SafeRemoval::projectOf, [this] { Q_EMIT recoveryChanged(); })
{
    connect(this, &ScanToolViewModel::progressChanged, this, [this] { m_projects.follow(entries()); });
    connect(this, &NodeModulesViewModel::thresholdChanged, this, &ScanToolViewModel::recoveryChanged);
}

Recovery NodeModulesViewModel::recovery() const
{
    const Timestamp now = std::chrono::system_clock::now();
    bool isKnown = true;
    Recovery recovery = Recovery::parted(entries(), [&](const Entry& entry) {
        const SafeRemoval::NodeProject* const project = m_projects.find(entry.url);
        isKnown = isKnown && project != nullptr;
        return project != nullptr && SafeRemoval::isSafeNodeModules(entry, *project, m_threshold, now);
    });
    recovery.isKnown = isKnown;
    recovery.words = QStringLiteral("%1 sur %2 · projets sans changement depuis %3")
                         .arg(NumberText::plural(recovery.safe.size(), QStringLiteral("ancien")),
                              NumberText::grouped(entries().size()), labelOf(m_threshold));
    return recovery;
}

void NodeModulesViewModel::setThreshold(AgeThreshold threshold)
{
    Settings::write(thresholdKey, toText(threshold.rawValue()));
    if (assignIfChanged(m_threshold, threshold)) {
        Q_EMIT thresholdChanged();
    }
}

std::vector<Entry> NodeModulesViewModel::oldEntries() const
{
    std::vector<Entry> old;
    std::ranges::copy_if(entries(), std::back_inserter(old),
                         [this, now = Timestamp{std::chrono::system_clock::now()}](const Entry& entry) {
                             return !entry.needsOwnCheck() && m_threshold.isOld(entry.modifiedAt, now);
                         });
    return old;
}

ScanLine NodeModulesViewModel::scanLine() const
{
    const NodeModulesProgress progress{isDiscovering(), scanTotal(), scanCompleted(), scanFraction()};
    return {progress.text(), isDiscovering() ? std::nullopt : std::optional{progress.fraction}};
}

FileScanner::ScanStream NodeModulesViewModel::startStream()
{
    return FileScanner::findNodeModulesStream(*rootURL(), FindInspectors::ofNodeModules());
}

ListToolScreen* makeNodeModulesScreen(NodeModulesViewModel& tool)
{
    auto* const thresholds = new OptionMenu(OptionMenu::Choices::one, [&tool] {
        return QStringLiteral("Ancien après : ") + labelOf(tool.threshold());
    });
    thresholds->addChoices(
        AgeThreshold::all, labelOf, [&tool](AgeThreshold threshold) { return threshold == tool.threshold(); },
        [&tool](AgeThreshold threshold, bool) { tool.setThreshold(threshold); });
    thresholds->follow(tool, &NodeModulesViewModel::thresholdChanged);
    auto* const deleteOld = new QPushButton;
    Theme::style(deleteOld, Theme::Button::danger);
    auto* const screen = new ListToolScreen(tool, nodeModulesStyle(tool));
    screen->addOption(thresholds);
    screen->addOption(deleteOld);
    const auto showOld = [&tool, deleteOld] {
        const std::size_t old = tool.oldEntries().size();
        deleteOld->setText(QStringLiteral("Supprimer anciens (%1)").arg(NumberText::grouped(old)));
        deleteOld->setEnabled(old > 0);
    };
    QObject::connect(&tool, &ScanToolViewModel::progressChanged, deleteOld, showOld);
    QObject::connect(&tool, &NodeModulesViewModel::thresholdChanged, screen, [=] {
        showOld();
        screen->showAgain();
    });
    QObject::connect(deleteOld, &QPushButton::clicked, screen, [&tool, screen] {
        const std::vector<Entry> old = tool.oldEntries();
        UrlSet urls;
        std::ranges::transform(old, std::inserter(urls, urls.end()), &Entry::url);
        screen->selection().setUrls(urls);
        screen->askDeletion(old, DeleteConfirmation::Default::trash);
    });
    showOld();
    return screen;
}

} // namespace tallyroom
