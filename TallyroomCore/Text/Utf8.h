#pragma once

#include <cstddef>
#include <string_view>

namespace tallyroom::Utf8 {

/// How many bytes the well-formed character at the start of `text` has (Unicode 15, table 3-7); 0 when the
/// text is empty or begins with no such character.
[[nodiscard]] std::size_t characterLength(std::string_view text) noexcept;

/// True when all of `text` is ASCII.
[[nodiscard]] bool isAscii(std::string_view text) noexcept;

/// True when all of `text` is well-formed.
[[nodiscard]] bool isValid(std::string_view text) noexcept;

/// The code point of a well-formed character.
[[nodiscard]] char32_t codePoint(std::string_view character) noexcept;

/// True for invisible characters, line breaks and bidirectional controls, with which a name can pose as
/// another. Not for the zero-width joiner, which is part of emoji.
[[nodiscard]] bool isInvisibleOrBidiControl(char32_t code) noexcept;

} // namespace tallyroom::Utf8
