#include "Volumes/VolumeUsage.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace tallyroom {

std::int64_t VolumeUsage::usedBytes() const
{
    std::int64_t used = 0;
    if (__builtin_sub_overflow(totalBytes, availableBytes, &used)) {
        std::fputs("tallyroom: the room on a volume left the range of 64 bits\n", stderr);
        std::abort();
    }
    return std::max<std::int64_t>(used, 0);
}

double VolumeUsage::usedFraction() const
{
    return totalBytes < 1 ? 0 : static_cast<double>(usedBytes()) / static_cast<double>(totalBytes);
}

bool VolumeUsage::isListedBefore(const VolumeUsage& other) const
{
    return isInternal != other.isInternal ? isInternal : totalBytes > other.totalBytes;
}

} // namespace tallyroom
