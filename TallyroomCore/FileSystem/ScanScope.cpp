#include "FileSystem/ScanScope.h"

#include "Concurrency/Locked.h"
#include "FileSystem/RealPath.h"

#include <algorithm>

namespace tallyroom {

namespace {

/// Never destroyed: workers may outlive main().
Locked<std::shared_ptr<const ScanScope>>& currentScope()
{
    static auto& scope = *new Locked<std::shared_ptr<const ScanScope>>{nullptr};
    return scope;
}

std::uint64_t deviceOfRoot(const TreeWalk::Folder& folder)
{
    const TreeWalk::Folder* root = &folder;
    while (!root->isRoot()) {
        root = root->parent();
    }
    const Mount* const mount = root->position().mount();
    return mount == nullptr ? 0 : mount->device;
}

} // namespace

ScanScope::ScanScope(Rules rules) : m_rules(std::move(rules))
{
    for (const FileUrl& folder : m_rules.folders) {
        m_lastNames.emplace(folder.lastPathComponent());
    }
}

void ScanScope::use(Rules rules)
{
    auto scope = rules == Rules{} ? nullptr : std::make_shared<const ScanScope>(std::move(rules));
    currentScope().with([&scope](std::shared_ptr<const ScanScope>& current) { current = std::move(scope); });
}

std::shared_ptr<const ScanScope> ScanScope::current()
{
    return currentScope().get();
}

int ScanScope::exclusion(const TreeWalk::Folder& parent, std::string_view name) const
{
    if (m_rules.names.contains(name) || isExcluded(parent, name)) {
        return SystemError::excluded;
    }
    if (m_rules.staysOnFileSystem) {
        const Mount* const mount = parent.position().child(name).mountPoint();
        if (mount != nullptr && mount->device != deviceOfRoot(parent)) {
            return SystemError::otherFileSystem;
        }
    }
    return 0;
}

bool ScanScope::isExcluded(const TreeWalk::Folder& parent, std::string_view name) const
{
    if (!m_lastNames.contains(name)) {
        return false;
    }
    // The scan may have come through a link: then the texts differ.
    const auto real = realPathOf(parent.descriptor());
    const FileUrl url = real ? FileUrl{*real}.appending(name) : parent.url(name);
    return std::ranges::find(m_rules.folders, url) != m_rules.folders.end();
}

} // namespace tallyroom
