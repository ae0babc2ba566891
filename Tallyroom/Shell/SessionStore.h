#pragma once

#include "Deletion/DeletionRunner.h"
#include "Tools/BuildCaches/BuildCaches.h"
#include "Tools/Dashboard/DashboardViewModel.h"
#include "Tools/DiskUsage/FolderNavigatorViewModel.h"
#include "Tools/Duplicates/DuplicatesViewModel.h"
#include "Tools/GitRepos/GitRepos.h"
#include "Tools/LargeFiles/LargeFiles.h"
#include "Tools/NodeModules/NodeModules.h"

namespace tallyroom {

/// One view model a tool, all made at start-up and kept to the end: a scan survives going to another tool.
/// Main thread.
struct SessionStore {
    explicit SessionStore(RemovalOperations operations = RemovalOperations::real())
        : deletions(std::move(operations))
    {}

    // First in, last out: no view model may hear of a removal's end after its own.
    DeletionRunner deletions;

    DashboardViewModel dashboard{deletions};
    FolderNavigatorViewModel diskUsage{deletions};
    NodeModulesViewModel nodeModules{deletions};
    LargeFilesViewModel largeFiles{deletions};
    BuildCachesViewModel buildCaches{deletions};
    DuplicatesViewModel duplicates{deletions};
    GitReposViewModel gitRepos{deletions};
};

} // namespace tallyroom
