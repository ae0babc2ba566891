#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tallyroom {

/// Bytes as two digits each.
namespace Hexadecimal {

inline constexpr std::string_view lowerDigits = "0123456789abcdef";
inline constexpr std::string_view upperDigits = "0123456789ABCDEF";

inline void append(std::string& text, std::uint8_t byte, std::string_view digits)
{
    text.push_back(digits[byte >> 4U]);
    text.push_back(digits[byte & 0x0FU]);
}

/// The byte that two digits in any letter case stand for; nothing for any other text.
[[nodiscard]] constexpr std::optional<char> byteOf(std::string_view text)
{
    std::size_t byte = 0;
    for (const char letter : text) {
        const bool isDigit = letter >= '0' && letter <= '9';
        const std::size_t digit = lowerDigits.find(isDigit ? letter : static_cast<char>(letter | 0x20));
        if (digit == std::string_view::npos || (!isDigit && digit < 10)) {
            return std::nullopt;
        }
        byte = byte * 16 + digit;
    }
    return text.size() == 2 ? std::optional{static_cast<char>(byte)} : std::nullopt;
}

} // namespace Hexadecimal

} // namespace tallyroom
