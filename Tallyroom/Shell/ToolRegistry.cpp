#include "Shell/ToolRegistry.h"

#include "Tools/BuildCaches/BuildCachesView.h"
#include "Tools/Dashboard/DashboardView.h"
#include "Tools/DiskUsage/DiskUsageView.h"
#include "Tools/Duplicates/DuplicatesView.h"
#include "Tools/GitRepos/GitReposView.h"
#include "Tools/LargeFiles/LargeFilesView.h"
#include "Tools/NodeModules/NodeModulesView.h"

#include <algorithm>

namespace tallyroom {

namespace {

/// A tool whose screen `View` shows the view model `model` of the store.
template <class View, auto model>
ToolDescriptor describe(const QString& id, const QString& name, std::string icon)
{
    return {id, name, std::move(icon), [](SessionStore& store) -> QWidget* { return new View(store.*model); },
            [](SessionStore& store) -> FolderTool& { return store.*model; }};
}

} // namespace

const std::vector<ToolDescriptor>& ToolRegistry::all()
{
    static const std::vector<ToolDescriptor> tools{
        describe<DashboardView, &SessionStore::dashboard>(QStringLiteral("dashboard"),
                                                          QStringLiteral("Tableau de bord"), "chart.pie"),
        describe<DiskUsageView, &SessionStore::diskUsage>(QStringLiteral("disk-usage"),
                                                          QStringLiteral("Espace disque"), "internaldrive"),
        describe<NodeModulesView, &SessionStore::nodeModules>(QStringLiteral("node-modules"),
                                                              QStringLiteral("node_modules"), "shippingbox"),
        describe<LargeFilesView, &SessionStore::largeFiles>(
            QStringLiteral("large-files"), QStringLiteral("Gros fichiers"), "doc.text.magnifyingglass"),
        describe<DuplicatesView, &SessionStore::duplicates>(QStringLiteral("duplicates"),
                                                            QStringLiteral("Doublons"), "doc.on.doc"),
        describe<BuildCachesView, &SessionStore::buildCaches>(QStringLiteral("build-caches"),
                                                              QStringLiteral("Caches de build"), "hammer"),
        describe<GitReposView, &SessionStore::gitRepos>(
            QStringLiteral("git-repos"), QStringLiteral("Dépôts Git"), "arrow.triangle.branch"),
    };
    return tools;
}

const ToolDescriptor* ToolRegistry::find(const QString& id)
{
    const auto found = std::ranges::find(all(), id, &ToolDescriptor::id);
    return found == all().end() ? nullptr : &*found;
}

const ToolDescriptor& ToolRegistry::initial()
{
    const ToolDescriptor* const dashboard = find(QStringLiteral("dashboard"));
    return dashboard != nullptr ? *dashboard : all().front();
}

} // namespace tallyroom
