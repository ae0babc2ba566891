#pragma once

#include "Support/TemporaryTree.h"

#include <string>
#include <vector>

namespace tallyroom {

/// The rows of a table of tests/cases, each a list of words; throws std::runtime_error when there is no such
/// table.
[[nodiscard]] std::vector<std::vector<std::string>> cases(const std::string& table);

/// Changes a tree as the rows tell, one after another: "file | path | size", "text | path | content" and
/// perhaps its date, "folder | path" and perhaps its mode, "link | path | target" ("%" is the tree),
/// "hard-link | path | existing", "fifo | path", "mode | path | octal", "remove | path", "rename | from |
/// to", "exchange | one | other", "copy | from | to", "write | path | bytes | offset"; the path keeps its
/// date at "write-unseen | path | bytes | offset" and "replace-unseen | path | by".
void addCases(TemporaryTree& tree, const std::string& table);

/// The same as words of a cell: "rename a b, link a %/b".
void change(TemporaryTree& tree, const std::string& changes);

} // namespace tallyroom
