#include "FileSystem/FileContent.h"

#include <algorithm>
#include <array>
#include <cerrno>
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

bool readFully(int file, std::span<std::byte> buffer, std::int64_t offset)
{
    while (!buffer.empty()) {
        const ssize_t count = ::pread(file, buffer.data(), buffer.size(), offset);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            return false;
        }
        buffer = buffer.subspan(static_cast<std::size_t>(count));
        offset += count;
    }
    return true;
}

bool writeFully(int file, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t count = ::write(file, bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR) {
            return false;
        }
        bytes.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    }
    return true;
}

} // namespace tallyroom
