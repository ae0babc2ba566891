#pragma once

#include "Model/Entry.h"

#include <ranges>
#include <string>
#include <string_view>

namespace tallyroom {

/// Lists as comma-separated text, names as they are on disk, byte by byte. Any thread.
namespace CSVExport {

/// The first line of an export.
inline constexpr std::string_view header = "Nom,Chemin,Taille (octets),Taille,Type,Modifié";

/// A field in double quotes, its own doubled, when it holds a comma, a double quote or a line feed; else as
/// it is. A carriage return and line feed together are one character that is none of these.
[[nodiscard]] std::string escape(std::string_view field);

/// One entry's six fields, escaped and joined by commas, without a line end.
[[nodiscard]] std::string line(const Entry& entry);

/// A moment in UTC to the second, as 2024-05-01T12:34:56Z (ISO 8601, RFC 3339).
[[nodiscard]] std::string internetDateTime(Timestamp moment);

/// The header and a line an entry, in the order given, joined by line feeds; none after the last.
template <std::ranges::input_range Entries>
[[nodiscard]] std::string string(const Entries& entries)
{
    std::string text{header};
    for (const Entry& entry : entries) {
        text.append("\n").append(line(entry));
    }
    return text;
}

} // namespace CSVExport

} // namespace tallyroom
