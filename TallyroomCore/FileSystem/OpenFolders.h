#pragma once

#include "FileSystem/TreeWalk.h"

#include <atomic>
#include <cstdint>

namespace tallyroom {

/// The folders that one walk keeps open for their children's sake: a bounded number. Beyond it, children are
/// opened by their path from the root, which is slower and always works. Any thread.
class TreeWalk::OpenFolders {
public:
    /// The folder that a worker listed last, when it may not stay open: the one visited next is most often
    /// its child, and is opened from here.
    struct Last {
        std::uint64_t serial = 0;
        FileDescriptor descriptor;
    };

    /// Opens a folder by the quickest way.
    [[nodiscard]] SystemResult<FileDescriptor> open(Folder& folder, Last& last);

    /// Decides whether a folder that was just opened stays open.
    void add(Folder& folder);

    /// So many children of `folder` will be opened.
    static void expect(Folder& folder, std::uint32_t children, Last& last);

    /// Gives up one use of the folder's descriptor. The last user closes it; a root's stays open.
    void release(Folder& folder);

private:
    std::atomic<int> m_count = 0;
    std::atomic<std::uint64_t> m_serials = 0;
};

} // namespace tallyroom
