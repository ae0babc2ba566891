#include "Shell/ToolRegistry.h"

#include "Tools/BuildCaches/BuildCaches.h"
#include "Tools/Dashboard/DashboardView.h"
#include "Tools/DiskUsage/DiskUsageView.h"
#include "Tools/Duplicates/DuplicatesView.h"
#include "Tools/Frame/ListToolScreen.h"
#include "Tools/GitRepos/GitRepos.h"
#include "Tools/LargeFiles/LargeFiles.h"
#include "Tools/NodeModules/NodeModules.h"

#include <algorithm>

namespace tallyroom {

namespace {

/// A tool whose screen, made by `make`, shows the view model `model` of the store.
template <auto model, auto make>
ToolDescriptor describe(const QString& id, const QString& name, std::string icon)
{
    return {id, name, std::move(icon), [](SessionStore& store) -> QWidget* { return make(store.*model); },
            [](SessionStore& store) -> FolderTool& { return store.*model; }};
}

template <class View>
constexpr auto makeView = [](auto& tool) -> QWidget* { return new View(tool); };

} // namespace

const std::vector<ToolDescriptor>& ToolRegistry::all()
{
    static const std::vector<ToolDescriptor> tools{
        describe<&SessionStore::dashboard, makeView<DashboardView>>(
            QStringLiteral("dashboard"), QStringLiteral("Tableau de bord"), "chart.pie"),
        describe<&SessionStore::diskUsage, makeView<DiskUsageView>>(
            QStringLiteral("disk-usage"), QStringLiteral("Espace disque"), "internaldrive"),
        describe<&SessionStore::nodeModules, makeNodeModulesScreen>(
            QStringLiteral("node-modules"), QStringLiteral("node_modules"), "shippingbox"),
        describe<&SessionStore::largeFiles, makeLargeFilesScreen>(
            QStringLiteral("large-files"), QStringLiteral("Gros fichiers"), "doc.text.magnifyingglass"),
        describe<&SessionStore::duplicates, makeView<DuplicatesView>>(
            QStringLiteral("duplicates"), QStringLiteral("Doublons"), "doc.on.doc"),
        describe<&SessionStore::buildCaches, makeBuildCachesScreen>(
            QStringLiteral("build-caches"), QStringLiteral("Caches de build"), "hammer"),
        describe<&SessionStore::gitRepos, makeGitReposScreen>(
            QStringLiteral("git-repos"), QStringLiteral("Dépôts Git"), "arrow.triangle.branch"),
    };
    return tools;
}

const ToolDescriptor* ToolRegistry::find(const QString& id)
{
    const auto found = std::ranges::find(all(), id, &ToolDescriptor::id);
    return found == all().end() ? nullptr : &*found;
}

std::vector<RecoveryTool> ToolRegistry::recoveryTools(SessionStore& store)
{
    std::vector<RecoveryTool> tools;
    for (const char* const id : {"build-caches", "node-modules", "git-repos", "large-files", "duplicates"}) {
        const ToolDescriptor* const descriptor = find(QString::fromLatin1(id));
        if (auto* const tool = qobject_cast<ScanToolViewModel*>(&descriptor->tool(store))) {
            tools.push_back({descriptor->id, descriptor->name, descriptor->icon, tool});
        }
    }
    return tools;
}

const ToolDescriptor& ToolRegistry::initial()
{
    const ToolDescriptor* const dashboard = find(QStringLiteral("dashboard"));
    return dashboard != nullptr ? *dashboard : all().front();
}

} // namespace tallyroom
