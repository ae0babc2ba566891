#pragma once

#include "Duplicates/DuplicateGroup.h"
#include "Removal/Screening.h"

#include <memory>
#include <unordered_set>
#include <vector>

namespace tallyroom {

/// The last look before duplicates are removed, each right before it goes: is it still a copy of one that
/// stays? Nothing that was found earlier decides this, only what the files hold now.
namespace DuplicateRemovalCheck {

/// Whether no copy of the group would be left that can be counted on: all are victims, or what is kept lies
/// in a trash while others do not. False for a group without victims. Touches no disk.
[[nodiscard]] bool losesAllCopies(const DuplicateGroup& group, const std::unordered_set<FileUrl>& victims);

/// The screening of the batch that removes `victims`, of which each is in one of `groups`; others are
/// refused. A victim may go when its size and modification time are those of the search and its bytes those
/// of a copy that is not going to be removed, is another file (not its image on another device either) and,
/// where others are, lies outside of any trash. Of a group that loses all copies, those may go whose content
/// is the one that was found. Reads the victim and one copy, whole.
///
/// On file systems of which several paths may lead to one file without telling so (FUSE, network folders)
/// there is a second look: the copy is read once more when the victim has left its place.
[[nodiscard]] FileRemover::Screening forGroups(std::shared_ptr<const std::vector<DuplicateGroup>> groups,
                                               std::unordered_set<FileUrl> victims);

} // namespace DuplicateRemovalCheck

} // namespace tallyroom
