#pragma once

#include "FileSystem/SystemError.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace tallyroom {

/// All bytes of an open file from where it stands, for the small files of the system. The owner of the
/// descriptor stays the caller.
[[nodiscard]] SystemResult<std::string> contentOf(int file);

/// Fills `buffer` from an offset of an open file. False at an error, or when the file ends before.
[[nodiscard]] bool readFully(int file, std::span<std::byte> buffer, std::int64_t offset);

/// Writes all bytes where an open file stands. False at an error, with its errno.
[[nodiscard]] bool writeFully(int file, std::string_view bytes);

} // namespace tallyroom
