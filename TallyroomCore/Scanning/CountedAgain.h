#pragma once

#include "Model/FileUrl.h"

#include <cstdint>
#include <map>
#include <memory>

namespace tallyroom {

/// The bytes that a listing counts more than once, because files have several names in it.
struct CountedAgain {
    std::int64_t bytes = 0;
    /// Each child's part of them, as far as the walk went into it: what it counts more than once by itself,
    /// and what a child that comes before it in its folder counts too.
    std::map<FileUrl, std::int64_t> children{};
};

/// Null when nothing is counted again.
using SharedCountedAgain = std::shared_ptr<const CountedAgain>;

} // namespace tallyroom
