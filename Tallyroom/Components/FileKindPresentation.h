#pragma once

#include "Model/FileKind.h"

#include <QString>

namespace tallyroom {

/// The French label of a kind, as lists and legends show it. Its colour is `Theme::tint`.
[[nodiscard]] QString displayName(FileKind kind);

} // namespace tallyroom
