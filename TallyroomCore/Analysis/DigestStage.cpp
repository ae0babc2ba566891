#include "Analysis/DigestStage.h"

#include "Analysis/BatchDigester.h"
#include "Model/Entry.h"

#include <algorithm>
#include <array>
#include <atomic>

namespace tallyroom {

namespace {

constexpr std::array stages{DigestStage::head, DigestStage::tail, DigestStage::whole};

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

std::optional<std::string> DigestStages::contentId(const FileUrl& url, const FileIdentity& identity,
                                                   std::int64_t size, const std::stop_token& stop)
{
    const auto open = [&](std::size_t) { return StableFile::open(url, identity, size); };
    BatchDigester digester;
    std::atomic<std::int64_t> readBytes = 0;
    std::string key = std::to_string(size);
    for (const DigestStage stage : stages) {
        const auto digests = digester.digest(1, spanOf(stage, size), open, stop, readBytes);
        if (!digests.front()) {
            break;
        }
        key.append("|").append(digests.front()->text());
        if (isSettled(stage, size)) {
            return std::string{idPrefix(stage)} + key;
        }
    }
    return std::nullopt;
}

} // namespace tallyroom
