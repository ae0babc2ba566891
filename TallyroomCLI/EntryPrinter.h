#pragma once

#include "Model/EntryList.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace tallyroom {

enum class OutputFormat : unsigned char { table, csv, json };

/// How a table shows its entries.
struct TableStyle {
    std::size_t columns = 80;
    bool colours = false;
    bool showsPaths = false; ///< paths in place of names
};

/// Lists as the command line prints them.
namespace EntryPrinter {

/// One object with name, path, url, sizeBytes, isDirectory and modifiedAt, on one line without its end.
/// `url` is percent-encoded and loses no byte; in the other texts bytes that are not UTF-8 become U+FFFD.
/// `group`, where there is one, comes first.
[[nodiscard]] std::string jsonLine(const Entry& entry, std::string_view group = {});

/// Writes the entries in a format, piece by piece. A table has one line an entry (size, bar where the width
/// allows, name) and a last one with the total. False when the output takes no more; errno says why.
[[nodiscard]] bool print(const EntryList& entries, OutputFormat format, const TableStyle& style);

} // namespace EntryPrinter

} // namespace tallyroom
