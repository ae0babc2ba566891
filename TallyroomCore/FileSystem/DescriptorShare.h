#pragma once

#include <cstddef>

namespace tallyroom {

/// How many descriptors one part of the program may keep open for speed alone: an eighth of what the process
/// may have, within reason.
[[nodiscard]] std::size_t descriptorShare();

} // namespace tallyroom
