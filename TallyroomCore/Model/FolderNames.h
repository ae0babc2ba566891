#pragma once

#include <functional>
#include <set>
#include <string>

namespace tallyroom {

/// Names of folders to search for, compared letter by letter with the whole name.
using FolderNames = std::set<std::string, std::less<>>;

} // namespace tallyroom
