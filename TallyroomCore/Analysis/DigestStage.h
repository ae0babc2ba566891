#pragma once

#include <cstdint>
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

} // namespace DigestStages

} // namespace tallyroom
