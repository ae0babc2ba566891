#pragma once

#include "Duplicates/PathPool.h"
#include "FileSystem/FileIdentity.h"
#include "FileSystem/ScanRoots.h"
#include "FileSystem/UnreadPlaces.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace tallyroom {

/// A regular file, as the walk met it.
struct Candidate {
    std::uint32_t folder = PathPool::none;
    std::string name;
    std::int64_t size = 0;
    FileIdentity identity;
};

/// The first half of the search for duplicates: one walk that puts files into buckets by size.
namespace CandidateWalk {

/// How much the walk takes in before it ends early. A negative limit counts as 0.
struct Limits {
    std::int64_t trackedFiles = 0;
    std::int64_t visitedFiles = 0;
};

struct Findings {
    std::vector<Candidate> candidates; ///< only files whose size others have too
    PathPool folders;
    std::int64_t visited = 0;
    bool truncated = false;
    const ScanRoot* root = nullptr;    ///< of the walk; none without candidates
    std::optional<SystemError> unread; ///< why the folder itself cannot be read
    SharedUnreadPlaces unreadPlaces;   ///< null when all was read
};

/// How many files are visited between two calls of `onVisited`.
inline constexpr std::int64_t visitedInterval = 4096;

/// Walks everything below a folder but the contents of .git, .hg and .svn folders, on the process's pool.
/// `onVisited` is called on the caller's thread with 4096, 8192 and so on, in that order. The caller waits,
/// so it must not be one of the pool's workers. After a stop the findings are incomplete.
[[nodiscard]] Findings run(const FileUrl& url, std::int64_t minimumSize, const Limits& limits,
                           const std::stop_token& stop, const std::function<void(std::int64_t)>& onVisited);

} // namespace CandidateWalk

} // namespace tallyroom
