#include "Duplicates/DuplicateGroup.h"

#include "Model/CheckedArithmetic.h"

#include <algorithm>
#include <set>

namespace tallyroom {

namespace {

/// How many files the paths lead to. Only those count whose index `counts` accepts.
template <class Condition>
std::int64_t distinctFiles(const std::vector<FileIdentity>& identities, const Condition& counts)
{
    // Most groups are small, and there may be many: no allocation for those.
    constexpr std::size_t small = 16;
    std::int64_t distinct = 0;
    if (identities.size() <= small) {
        for (std::size_t i = 0; i < identities.size(); ++i) {
            bool isFirst = counts(i);
            for (std::size_t before = 0; isFirst && before < i; ++before) {
                isFirst = !counts(before) || !identities[before].isSameFile(identities[i]);
            }
            distinct += isFirst ? 1 : 0;
        }
        return distinct;
    }
    std::set<FileId> files;
    for (std::size_t i = 0; i < identities.size(); ++i) {
        if (counts(i)) {
            files.insert(identities[i]);
        }
    }
    return std::ssize(files);
}

} // namespace

std::int64_t DuplicateGroup::sizeBytes() const noexcept
{
    return entries.empty() ? 0 : entries.front().sizeBytes;
}

std::int64_t DuplicateGroup::wastedBytes() const
{
    const auto copies = static_cast<std::int64_t>(std::max<std::size_t>(entries.size(), 1));
    return checkedProduct(sizeBytes(), copies - 1);
}

std::int64_t DuplicateGroup::reclaimableBytes() const
{
    const std::int64_t files = distinctFiles(identities, [](std::size_t) { return true; });
    return checkedProduct(sizeBytes(), std::max<std::int64_t>(files, 1) - 1);
}

std::int64_t DuplicateGroup::freedBytes(const std::vector<bool>& isGone) const
{
    const std::int64_t before = distinctFiles(identities, [](std::size_t) { return true; });
    const std::int64_t after = distinctFiles(identities, [&](std::size_t index) { return !isGone[index]; });
    return checkedProduct(sizeBytes(), before - after);
}

std::size_t DuplicateGroup::keptCopy() const noexcept
{
    const auto outside = std::ranges::find(inTrash, false);
    return outside == inTrash.end() ? 0 : static_cast<std::size_t>(outside - inTrash.begin());
}

std::vector<bool> DuplicateGroup::redundantBeside(std::size_t kept) const
{
    const bool isAllTrashed = std::ranges::find(inTrash, false) == inTrash.end();
    std::vector<bool> redundant(entries.size());
    for (std::size_t i = 0; i < entries.size(); ++i) {
        redundant[i] = !identities[i].isSameFile(identities[kept]) && (isAllTrashed || !inTrash[i]);
    }
    return redundant;
}

DuplicateGroup DuplicateGroup::without(const std::vector<bool>& isGone) const
{
    DuplicateGroup left{id, {}, {}, {}};
    for (std::size_t i = 0; i < entries.size(); ++i) {
        if (!isGone[i]) {
            left.entries.push_back(entries[i]);
            left.identities.push_back(identities[i]);
            left.inTrash.push_back(inTrash[i]);
        }
    }
    return left;
}

} // namespace tallyroom
