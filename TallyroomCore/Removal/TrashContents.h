#pragma once

#include "Concurrency/ProgressStream.h"
#include "Model/Entry.h"
#include "Removal/FileRemover.h"

#include <cstdint>
#include <optional>
#include <stop_token>
#include <vector>

namespace tallyroom {

/// What lies in the person's trash on one volume: in the home trash when it lies there, in
/// "$topdir/.Trash/$uid" and in "$topdir/.Trash-$uid" (freedesktop.org Trash specification 1.0), whichever
/// program put it there. A trash folder that is a link, or that belongs to somebody else, is left alone.
struct TrashContents {
    struct Item {
        Entry entry;      ///< as it lies in the trash
        FileUrl original; ///< where it was, by its record; empty when no record tells
    };

    std::vector<Item> items;        ///< larger first, equal sizes by path
    std::vector<Entry> leftRecords; ///< records whose items are gone
    std::int64_t totalBytes = 0;    ///< on disk
    /// How many folders could not be listed, and items not examined: then the total is a lower bound.
    std::uint32_t unread = 0;

    /// Looks at the volume mounted at `mountPoint`; nothing when it was stopped. Waits for the disks of the
    /// volume and of the home folder, which may never answer.
    [[nodiscard]] static std::optional<TrashContents> read(const FileUrl& mountPoint,
                                                           const std::stop_token& stop = {});

    /// The same as a stream of one record, on a thread that nobody waits for. Ends without a record when the
    /// volume has not answered an earlier question.
    [[nodiscard]] static ProgressStream<TrashContents> stream(const FileUrl& mountPoint);

    /// Removes these very items for good, with their records, and the records without items. What has come
    /// into the trash since stays. The result is about the items.
    [[nodiscard]] FileRemover::RemovalResult empty(const FileRemover::BatchOptions& options) const;

    /// The items as they lie in the trash.
    [[nodiscard]] std::vector<Entry> entries() const;
};

} // namespace tallyroom
