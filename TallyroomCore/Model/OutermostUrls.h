#pragma once

#include "Model/UrlSet.h"

namespace tallyroom {

/// True when `url` lies below one of `folders`. O(depth).
[[nodiscard]] inline bool isBelowAny(const FileUrl& url, const UrlSet& folders)
{
    for (FileUrl step = url.parent();; step = step.parent()) {
        if (folders.contains(step)) {
            return true;
        }
        if (step == step.parent()) {
            return false;
        }
    }
}

} // namespace tallyroom
