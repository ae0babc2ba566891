#include "FileSystem/FileContent.h"

#include <algorithm>
#include <array>
#include <unistd.h>

namespace tallyroom {

SystemResult<std::string> contentOf(int file)
{
    std::string content;
    std::array<char, 16384> buffer = {};
    ssize_t count = 1;
    while (count > 0) {
        count = ::read(file, buffer.data(), buffer.size());
        content.append(buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    }
    if (count < 0) {
        return std::unexpected(SystemError::last());
    }
    return content;
}

} // namespace tallyroom
