#pragma once

#include "Duplicates/StableFile.h"

#include <cstdint>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>

namespace tallyroom {

/// Which bytes of a file a digest covers.
struct FileSpan {
    std::int64_t offset = 0;
    std::int64_t length = 0;
};

/// One step of telling files of the same size apart.
enum class DigestStage : unsigned char { head, tail, whole };

namespace DigestStages {

/// The first two stages read at most so much of a file.
inline constexpr std::int64_t spanLength = 64L * 1024;

/// So much of a file at most is asked for before it is read: whoever reads it asks for the rest.
inline constexpr std::int64_t longestAhead = 1024L * 1024;

/// The bytes that a stage reads of a file of `size` bytes.
[[nodiscard]] FileSpan spanOf(DigestStage stage, std::int64_t size);

/// What a disk with a head is asked for when a stage comes to a file: what the next stage reads of it as well
/// where that is little. Files whose heads are alike are mostly alike, and one way there is enough.
[[nodiscard]] FileSpan spanAhead(DigestStage stage, std::int64_t size);

/// True when the digests up to this stage have covered every byte.
[[nodiscard]] bool isSettled(DigestStage stage, std::int64_t size);

/// How many bytes may still be read of a file from a stage on; saturates.
[[nodiscard]] std::int64_t costFrom(DigestStage stage, std::int64_t size);

/// How many of `width` workers read at once in a stage. Short reads wait for the disk and are begun many at a
/// time; whole files keep a core busy each, and more of them would send the heads of a disk to and fro.
[[nodiscard]] unsigned lanesOf(DigestStage stage, unsigned width);

/// The prefix of the id of a group that this stage settled.
[[nodiscard]] std::string_view idPrefix(DigestStage stage);

/// The digests of an open file from the first stage to `last`, as text behind its size: "4096|0f…". Nothing
/// when it cannot be read, or `stop` comes. The file is not empty.
[[nodiscard]] std::optional<std::string> contentKey(const StableFile& file, DigestStage last,
                                                    const std::stop_token& stop);

/// Reads a whole open file: the id of the group that it belongs to (see `DuplicateGroup::id`). Nothing in the
/// same cases.
[[nodiscard]] std::optional<std::string> contentId(const StableFile& file, const std::stop_token& stop);

} // namespace DigestStages

} // namespace tallyroom
