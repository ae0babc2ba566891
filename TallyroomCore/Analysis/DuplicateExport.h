#pragma once

#include "Analysis/DuplicateGroup.h"

#include <string>

namespace tallyroom {

/// Groups of identical files as comma-separated text: the columns of every list, and the group before them.
/// Any thread.
namespace DuplicateExport {

/// The first line of an export.
[[nodiscard]] std::string header();

/// A line for each file of the group, each after a line feed.
[[nodiscard]] std::string lines(const DuplicateGroup& group);

} // namespace DuplicateExport

} // namespace tallyroom
