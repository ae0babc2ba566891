#pragma once

#include "Kinds/FolderAnalyzer.h"

namespace tallyroom {

/// A kind of files and its part of the folder. A plain value.
struct KindShare {
    CategorySize category;
    double share = 0; ///< 0 to 1

    friend bool operator==(const KindShare&, const KindShare&) = default;
};

} // namespace tallyroom
