#include "FileSystem/AttentiveVisitor.h"

namespace tallyroom {

void AttentiveVisitor::unreadable(TreeWalk::Folder& folder, const SystemError& error)
{
    if (folder.isRoot()) {
        m_unreadRoot = error;
    }
    m_ledger.add({folder.url(), error});
}

void AttentiveVisitor::noteUnread(const TreeWalk::Folder& folder, std::span<const TreeWalk::Child> children)
{
    for (const TreeWalk::Child& child : children) {
        if (child.failure != 0 && !child.isFolder()) {
            m_ledger.add({folder.url(child.name), {child.failure}, false});
        }
    }
}

} // namespace tallyroom
