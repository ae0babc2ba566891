#pragma once

#include "Model/FileUrl.h"

#include <unordered_set>

namespace tallyroom {

/// Locations in no order, each once.
using UrlSet = std::unordered_set<FileUrl>;

} // namespace tallyroom
