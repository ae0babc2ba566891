#include "Text/Utf8.h"

#include <algorithm>

namespace tallyroom::Utf8 {

namespace {

bool isWithin(unsigned char byte, unsigned char low, unsigned char high)
{
    return byte >= low && byte <= high;
}

} // namespace

std::size_t characterLength(std::string_view text) noexcept
{
    if (text.empty()) {
        return 0;
    }
    const auto byte = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char first = byte(0);
    if (first < 0x80) {
        return 1;
    }
    std::size_t length = 0;
    unsigned char low = 0x80;
    unsigned char high = 0xBF;
    if (isWithin(first, 0xC2, 0xDF)) {
        length = 2;
    } else if (isWithin(first, 0xE0, 0xEF)) {
        length = 3;
        low = first == 0xE0 ? 0xA0 : low;   // no overlong forms
        high = first == 0xED ? 0x9F : high; // no surrogates
    } else if (isWithin(first, 0xF0, 0xF4)) {
        length = 4;
        low = first == 0xF0 ? 0x90 : low;
        high = first == 0xF4 ? 0x8F : high; // nothing beyond U+10FFFF
    }
    if (length == 0 || text.size() < length || !isWithin(byte(1), low, high)) {
        return 0;
    }
    for (std::size_t i = 2; i < length; ++i) {
        if (!isWithin(byte(i), 0x80, 0xBF)) {
            return 0;
        }
    }
    return length;
}

bool isAscii(std::string_view text) noexcept
{
    return std::ranges::all_of(text, [](char byte) { return static_cast<unsigned char>(byte) < 0x80; });
}

bool isValid(std::string_view text) noexcept
{
    while (!text.empty()) {
        const std::size_t length = characterLength(text);
        if (length == 0) {
            return false;
        }
        text.remove_prefix(length);
    }
    return true;
}

char32_t codePoint(std::string_view character) noexcept
{
    const auto first = static_cast<unsigned char>(character.front());
    if (character.size() == 1) {
        return first;
    }
    char32_t code = first & (0x7FU >> character.size());
    for (const char byte : character.substr(1)) {
        code = (code << 6) | (static_cast<unsigned char>(byte) & 0x3FU);
    }
    return code;
}

bool isInvisibleOrBidiControl(char32_t code) noexcept
{
    return (code >= 0x80 && code < 0xA0) || code == 0x061C || code == 0xFEFF ||
           (code >= 0x200B && code <= 0x200F && code != 0x200D) || (code >= 0x2028 && code <= 0x202E) ||
           (code >= 0x2060 && code <= 0x206F);
}

} // namespace tallyroom::Utf8
