#pragma once

#include "Model/FileUrl.h"

#include <cstdint>
#include <optional>

namespace tallyroom {

/// What is used on the volume whose top `folder` is, and on those mounted below it: what a scan of the folder
/// is going to find, but for what only the volumes know of. Bytes; nothing where `folder` is no such top. May
/// wait for ever.
[[nodiscard]] std::optional<std::int64_t> usedBytesBelow(const FileUrl& folder);

} // namespace tallyroom
