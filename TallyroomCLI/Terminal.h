#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tallyroom {

/// The terminal that the command line talks to.
namespace Terminal {

/// Standard output is a terminal that shows colours and the person wants them (no-color.org).
[[nodiscard]] bool showsColours();

[[nodiscard]] bool outputIsTerminal();
[[nodiscard]] bool errorIsTerminal();

/// Columns of the terminal, of COLUMNS, or 80.
[[nodiscard]] std::size_t columns();

/// A name as people can read it: control characters, bidirectional controls and bytes that are not UTF-8
/// become \n or \xff, so that no name can move the cursor, break a line or pose as another.
[[nodiscard]] std::string printable(std::string_view name);

/// The same for an object of JSON: as \u009b, which a program reads as the character it stands for.
[[nodiscard]] std::string printableJson(std::string_view object);

/// Writes a message on standard error after the program's name, with names made printable.
void complain(std::string_view text);

} // namespace Terminal

} // namespace tallyroom
