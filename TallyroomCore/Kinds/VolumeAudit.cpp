#include "Kinds/VolumeAudit.h"

#include "FileSystem/PrunedFolders.h"
#include "Model/CheckedArithmetic.h"
#include "Volumes/VolumeFigures.h"
#include "Volumes/VolumeMounts.h"

#include <algorithm>

namespace tallyroom {

bool VolumeAudit::isTop(const TreeWalk::Folder& root)
{
    const Mount* const mount = root.position().mountPoint();
    return mount != nullptr && VolumeMounts::showsAll(*mount);
}

std::unique_ptr<VolumeAudit> VolumeAudit::of(const TreeWalk::Folder& root)
{
    return isTop(root) ? std::unique_ptr<VolumeAudit>{new VolumeAudit{*root.position().mountPoint()}}
                       : nullptr;
}

VolumeAudit::VolumeAudit(const Mount& volume) : m_mounts{{&volume, true}} {}

/// A volume may be shown in parts (subvolumes), and a part of it a second time (bind mounts).
bool VolumeAudit::isOwn(const Mount& mount)
{
    if (const auto known = m_mounts.find(&mount); known != m_mounts.end()) {
        return known->second;
    }
    const bool isOwn = std::ranges::all_of(m_mounts, [&mount](const auto& other) {
        return !other.second ||
               (other.first->device == mount.device && !isWithin(mount.root, other.first->root));
    });
    m_mounts.emplace(&mount, isOwn);
    return isOwn;
}

void VolumeAudit::addOwn(VolumeAccount& batch, const TreeWalk::Child& child)
{
    batch.skipped += child.isFolder() && isPruned(child.name) ? 1 : 0;
    const FileAttributes* const file = child.attributes;
    if (file == nullptr) {
        return;
    }
    const bool isShared = !child.isFolder() && file->links > 1;
    if (!isShared || m_files.meet(*file, 0, {}).earlier.empty()) {
        batch.found = checkedSum(batch.found, file->allocatedBytes);
    }
}

void VolumeAudit::add(const TreeWalk::Folder& folder, std::span<const TreeWalk::Child> children)
{
    const std::scoped_lock lock{m_mutex};
    const bool isFolderOwn = folder.position().mount() != nullptr && isOwn(*folder.position().mount());
    VolumeAccount batch;
    for (const TreeWalk::Child& child : children) {
        const bool isMountPoint = folder.position().child(child.name).mountPoint() != nullptr;
        if (isFolderOwn && !isMountPoint) {
            addOwn(batch, child);
        } else if (child.type == EntryType::file && child.attributes != nullptr) {
            batch.elsewhere = checkedSum(batch.elsewhere, child.attributes->allocatedBytes);
        }
    }
    m_account.found = checkedSum(m_account.found, batch.found);
    m_account.elsewhere = checkedSum(m_account.elsewhere, batch.elsewhere);
    m_account.skipped += batch.skipped;
}

std::optional<VolumeAccount> VolumeAudit::close(const TreeWalk::Folder& root) const
{
    const VolumeFigures figures = volumeFigures(root.descriptor());
    if (!figures.total || !figures.available || !figures.free) {
        return std::nullopt;
    }
    const std::scoped_lock lock{m_mutex};
    VolumeAccount account = m_account;
    account.used = std::max<std::int64_t>(*figures.total - *figures.available, 0);
    account.reserved = std::max<std::int64_t>(*figures.free - *figures.available, 0);
    return account;
}

} // namespace tallyroom
