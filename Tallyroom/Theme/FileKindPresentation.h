#pragma once

#include "Model/FileKind.h"

#include <QString>

#include <string>

namespace tallyroom {

/// The label of a kind as a text to draw. Its colour is `Theme::tint`.
[[nodiscard]] QString displayName(FileKind kind);

// An entry as it is drawn. Links and special files have a symbol and a name of their own, and the colour of
// `FileKind::other`, whatever their extension says.
[[nodiscard]] FileKind drawnKind(const Entry& entry);
[[nodiscard]] QString kindName(const Entry& entry);
[[nodiscard]] std::string symbolName(const Entry& entry);

} // namespace tallyroom
