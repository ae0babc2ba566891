#pragma once

#include "Concurrency/ProgressStream.h"
#include "FileSystem/SystemError.h"
#include "Treemap/Outline.h"

#include <cstddef>
#include <optional>

namespace tallyroom {

/// Reads a folder as far down as its parts are large, from the totals that SizeCache keeps: only folders that
/// are large enough are listed. No error ends it: what cannot be read has no children. Links are not
/// followed.
namespace TreeOutline {

/// What becomes of a folder whose total is not known.
enum class Unknown : bool {
    measured, ///< it is measured first, and its total kept like those of a listing
    pending   ///< it is told with what is known below it: somebody else is measuring it
};

/// How far down to read.
struct Detail {
    /// The least part of the whole that an item must have to be told one by one, within [0, 1]. A folder of 0
    /// bytes is never listed.
    double leastShare = 1.0 / 20'000;
    /// At most so many nodes, the largest ones.
    std::size_t mostNodes = 20'000;
    Unknown unknown = Unknown::measured;
};

/// The outline so far; a folder that is not listed yet is one node.
struct Progress {
    SharedOutline outline;
    /// True for the last record only: nothing is pending and nothing that is large enough is unexpanded.
    bool isComplete = false;
    /// Why the folder itself cannot be read.
    std::optional<SystemError> unread = {};
};

using Stream = ProgressStream<Progress>;

/// The outline of a folder, with a record some eight times a second and one at the end. Sizes are those of
/// the store for folders that are not listed, and the sums of what was found for the others. A cancelled
/// reading ends without a complete record, and so does one that leaves folders pending: ask again when more
/// is known. Any thread but a pool worker's; touches no file system itself.
[[nodiscard]] Stream read(const FileUrl& folder, const Detail& detail);

} // namespace TreeOutline

} // namespace tallyroom
