#pragma once

#include "Model/FileKind.h"

#include <QString>

namespace tallyroom {

/// The label of a kind as a text to draw. Its colour is `Theme::tint`.
[[nodiscard]] QString displayName(FileKind kind);

} // namespace tallyroom
