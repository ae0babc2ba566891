#pragma once

#include "FileSystem/SystemError.h"

#include <string>

namespace tallyroom {

/// All bytes of an open file from where it stands, for the small files of the system. The owner of the
/// descriptor stays the caller.
[[nodiscard]] SystemResult<std::string> contentOf(int file);

} // namespace tallyroom
