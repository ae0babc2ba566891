#pragma once

#include "Analysis/DuplicateGroup.h"
#include "Model/FileUrl.h"

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

/// What the first two stages read of a file at most.
inline constexpr std::int64_t spanLength = 64L * 1024;

/// What a stage reads of a file of `size` bytes.
[[nodiscard]] FileSpan spanOf(DigestStage stage, std::int64_t size);

/// True when the digests up to this stage have covered every byte.
[[nodiscard]] bool isSettled(DigestStage stage, std::int64_t size);

/// What a file may still cost from a stage on, in bytes; the greatest number for what is beyond it.
[[nodiscard]] std::int64_t costFrom(DigestStage stage, std::int64_t size);

/// What the id of a group begins with that this stage has settled.
[[nodiscard]] std::string_view idPrefix(DigestStage stage);

/// Reads one file again: the id of the group that it belongs to (see `DuplicateGroup::id`). Nothing when it
/// cannot be read, is not in the state that `identity` tells, or `stop` comes. `size` is not 0.
[[nodiscard]] std::optional<std::string> contentId(const FileUrl& url, const FileIdentity& identity,
                                                   std::int64_t size, const std::stop_token& stop);

} // namespace DigestStages

} // namespace tallyroom
