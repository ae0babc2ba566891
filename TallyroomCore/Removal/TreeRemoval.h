#pragma once

#include "FileSystem/DiskSense.h"
#include "FileSystem/SystemError.h"
#include "Removal/MeantItem.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <stop_token>
#include <string>

namespace tallyroom {

/// Removes folders with all that is in them. The one place that calls unlinkat(2) on people's files.
namespace TreeRemoval {

/// The result for one item.
struct Outcome {
    std::optional<SystemError> error; ///< why `firstKept` is left
    std::string firstKept;            ///< the first of what could not be removed, by path below the item
    std::size_t kept = 0;             ///< how many could not
    bool isStopped = false;           ///< something is left because the stop was asked for
    std::size_t removed = 0;          ///< how many names are gone
    std::int64_t freedBytes = 0;      ///< on disk; a file that has other names frees nothing

    [[nodiscard]] bool isGone() const noexcept { return !error && !isStopped; }
};

/// Removes the item `name` of the open folder `parent`: a link and not its target, a folder with its whole
/// content. Every step is relative to an open folder and opens no link, so that nobody who swaps a folder for
/// a link meanwhile can lead it outside; it does not enter what is mounted inside either (EXDEV). Another
/// item than the one that is meant stays (ESTALE): a folder is looked at when it is open, anything else right
/// before it goes.
///
/// What cannot be removed is left and the rest goes all the same. What others remove at the same time counts
/// as removed. A stop is asked for before each name. A large tree is shared by up to eight threads that live
/// no longer than the call, on a disk that rotates once all of it has been looked at in the disk's order;
/// names go in the order of their inodes. Depth and path length are unlimited, open descriptors bounded to a
/// few hundred. Any thread but the pool's.
///
/// `name` is one component: not ".", not "..", no "/".
[[nodiscard]] Outcome removeItem(int parent, const std::string& name, const MeantItem& meant = {},
                                 const std::stop_token& stop = {},
                                 const DiskSense& sense = DiskSense::machine());

} // namespace TreeRemoval

} // namespace tallyroom
