#pragma once

#include "Duplicates/DigestStage.h"
#include "Duplicates/StableFile.h"
#include "FileSystem/Digest.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <stop_token>
#include <vector>

namespace tallyroom {

/// Digests a few files of one size that may well be identical. Bytes that are equal have equal digests, and
/// comparing is many times cheaper than digesting: only what differs is digested by itself. One thread at a
/// time; the buffers are kept from batch to batch.
class BatchDigester {
public:
    /// The most files of a batch, all of which may be open at once.
    static constexpr std::size_t filesAtOnce = 4;
    /// Spans up to this length are held in memory, whole.
    static constexpr std::int64_t shortSpan = 64L * 1024;
    /// How much of a longer span is read at once, and lies between two looks at a stop.
    static constexpr std::int64_t chunkSize = 1024L * 1024;

    using Digests = std::vector<std::optional<Digest>>;
    /// Opens the file with an index below the batch's size.
    using Open = std::function<std::optional<StableFile>(std::size_t)>;

    /// The digests of the same span of `count` files. One is absent when its file cannot be opened or read,
    /// ends before the span does, or changes however often it is opened and read again; after a stop all may
    /// be. Adds what it has read to `readBytes`.
    [[nodiscard]] Digests digest(std::size_t count, FileSpan span, const Open& open,
                                 const std::stop_token& stop, std::atomic<std::int64_t>& readBytes);

private:
    struct OpenFile {
        std::size_t index = 0;
        StableFile file;
        int readings = 1;
    };

    bool readShort(std::size_t index, FileSpan span, const Open& open, std::span<std::byte> bytes);
    void digestShort(FileSpan span, const Open& open, const std::stop_token& stop,
                     std::atomic<std::int64_t>& readBytes, Digests& digests);
    std::vector<OpenFile> digestAlike(std::vector<OpenFile> files, FileSpan span, const Open& open,
                                      const std::stop_token& stop, std::atomic<std::int64_t>& readBytes,
                                      Digests& digests);
    std::span<std::byte> buffer(std::size_t number, std::int64_t length);

    Digester m_digester;
    std::vector<std::vector<std::byte>> m_buffers;
};

} // namespace tallyroom
