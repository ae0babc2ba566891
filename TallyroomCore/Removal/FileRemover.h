#pragma once

#include "FileSystem/SystemError.h"
#include "Model/Entry.h"
#include "Model/FileUrl.h"
#include "Removal/Screening.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <stop_token>
#include <string>
#include <vector>

namespace tallyroom {

/// The only place that deletes or moves a person's files. Links are removed, never followed, at every level;
/// "/", the home folder, mount points and whatever holds one of these are refused. Operations are
/// synchronous, keep no state and may be called from any thread; the scanner's caches are the caller's
/// business.
namespace FileRemover {

/// An item that lies in the trash.
struct TrashedItem {
    FileUrl original; ///< where it was
    FileUrl inTrash;  ///< where it is now, often under another name
    /// Which item it is, and which folder it came from. Not a part of equality.
    std::optional<ItemIdentity> item{};
    std::optional<ItemIdentity> folder{};

    friend bool operator==(const TrashedItem& left, const TrashedItem& right)
    {
        return left.original == right.original && left.inTrash == right.inTrash;
    }
};

struct RemovalFailure {
    FileUrl url;
    std::string message; ///< why, in words for people
    /// Bytes on disk that were freed all the same: a folder may have been emptied in part.
    std::int64_t freedBytes = 0;

    friend bool operator==(const RemovalFailure&, const RemovalFailure&) = default;
};

/// The result of a batch. Every location given is in `removed` or in `failures`, in the order given.
struct RemovalResult {
    std::vector<FileUrl> removed;
    std::vector<RemovalFailure> failures;
    std::vector<TrashedItem> trashed;

    [[nodiscard]] bool allSucceeded() const noexcept { return failures.empty(); }

    [[nodiscard]] bool canUndo() const noexcept { return !trashed.empty(); }

    friend bool operator==(const RemovalResult&, const RemovalResult&) = default;
};

/// Called after each item of a batch with the number done and the number given, on the batch's thread.
using BatchProgress = std::function<void(std::size_t completed, std::size_t total)>;

/// Why an item could not be removed or put back.
struct RemovalError {
    std::string message;
};

template <class Value>
using RemovalExpected = std::expected<Value, RemovalError>;

/// Moves one item to the trash of its volume.
[[nodiscard]] RemovalExpected<void> moveToTrash(const FileUrl& url);

/// Removes one item for good, a folder with all that is in it.
[[nodiscard]] RemovalExpected<void> deletePermanently(const FileUrl& url);

/// The same as `remove` with `permanently` false.
[[nodiscard]] RemovalResult moveToTrash(std::span<const FileUrl> urls);

/// Removes every item once, in the order given; a failure is recorded and the batch goes on.
[[nodiscard]] RemovalResult remove(std::span<const FileUrl> urls, bool permanently,
                                   const BatchProgress& progress = {});

/// How a batch of entries goes.
struct BatchOptions {
    BatchProgress progress;
    /// Asked before each item, and all the time while one is removed for good: what is not begun then is in
    /// neither list of the result, and a folder that is gone in part has failed.
    std::stop_token stop;
    /// Looks at each item right before it goes; none lets all of them go.
    Screening screening;
};

/// Removes every entry once, in the order given: the very item that the scan saw (Entry::identity), found
/// below the folder that the scan started from without following a link, or nothing.
[[nodiscard]] RemovalResult remove(std::span<const Entry> entries, bool permanently,
                                   const BatchOptions& options);

/// Moves items from the trash back to where they were: the very items, into the very folders. Never
/// overwrites: an occupied place is a failure, and the item stays in the trash. An item that since
/// took that trash name also stays.
/// Of `options`, the progress and the stop count.
[[nodiscard]] RemovalResult restore(std::span<const TrashedItem> items, const BatchOptions& options = {});

/// Removes items of a trash for good, with their records: the very items (TrashedItem::item), or nothing.
/// `removed` and `failures` name where they lay in the trash. Of `options`, the progress and the stop count.
[[nodiscard]] RemovalResult deleteTrashed(std::span<const TrashedItem> items,
                                          const BatchOptions& options = {});

} // namespace FileRemover

} // namespace tallyroom
