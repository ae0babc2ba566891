#pragma once

#include "FileSystem/TreeWalk.h"
#include "Scanning/FolderSize.h"

namespace tallyroom {

/// The size of a child that is no folder, its attributes read.
[[nodiscard]] FolderSize sizeOfItem(const TreeWalk::Child& child);

/// The sum of those children that are no folders.
[[nodiscard]] FolderSize sizeOfItems(std::span<const TreeWalk::Child> children);

/// The entry of a child of `folder`, its attributes read.
[[nodiscard]] Entry listedEntry(const FileUrl& folder, const TreeWalk::Child& child, const FolderSize& size,
                                const ScanRoot& scanRoot);

} // namespace tallyroom
