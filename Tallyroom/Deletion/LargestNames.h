#pragma once

#include "Model/Entry.h"

#include <QStringList>

#include <vector>

namespace tallyroom {

/// What goes in a deletion, for the question before it: five by name, folder and size, those that need a look
/// first, then the largest, and how many others there are. A folder that all share is said once. Plain text.
[[nodiscard]] QStringList largestNames(const std::vector<Entry>& entries);

} // namespace tallyroom
