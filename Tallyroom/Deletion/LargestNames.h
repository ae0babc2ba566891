#pragma once

#include "Model/Entry.h"

#include <QStringList>

#include <vector>

namespace tallyroom {

/// What goes in a deletion, for the question before it: the five largest by name and size, where two are
/// alike with their folders, and how many others there are. Plain text.
[[nodiscard]] QStringList largestNames(const std::vector<Entry>& entries);

} // namespace tallyroom
