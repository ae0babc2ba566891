#pragma once

#include "Model/FileUrl.h"

#include <vector>

namespace tallyroom {

/// The home folder as it is named, links not resolved. Any thread.
namespace HomeFolder {

/// $HOME where that is an absolute path, else the one of the user's record; empty for a user without a home.
[[nodiscard]] FileUrl current();

/// Both of them.
[[nodiscard]] std::vector<FileUrl> all();

} // namespace HomeFolder

} // namespace tallyroom
