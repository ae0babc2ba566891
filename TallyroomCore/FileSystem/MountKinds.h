#pragma once

#include "FileSystem/MountTable.h"

namespace tallyroom {

/// Its data are on another machine, or on the host of a virtual one. By the type alone.
[[nodiscard]] bool isNetworkShare(const Mount& mount);

/// Another machine or a program answers for it: a call may never return.
[[nodiscard]] bool isServed(const Mount& mount);

} // namespace tallyroom
