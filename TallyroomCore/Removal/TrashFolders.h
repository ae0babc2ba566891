#pragma once

#include "Model/FileUrl.h"

namespace tallyroom {

/// Where trashed items lie, by the freedesktop.org Trash specification 1.0. Any thread.
namespace TrashFolders {

/// The person's own, "$XDG_DATA_HOME/Trash", by the XDG Base Directory specification: a relative value counts
/// as unset. Empty for a user without a home.
[[nodiscard]] FileUrl home();

/// Whether the item is in a trash: the person's own, or one of any volume and user. Judged by the path alone.
[[nodiscard]] bool contain(const FileUrl& url);

} // namespace TrashFolders

} // namespace tallyroom
