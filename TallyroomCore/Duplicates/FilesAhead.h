#pragma once

#include "Concurrency/Locked.h"
#include "Duplicates/DigestStage.h"
#include "Duplicates/StableFile.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>

namespace tallyroom {

/// Files that are read one after the other, opened before their turn: the disk is asked early for what comes
/// next, so that it never waits for the reader, and reads at once what lies side by side. Any thread.
class FilesAhead {
public:
    /// Opens the file with a number below `count`.
    using Open = std::function<std::optional<StableFile>(std::size_t)>;
    /// What the disk is asked for of it.
    using Span = std::function<FileSpan(std::size_t)>;

    FilesAhead(std::size_t count, Open open, Span span);

    /// The file whose turn it is, unless it cannot be opened. Numbers come about in order, each once.
    [[nodiscard]] std::optional<StableFile> take(std::size_t number);

private:
    struct Ahead {
        std::size_t next = 0;                                   ///< the first that nobody has opened or opens
        std::int64_t bytes = 0;                                 ///< asked for, of those that wait
        std::map<std::size_t, std::optional<StableFile>> files; ///< or that their turn has passed
    };

    [[nodiscard]] std::optional<StableFile> openNow(std::size_t number) const;
    std::optional<std::size_t> claim();
    void putAside(std::size_t number, std::optional<StableFile> file);
    std::optional<StableFile> takeOut(std::size_t number);

    const std::size_t m_count;
    const std::size_t m_most;
    const Open m_open;
    const Span m_span;
    Locked<Ahead> m_ahead;
};

} // namespace tallyroom
