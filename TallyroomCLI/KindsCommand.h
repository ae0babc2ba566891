#pragma once

#include "ScanCommand.h"

namespace tallyroom {

/// `kinds`: the kinds of files that fill a folder, largest first.
[[nodiscard]] ExitCode runKinds(const ScanOptions& options, const Interruption& interruption);

} // namespace tallyroom
