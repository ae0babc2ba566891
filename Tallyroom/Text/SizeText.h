#pragma once

#include <QString>

#include <cstdint>

namespace tallyroom {

/// A size as `SizeFormatter` writes it, as a text to draw. Any thread.
[[nodiscard]] QString sizeText(std::int64_t bytes);

} // namespace tallyroom
