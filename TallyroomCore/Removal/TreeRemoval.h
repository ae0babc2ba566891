#pragma once

#include "FileSystem/SystemError.h"

#include <string>

namespace tallyroom {

/// Removes folders with all that is in them. The one place that calls unlinkat(2) on people's files.
namespace TreeRemoval {

/// Removes the item `name` of the open folder `parent`: a link and not its target, a folder with its whole
/// content. Every step is relative to an open folder and opens no link, so that nobody who swaps a folder for
/// a link meanwhile can lead it outside; it does not enter what is mounted inside either (EXDEV).
///
/// What cannot be removed is left, the rest goes all the same, and the first cause is returned. What others
/// remove at the same time counts as removed. A large tree is shared by up to eight threads that live no
/// longer than the call; depth and path length are unlimited, open descriptors bounded to a few hundred. Any
/// thread.
///
/// `name` is one component: not ".", not "..", no "/".
[[nodiscard]] SystemResult<void> removeItem(int parent, const std::string& name);

} // namespace TreeRemoval

} // namespace tallyroom
