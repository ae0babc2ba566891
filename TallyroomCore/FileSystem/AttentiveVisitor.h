#pragma once

#include "FileSystem/TreeWalk.h"
#include "FileSystem/UnreadPlaces.h"

#include <optional>
#include <span>

namespace tallyroom {

/// A visitor that remembers what its walk could not read.
class AttentiveVisitor : public TreeWalk::Visitor {
public:
    void unreadable(TreeWalk::Folder& folder, const SystemError& error) override;

protected:
    /// To be called with all children of a folder.
    void noteUnread(const TreeWalk::Folder& folder, std::span<const TreeWalk::Child> children);

    [[nodiscard]] SharedUnreadPlaces unreadPlaces() const { return m_ledger.places(); }

    /// Why the root itself cannot be read. After the walk.
    [[nodiscard]] const std::optional<SystemError>& unreadRoot() const { return m_unreadRoot; }

private:
    UnreadLedger m_ledger;
    std::optional<SystemError> m_unreadRoot;
};

} // namespace tallyroom
