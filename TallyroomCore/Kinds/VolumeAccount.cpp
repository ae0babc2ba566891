#include "Kinds/VolumeAccount.h"

#include <algorithm>

namespace tallyroom {

std::int64_t VolumeAccount::missing() const
{
    return std::max<std::int64_t>(used - reserved - found, 0);
}

} // namespace tallyroom
