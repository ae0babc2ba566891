#pragma once

#include "Model/FileUrl.h"

#include <memory>
#include <optional>
#include <string>
#include <unordered_map>

namespace tallyroom {

/// Which folders hold files that Git tracks: those are somebody's work, whatever the folder is called. Only
/// reads, and keeps what it has read: quickest when asked in the order of the paths. One thread at a time.
class TrackedFiles {
public:
    TrackedFiles();
    TrackedFiles(const TrackedFiles&) = delete;
    TrackedFiles& operator=(const TrackedFiles&) = delete;
    ~TrackedFiles();

    /// Whether the index of the repository around `folder` names something at it or below it, or `folder` has
    /// a repository of its own; nothing when that cannot be read. `folder` is named without links. Waits for
    /// the disk.
    [[nodiscard]] std::optional<bool> isAnyIn(const FileUrl& folder);

private:
    class Index;

    [[nodiscard]] const std::string& workTreeOf(const FileUrl& folder);

    std::unordered_map<std::string, std::string> m_workTrees; // by folder: what holds it; empty without one
    std::string m_indexed;                                    // the work tree of `m_index`
    std::unique_ptr<Index> m_index;
};

} // namespace tallyroom
