#pragma once

#include "ScanCommand.h"

namespace tallyroom {

/// `volumes`: the mounted volumes and how full they are.
[[nodiscard]] ExitCode runVolumes(OutputFormat format, const Interruption& interruption);

} // namespace tallyroom
