#pragma once

#include "Concurrency/ProgressStream.h"
#include "Duplicates/DuplicateGroup.h"
#include "FileSystem/UnreadPlaces.h"

#include <cstdint>
#include <functional>
#include <future>
#include <optional>
#include <stop_token>
#include <tuple>
#include <vector>

namespace tallyroom {

/// Finds files with identical content. Files are compared by SHA-256 digests of their first 64 KiB, their
/// last 64 KiB and all of their bytes, and read only when another file has exactly the same size. Hidden
/// files count, empty files and links do not, and the contents of .git, .hg and .svn folders are left out.
/// Nothing here reports an error: what cannot be read, or changes meanwhile, is left out; folders that cannot
/// be listed are told at the end. Without state.
namespace DuplicateFinder {

/// The most files that are kept as candidates.
inline constexpr std::int64_t defaultMaxTrackedFiles = 60'000;
/// The most files that are visited, folders and links not counted.
inline constexpr std::int64_t defaultMaxVisited = 2'000'000;

enum class Phase : unsigned char { scanning, hashing, done };

/// One record of a search.
struct DuplicateProgress {
    /// Files visited so far, folders and links not counted.
    std::int64_t scanned = 0;
    /// The sets of identical files, largest waste first, equal waste by the first path; empty until the end.
    std::vector<DuplicateGroup> groups;
    Phase phase = Phase::scanning;
    /// A limit ended the walk early; known at the end only.
    bool truncated = false;
    /// While hashing: bytes that are digested or turned out not to need it. Never falls.
    std::int64_t hashedBytes = 0;
    /// While hashing: the final value of `hashedBytes`.
    std::int64_t bytesToHash = 0;
    /// Why the searched folder itself cannot be read; known at the end only. Not a part of equality.
    std::optional<SystemError> unread = {};
    /// What could not be read; null when all was, and but for the last record. Not a part of equality.
    SharedUnreadPlaces unreadPlaces = {};

    friend bool operator==(const DuplicateProgress& left, const DuplicateProgress& right)
    {
        const auto fields = [](const DuplicateProgress& record) {
            return std::tie(record.scanned, record.groups, record.phase, record.truncated, record.hashedBytes,
                            record.bytesToHash);
        };
        return fields(left) == fields(right);
    }
};

/// How much a search takes in before its walk ends early. A negative limit counts as 0.
struct Limits {
    std::int64_t trackedFiles = defaultMaxTrackedFiles;
    std::int64_t visitedFiles = defaultMaxVisited;
};

struct Result {
    std::vector<DuplicateGroup> groups;
    bool truncated = false;
    std::optional<SystemError> unread = {}; ///< why the folder itself cannot be read
    SharedUnreadPlaces unreadPlaces = {};   ///< null when all was read
};

/// The files of at least `minimumSize` bytes under a folder, searched in the background. A record every 4096
/// files, about every 100 ms while hashing, and a last one with the groups and the phase `done`; a stream
/// that is cancelled ends without it. Any thread.
[[nodiscard]] ProgressStream<DuplicateProgress> stream(const FileUrl& url, std::int64_t minimumSize);

/// The groups alone. Any thread.
[[nodiscard]] std::future<std::vector<DuplicateGroup>> find(const FileUrl& url, std::int64_t minimumSize);

/// The search itself, on the caller's thread and the process's WorkerPool, whose workers must not call it. A
/// stop takes effect within a folder or a chunk of a file, and gives an empty result. `onProgress` is called
/// on the caller's thread with records without groups: 4096 files after 4096 files, then at the beginning of
/// each of the three stages of hashing and about every 100 ms in between. Under 300 bytes a candidate.
[[nodiscard]] Result computeGroups(const FileUrl& url, std::int64_t minimumSize, const Limits& limits,
                                   const std::stop_token& stop,
                                   const std::function<void(DuplicateProgress)>& onProgress);

} // namespace DuplicateFinder

} // namespace tallyroom
