#pragma once

#include "Duplicates/DuplicateGroup.h"

#include <string>

namespace tallyroom {

/// Groups of identical files as comma-separated text: the columns of every list, and the group before them.
/// Any thread.
namespace DuplicateExport {

/// The first line of an export.
[[nodiscard]] std::string header();

/// The line of a file of the group, without its end.
[[nodiscard]] std::string line(const DuplicateGroup& group, const Entry& entry);

} // namespace DuplicateExport

} // namespace tallyroom
