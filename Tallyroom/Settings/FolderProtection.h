#pragma once

#include "Model/FileUrl.h"

#include <vector>

namespace tallyroom {

/// The folders that Tallyroom must not remove anything from, kept across restarts. Main thread.
namespace FolderProtection {

[[nodiscard]] std::vector<FileUrl> folders();

/// Stores other folders, and protects them from now on.
void setFolders(const std::vector<FileUrl>& folders);

/// Protects what is stored; once, when the program begins.
void apply();

} // namespace FolderProtection

} // namespace tallyroom
