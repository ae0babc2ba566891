#include "Analysis/DuplicateGroup.h"

#include <algorithm>
#include <utility>

namespace tallyroom {

namespace {

/// How many files the paths lead to.
std::int64_t distinctFiles(const std::vector<FileIdentity>& identities)
{
    std::vector<std::pair<std::uint64_t, std::uint64_t>> files;
    files.reserve(identities.size());
    std::ranges::transform(identities, std::back_inserter(files), [](const FileIdentity& identity) {
        return std::pair{identity.device, identity.inode};
    });
    std::ranges::sort(files);
    const auto repeated = std::ranges::unique(files);
    return static_cast<std::int64_t>(files.size() - repeated.size());
}

} // namespace

FileIdentity FileIdentity::of(const FileAttributes& attributes)
{
    return {attributes.device, attributes.inode, attributes.links, attributes.modifiedAt,
            attributes.changedAt};
}

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
    return checkedProduct(sizeBytes(), std::max<std::int64_t>(distinctFiles(identities), 1) - 1);
}

std::int64_t DuplicateGroup::freedBytes(const std::function<bool(const Entry&)>& isGone) const
{
    std::vector<FileIdentity> kept;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        if (!isGone(entries[i])) {
            kept.push_back(identities[i]);
        }
    }
    return checkedProduct(sizeBytes(), distinctFiles(identities) - distinctFiles(kept));
}

void DuplicateGroup::removeEntries(const std::function<bool(const Entry&)>& isGone)
{
    std::size_t kept = 0;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        if (isGone(entries[i])) {
            continue;
        }
        if (kept != i) {
            entries[kept] = std::move(entries[i]);
            identities[kept] = identities[i];
        }
        ++kept;
    }
    entries.resize(kept);
    identities.resize(kept);
}

} // namespace tallyroom
