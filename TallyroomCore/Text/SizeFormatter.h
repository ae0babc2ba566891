#pragma once

#include <cstdint>
#include <string>

namespace tallyroom {

/// The one way to print a byte count: base 1000, "o" to "Po", one decimal. Any thread.
namespace SizeFormatter {

/// "999 o", "1,1 Ko", "12,4 Go". The unit is chosen before rounding and not again after it: 999 950 bytes
/// are "1000 Ko".
[[nodiscard]] std::string string(std::int64_t bytes);

/// The decimal separator of the user's locale; "," when it is C, POSIX, unset or unknown. Read once.
[[nodiscard]] const std::string& decimalSeparator();

} // namespace SizeFormatter

} // namespace tallyroom
