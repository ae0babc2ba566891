#pragma once

#include "Model/FileKind.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace tallyroom {

/// The building blocks of all tables. A character is one column.
namespace TableText {

inline constexpr std::size_t sizeWidth = 9; ///< "1000,9 Ko" and all that is shorter
inline constexpr std::size_t dayWidth = 10; ///< "2024-05-01"
inline constexpr std::size_t gap = 2;       ///< columns between columns
inline constexpr std::string_view reset = "\033[0m";

/// The colour of a kind, one of the sixteen that every terminal shades in its own way.
[[nodiscard]] std::string_view colourOf(FileKind kind);

/// How wide the bars of a table may be; 0 where there is no room for any.
[[nodiscard]] std::size_t barWidth(std::size_t columns);

/// A bar in eighths of a column, padded to `width` columns. `fraction` is within [0, 1].
[[nodiscard]] std::string bar(double fraction, std::size_t width);

/// The day of a moment in the user's time, as 2024-05-01.
[[nodiscard]] std::string day(Timestamp moment);

[[nodiscard]] std::size_t columnsOf(std::string_view text);
[[nodiscard]] std::string rightAligned(std::string_view text, std::size_t width);
[[nodiscard]] std::string leftAligned(std::string_view text, std::size_t width);

} // namespace TableText

} // namespace tallyroom
