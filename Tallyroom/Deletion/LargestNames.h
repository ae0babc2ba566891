#pragma once

#include "Model/Entry.h"

#include <QStringList>

#include <vector>

namespace tallyroom {

/// What goes in a deletion, for the question before it: five by name and size, those that need a look first,
/// then the largest; where two are alike with their folders, and how many others there are. Plain text.
[[nodiscard]] QStringList largestNames(const std::vector<Entry>& entries);

} // namespace tallyroom
