#pragma once

#include "Deletion/DeletionRunner.h"
#include "Tools/DiskUsage/FolderNavigatorViewModel.h"

namespace tallyroom {

/// One view model a tool, all made at start-up and kept to the end: a scan survives going to another tool.
/// Main thread.
struct SessionStore {
    // First in, last out: no view model may hear of a removal's end after its own.
    DeletionRunner deletions;

    FolderNavigatorViewModel diskUsage{deletions};
};

} // namespace tallyroom
