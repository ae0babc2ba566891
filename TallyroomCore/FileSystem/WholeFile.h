#pragma once

#include "FileSystem/SystemError.h"
#include "Model/FileUrl.h"

#include <string>
#include <string_view>

namespace tallyroom {

/// Files that are written whole or not at all.
namespace WholeFile {

/// Writes `content` into a new file beside `url` and renames it to `url`. What stood there is replaced, a
/// link itself and not what it leads to; a regular file that may not be written stays, and one that may keeps
/// its permissions.
[[nodiscard]] SystemResult<void> write(const FileUrl& url, std::string_view content);

/// The same for `name` in an open folder.
[[nodiscard]] SystemResult<void> write(int folder, const std::string& name, std::string_view content);

} // namespace WholeFile

} // namespace tallyroom
