#include "FileSystem/SystemError.h"

#include <cerrno>
#include <system_error>

namespace tallyroom {

std::string SystemError::message() const
{
    return std::generic_category().message(code);
}

SystemError SystemError::last() noexcept
{
    return {errno};
}

} // namespace tallyroom
