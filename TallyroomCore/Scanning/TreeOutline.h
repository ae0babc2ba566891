#pragma once

#include "Concurrency/ProgressStream.h"
#include "Treemap/Outline.h"

#include <cstddef>

namespace tallyroom {

/// Reads a folder as far down as its parts are large, from the totals that SizeCache keeps: only folders that
/// are large enough are listed. No error ends it: what cannot be read has no children. Links are not
/// followed.
namespace TreeOutline {

/// How far down to read.
struct Detail {
    /// The least part of the whole that an item must have to be told one by one, within [0, 1].
    double leastShare = 1.0 / 20'000;
    /// At most so many nodes.
    std::size_t mostNodes = 20'000;
};

/// The outline so far, one level deeper or so each time.
struct Progress {
    SharedOutline outline;
    /// True for the last record only: nothing is pending and nothing that is large enough is unexpanded.
    bool isComplete = false;
};

using Stream = ProgressStream<Progress>;

/// The outline of a folder, larger parts expanded first. Totals that are not known yet are measured, and kept
/// like those of a listing. A cancelled reading ends without a complete record. Any thread but a pool
/// worker's.
[[nodiscard]] Stream read(const FileUrl& folder, const Detail& detail);

} // namespace TreeOutline

} // namespace tallyroom
