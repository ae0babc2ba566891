#pragma once

#include "ScanCommand.h"

#include <cstdint>

namespace tallyroom {

struct DuplicatesOptions {
    ScanOptions scan;
    std::int64_t minimumSize = 1024L * 1024;
};

/// `duplicates`: the sets of identical files in a folder, largest waste first.
[[nodiscard]] ExitCode runDuplicates(const DuplicatesOptions& options, const Interruption& interruption);

} // namespace tallyroom
