#include "Volumes/VolumeUsage.h"

#include "Model/CheckedArithmetic.h"

#include <algorithm>

namespace tallyroom {

std::int64_t VolumeUsage::usedBytes() const
{
    return std::max<std::int64_t>(checkedDifference(totalBytes, availableBytes), 0);
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
