#pragma once

#include "FileSystem/SystemError.h"
#include "Model/FileUrl.h"

#include <string>

namespace tallyroom {

/// Where an open folder lies, as the kernel knows it: without links. Asks no disk; fails for a path beyond
/// PATH_MAX.
[[nodiscard]] SystemResult<std::string> realPathOf(int folder);

/// Where a folder lies, without links; as it is given where it cannot be opened. Asks the disk.
[[nodiscard]] FileUrl realPlaceOf(const FileUrl& folder);

} // namespace tallyroom
