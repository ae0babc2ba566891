#pragma once

#include "Support/TemporaryTree.h"

#include <string>
#include <vector>

namespace tallyroom {

/// The rows of a table of tests/cases, each a list of words; throws std::runtime_error when there is no such
/// table.
[[nodiscard]] std::vector<std::vector<std::string>> cases(const std::string& table);

/// Adds what the rows tell: "file | path | size", "text | path | content", "link | path | target", "folder |
/// path" or "fifo | path".
void addCases(TemporaryTree& tree, const std::string& table);

} // namespace tallyroom
