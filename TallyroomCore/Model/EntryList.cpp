#include "Model/EntryList.h"

#include <algorithm>

namespace tallyroom {

EntryList rankedByPath(const EntryList& entries)
{
    const auto ranksBefore = [](const Entry& left, const Entry& right) {
        return left.sizeBytes != right.sizeBytes ? left.sizeBytes > right.sizeBytes : left.url < right.url;
    };
    if (std::ranges::is_sorted(entries, ranksBefore)) {
        return entries;
    }
    std::vector<Entry> sorted = entries.toVector();
    std::ranges::sort(sorted, ranksBefore);
    return EntryList{std::move(sorted)};
}

} // namespace tallyroom
