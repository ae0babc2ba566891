#include "Duplicates/DigestStage.h"

#include "FileSystem/Digest.h"
#include "FileSystem/FileContent.h"
#include "Model/CheckedArithmetic.h"
#include "Model/Entry.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>
#include <thread>
#include <vector>

namespace tallyroom {

namespace {

/// How much is read at once, and lies between two looks at a stop.
constexpr std::int64_t chunkLength = 1024L * 1024;

constexpr std::array stages{DigestStage::head, DigestStage::tail, DigestStage::whole};

std::optional<Digest> digestOf(const StableFile& file, FileSpan span, Digester& digester,
                               const std::stop_token& stop)
{
    std::vector<std::byte> buffer(static_cast<std::size_t>(std::min(span.length, chunkLength)));
    const std::int64_t end = span.offset + span.length;
    digester.begin();
    for (std::int64_t offset = span.offset; offset < end; offset += chunkLength) {
        const auto length = static_cast<std::size_t>(std::min(end - offset, chunkLength));
        const auto bytes = std::span{buffer}.first(length);
        if (stop.stop_requested() || !readFully(file.descriptor(), bytes, offset)) {
            return std::nullopt;
        }
        digester.add(bytes);
    }
    return digester.end();
}

} // namespace

FileSpan DigestStages::spanOf(DigestStage stage, std::int64_t size)
{
    switch (stage) {
    case DigestStage::head:
        return {0, std::min(size, spanLength)};
    case DigestStage::tail:
        return {std::max<std::int64_t>(size - spanLength, 0), std::min(size, spanLength)};
    case DigestStage::whole:
        return {0, size};
    }
    return {};
}

FileSpan DigestStages::spanAhead(DigestStage stage, std::int64_t size)
{
    FileSpan span = spanOf(stage, size);
    if (stage == DigestStage::tail && size - spanLength <= longestAhead) {
        span = {spanLength, size - spanLength};
    }
    return {span.offset, std::min(span.length, longestAhead)};
}

bool DigestStages::isSettled(DigestStage stage, std::int64_t size)
{
    switch (stage) {
    case DigestStage::head:
        return size <= spanLength;
    case DigestStage::tail:
        return size <= 2 * spanLength;
    case DigestStage::whole:
        return true;
    }
    return true;
}

std::int64_t DigestStages::costFrom(DigestStage stage, std::int64_t size)
{
    std::int64_t bytes = 0;
    for (const DigestStage each : stages) {
        if (each >= stage) {
            bytes = saturatedSum(bytes, spanOf(each, size).length);
        }
        if (isSettled(each, size)) {
            break;
        }
    }
    return bytes;
}

std::string_view DigestStages::idPrefix(DigestStage stage)
{
    switch (stage) {
    case DigestStage::head:
        return "head:";
    case DigestStage::tail:
        return "headtail:";
    case DigestStage::whole:
        return "full:";
    }
    return {};
}

unsigned DigestStages::lanesOf(DigestStage stage, unsigned width)
{
    const unsigned most = std::max(width * 3 / 4, 1U);
    return stage == DigestStage::whole ? std::clamp(std::thread::hardware_concurrency(), 1U, most) : most;
}

std::optional<std::string> DigestStages::contentKey(const StableFile& file, DigestStage last,
                                                    const std::stop_token& stop)
{
    Digester digester;
    std::string key = std::to_string(file.size());
    for (const DigestStage stage : stages) {
        if (stage <= last) {
            const auto digest = digestOf(file, spanOf(stage, file.size()), digester, stop);
            if (!digest) {
                return std::nullopt;
            }
            key.append("|").append(digest->text());
        }
    }
    return key;
}

std::optional<std::string> DigestStages::contentId(const StableFile& file, const std::stop_token& stop)
{
    const DigestStage last =
        *std::ranges::find_if(stages, [&file](DigestStage stage) { return isSettled(stage, file.size()); });
    const auto key = contentKey(file, last, stop);
    return key ? std::optional{std::string{idPrefix(last)} + *key} : std::nullopt;
}

} // namespace tallyroom
