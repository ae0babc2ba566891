#include "Analysis/DigestStage.h"

#include "Model/Entry.h"

#include <algorithm>
#include <array>

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

} // namespace tallyroom
