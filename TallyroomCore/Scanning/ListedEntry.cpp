#include "Scanning/ListedEntry.h"

#include "Model/CheckedArithmetic.h"

#include <algorithm>
#include <limits>

namespace tallyroom {

namespace {

std::uint32_t secondsOf(const std::optional<Timestamp>& moment)
{
    using Seconds = std::chrono::sys_seconds;
    constexpr std::int64_t most = std::numeric_limits<std::uint32_t>::max();
    return !moment ? 0
                   : static_cast<std::uint32_t>(std::clamp<std::int64_t>(
                         std::chrono::floor<Seconds::duration>(*moment).time_since_epoch().count(), 1, most));
}

} // namespace

FolderSize sizeOfItem(const TreeWalk::Child& child)
{
    if (child.attributes == nullptr) {
        const bool isRefused = child.failure != 0; // else it is gone
        const std::int64_t count = isRefused ? 1 : 0;
        return {.unread = count, .files = count, .hasUnreadItems = isRefused, .isUnreadable = isRefused};
    }
    const std::int64_t bytes = child.attributes->allocatedBytes;
    return {
        .bytes = bytes, .files = 1, .largestFile = bytes, .newest = secondsOf(child.attributes->modifiedAt)};
}

FolderSize sizeOfItems(std::span<const TreeWalk::Child> children)
{
    FolderSize sum;
    std::optional<Timestamp> newest;
    for (const TreeWalk::Child& child : children) {
        if (child.isFolder()) {
            continue;
        }
        if (child.attributes == nullptr) {
            const FolderSize item = sizeOfItem(child);
            sum.unread += item.unread;
            sum.files += item.files;
            sum.hasUnreadItems |= item.hasUnreadItems;
            continue;
        }
        const std::int64_t bytes = child.attributes->allocatedBytes;
        sum.bytes = checkedSum(sum.bytes, bytes);
        ++sum.files;
        sum.largestFile = std::max(sum.largestFile, bytes);
        const auto& date = child.attributes->modifiedAt;
        if (date && (!newest || *date > *newest)) {
            newest = *date;
        }
    }
    sum.newest = secondsOf(newest);
    return sum;
}

Entry listedEntry(const FileUrl& folder, const TreeWalk::Child& child, const FolderSize& size,
                  const ScanRoot& scanRoot)
{
    Entry entry{.url = folder.appending(child.name),
                .name = std::string{child.name},
                .isDirectory = child.isFolder(),
                .form = child.form()};
    if (child.attributes != nullptr) {
        entry.modifiedAt = child.attributes->modifiedAt;
        entry.identity = scanRoot.identify(*child.attributes);
    }
    size.applyTo(entry);
    return entry;
}

} // namespace tallyroom
