#pragma once

#include "FileSystem/DiskSense.h"

#include <stop_token>
#include <string>

namespace tallyroom {

/// Looks once at everything below the item `name` of the open folder `parent`, where a disk that rotates
/// holds it: a walk reads such a disk in the order of its inodes, which a removal, folder by folder, cannot.
/// Elsewhere it does nothing. What is mounted below is left out. Waits for the walk: not for a worker of the
/// pool.
void lookAhead(int parent, const std::string& name, const std::stop_token& stop, const DiskSense& sense);

} // namespace tallyroom
