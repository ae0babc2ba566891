#include "FileSystem/DescriptorShare.h"

#include <algorithm>
#include <sys/resource.h>

namespace tallyroom {

std::size_t descriptorShare()
{
    constexpr rlim_t least = 32;
    constexpr rlim_t most = 1024;
    rlimit limit = {};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) {
        return most;
    }
    return std::clamp(limit.rlim_cur / 8, least, most);
}

} // namespace tallyroom
