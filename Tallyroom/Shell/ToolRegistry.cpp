#include "Shell/ToolRegistry.h"

#include "Text/ToolText.h"
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
ToolDescriptor describe(const ToolText& text)
{
    return {text.id, text.name, text.icon, [](SessionStore& store) -> QWidget* { return make(store.*model); },
            [](SessionStore& store) -> FolderTool& { return store.*model; }};
}

template <class View>
constexpr auto makeView = [](auto& tool) -> QWidget* { return new View(tool); };

} // namespace

const std::vector<ToolDescriptor>& ToolRegistry::all()
{
    static const std::vector<ToolDescriptor> tools{
        describe<&SessionStore::dashboard, makeView<DashboardView>>(ToolTexts::dashboard),
        describe<&SessionStore::diskUsage, makeView<DiskUsageView>>(ToolTexts::diskUsage),
        describe<&SessionStore::nodeModules, makeNodeModulesScreen>(ToolTexts::nodeModules),
        describe<&SessionStore::largeFiles, makeLargeFilesScreen>(ToolTexts::largeFiles),
        describe<&SessionStore::duplicates, makeView<DuplicatesView>>(ToolTexts::duplicates),
        describe<&SessionStore::buildCaches, makeBuildCachesScreen>(ToolTexts::buildCaches),
        describe<&SessionStore::gitRepos, makeGitReposScreen>(ToolTexts::gitRepos),
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
    for (const ToolText* const text : {&ToolTexts::buildCaches, &ToolTexts::nodeModules, &ToolTexts::gitRepos,
                                       &ToolTexts::largeFiles, &ToolTexts::duplicates}) {
        const ToolDescriptor* const descriptor = find(text->id);
        if (auto* const tool = qobject_cast<ScanToolViewModel*>(&descriptor->tool(store))) {
            tools.push_back({descriptor->id, descriptor->name, descriptor->icon, tool});
        }
    }
    return tools;
}

const ToolDescriptor& ToolRegistry::initial()
{
    const ToolDescriptor* const dashboard = find(ToolTexts::dashboard.id);
    return dashboard != nullptr ? *dashboard : all().front();
}

} // namespace tallyroom
