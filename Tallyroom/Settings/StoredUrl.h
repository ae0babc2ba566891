#pragma once

#include "Model/FileUrl.h"

#include <QString>

namespace tallyroom {

/// Locations as settings keep them. Any thread.
namespace StoredUrl {

/// The path as it is; one that is not UTF-8 as a file: URL, the only other thing that a text can stand for.
[[nodiscard]] QString text(const FileUrl& url);

/// What `text` has written.
[[nodiscard]] FileUrl read(const QString& text);

} // namespace StoredUrl

} // namespace tallyroom
