#pragma once

#include "FileSystem/TreeWalk.h"
#include "Kinds/VolumeAccount.h"
#include "Scanning/SharedFiles.h"

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <span>

namespace tallyroom {

/// Draws up the account of a volume while a walk goes through it from its top. Needs all attributes. Any
/// thread.
class VolumeAudit {
public:
    /// Null when the root of a walk is not the top of a volume. During the root's visit.
    [[nodiscard]] static std::unique_ptr<VolumeAudit> of(const TreeWalk::Folder& root);

    /// Whether `of` makes one.
    [[nodiscard]] static bool isTop(const TreeWalk::Folder& root);

    /// Takes in children of a folder of the walk.
    void add(const TreeWalk::Folder& folder, std::span<const TreeWalk::Child> children);

    /// The account, when all was added; nothing when the volume does not say how full it is. While the root
    /// is open.
    [[nodiscard]] std::optional<VolumeAccount> close(const TreeWalk::Folder& root) const;

private:
    explicit VolumeAudit(const Mount& volume);

    [[nodiscard]] bool isOwn(const Mount& mount);
    void addOwn(VolumeAccount& batch, const TreeWalk::Child& child);

    SharedFiles m_files;
    mutable std::mutex m_mutex;
    std::map<const Mount*, bool> m_mounts; // whether they show a part of the volume for the first time
    VolumeAccount m_account;
};

} // namespace tallyroom
