#pragma once

#include "Model/EntryList.h"

#include <cstdint>
#include <string>

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

/// One line an entry: size, bar where the width allows, name; and a last line with the total.
[[nodiscard]] std::string table(const EntryList& entries, const TableStyle& style);

/// One object with name, path, url, sizeBytes, isDirectory and modifiedAt, on one line without its end.
/// `url` is percent-encoded and loses no byte; in the other texts bytes that are not UTF-8 become U+FFFD.
[[nodiscard]] std::string jsonLine(const Entry& entry);

/// The entries in a format, with its line ends.
[[nodiscard]] std::string text(const EntryList& entries, OutputFormat format, const TableStyle& style);

} // namespace EntryPrinter

} // namespace tallyroom
