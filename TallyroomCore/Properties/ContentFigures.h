#pragma once

#include "Concurrency/ProgressStream.h"
#include "Model/Entry.h"

#include <cstdint>
#include <vector>

namespace tallyroom {

/// How much some items are, with all that lies below them. A plain value.
struct ContentFigures {
    std::int64_t files = 0;   ///< items that are no folders, chosen ones too
    std::int64_t folders = 0; ///< below the chosen one; where several are chosen, with these
    std::int64_t allocatedBytes = 0;
    std::int64_t logicalBytes = 0;
    /// Names of files that have others, there or elsewhere.
    std::int64_t linkedNames = 0;
    std::int64_t unread = 0; ///< folders that could not be listed and items that could not be examined
    bool hasUnreadItems = false;

    friend bool operator==(const ContentFigures&, const ContentFigures&) = default;
};

/// Counts apart what `entries` hold: a record now and then, the last one has all. What lies in another one
/// of them counts once; links are not followed, mount points are crossed, each hard link counts. Any thread.
[[nodiscard]] ProgressStream<ContentFigures> countContent(std::vector<Entry> entries);

} // namespace tallyroom
