#pragma once

#include "Model/FileUrl.h"

#include <chrono>
#include <set>
#include <string>

namespace tallyroom {

/// The files that other programs of this user hold open, run or have mapped, and the folders that they work
/// in, as /proc tells: their real paths, asked of no disk. A value.
class OpenFiles {
public:
    /// The time that one look takes at most; a file that it has not seen by then counts as not open.
    static constexpr std::chrono::milliseconds patience{200};

    /// Looks at the processes of this user but this one. Any thread but the main thread.
    [[nodiscard]] static OpenFiles look();

    /// Whether one of them is `folder`, named without links, or lies below it.
    [[nodiscard]] bool isAnyIn(const FileUrl& folder) const;

private:
    std::set<std::string, std::less<>> m_paths;
};

} // namespace tallyroom
