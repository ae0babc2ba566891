#pragma once

#include "JsonLine.h"
#include "Model/EntryList.h"
#include "OutputWriter.h"

#include <cstddef>
#include <functional>
#include <string_view>

namespace tallyroom {

/// How a table shows its entries.
struct TableStyle {
    std::size_t columns = 80;
    bool colours = false;
    bool showsPaths = false; ///< paths in place of names
    bool showsDates = false; ///< the day of the last change before the name
};

/// Lists as the command line prints them.
namespace EntryPrinter {

using AddMembers = std::function<void(const Entry& entry, JsonLine& line)>;

/// One object with name, path, url, sizeBytes, isDirectory and modifiedAt, and unreadable where something at
/// or below the entry was not read, excluded where the user wants that. `url` is percent-encoded and loses no
/// byte. `group`, where there is one, comes first.
[[nodiscard]] JsonLine jsonLine(const Entry& entry, std::string_view group = {});

/// A line an entry (size, bar where the width allows, name), and a last one with the total.
void addTable(const EntryList& entries, const TableStyle& style, OutputWriter& writer);

void addCsv(const EntryList& entries, OutputWriter& writer);

/// `addMembers` adds what a command knows besides to each object; may be none.
void addJson(const EntryList& entries, OutputWriter& writer, const AddMembers& addMembers = {});

} // namespace EntryPrinter

} // namespace tallyroom
