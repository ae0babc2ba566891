#pragma once

#include "FileSystem/SystemError.h"

#include <string>

namespace tallyroom {

/// Where an open folder lies, as the kernel knows it: without links. Asks no disk; fails for a path beyond
/// PATH_MAX.
[[nodiscard]] SystemResult<std::string> realPathOf(int folder);

} // namespace tallyroom
