#pragma once

#include "Duplicates/DuplicateGroup.h"
#include "FileSystem/TreeWalk.h"

#include <cstdint>
#include <limits>
#include <string>
#include <unordered_map>
#include <vector>

namespace tallyroom {

/// The folders that hold candidates, as a tree of names: a deep tree costs no more than its names.
class PathPool {
public:
    static constexpr std::uint32_t none = std::numeric_limits<std::uint32_t>::max();

    /// Adds a folder below one that is known; `parent` is `none` for the root, whose name is its path.
    std::uint32_t add(std::uint32_t parent, std::string name);

    /// The path of an item in a folder.
    [[nodiscard]] std::string path(std::uint32_t folder, const std::string& name) const;

private:
    struct Folder {
        std::uint32_t parent = none;
        std::string name;
    };

    std::vector<Folder> m_folders;
};

/// A regular file, as the walk met it.
struct Candidate {
    std::uint32_t folder = PathPool::none;
    std::string name;
    std::int64_t size = 0;
    FileIdentity identity;
};

/// A folder of the walk that knows its place among the names, once it holds a candidate.
struct SearchedFolder : TreeWalk::Folder {
    std::uint32_t id = PathPool::none;
};

/// Candidates by size, so that only files of a size seen twice are ever read. One thread at a time.
class SizeBuckets {
public:
    /// Adds a file that lies in `folder`.
    void add(SearchedFolder& folder, Candidate candidate);

    [[nodiscard]] std::int64_t size() const noexcept { return static_cast<std::int64_t>(m_tracked.size()); }

    /// The files whose size others have too; empties the buckets.
    [[nodiscard]] std::vector<Candidate> takeRepeated();

    [[nodiscard]] const PathPool& folders() const noexcept { return m_folders; }

private:
    std::uint32_t idOf(SearchedFolder& folder);

    PathPool m_folders;
    std::vector<Candidate> m_tracked;
    // The common case, a size of its own, costs one slot here; the first of several moves on.
    std::unordered_map<std::int64_t, std::uint32_t> m_firstSeen;
    std::unordered_map<std::int64_t, std::vector<std::uint32_t>> m_repeated;
};

} // namespace tallyroom
