#pragma once

#include "Concurrency/Locked.h"
#include "Rows/EntryTableStyle.h"
#include "Scanning/FolderContents.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace tallyroom {

/// The listing on screen's, for the threads that sort by it.
using ShownContents = std::shared_ptr<const Locked<SharedFolderContents>>;

/// The optional columns of the explorer: the share of the folder, the number of files, the newest change.
/// `total` tells the bytes of the whole folder, for the rows on screen.
[[nodiscard]] std::vector<EntryTableColumn> contentColumns(const ShownContents& contents,
                                                           std::function<std::int64_t()> total);

} // namespace tallyroom
