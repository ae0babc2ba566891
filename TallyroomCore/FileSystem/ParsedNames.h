#pragma once

#include "FileSystem/FolderReader.h"

#include <algorithm>
#include <cerrno>
#include <vector>

namespace tallyroom {

/// Names of a folder as the kernel gave them, parsed when a worker visits them. One thread at a time.
struct ParsedNames {
    NameBuffer buffer;
    std::vector<ListedName> parsed;
    int failure = 0; ///< errno: why there are no more; 0 at the end

    /// As `NameBuffer::read`.
    bool read(int folder)
    {
        parsed.clear();
        errno = 0;
        const bool some = buffer.read(folder);
        failure = some ? 0 : errno;
        return some;
    }

    /// `isOrdered`: as inodes lie on the disk, not as the folder lists them.
    void parse(bool isOrdered)
    {
        if (parsed.empty()) {
            buffer.parse(parsed);
            if (isOrdered) {
                std::ranges::sort(parsed, {}, &ListedName::inode);
            }
        }
    }
};

} // namespace tallyroom
