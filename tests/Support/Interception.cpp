#include "Support/Interception.h"

#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <utility>

namespace tallyroom {

namespace {

std::atomic<const Interception::Watch*> current = nullptr;
thread_local bool isWatching = false;

/// The errno that the call is to fail with, or 0.
int heard(const InterceptedCall& call)
{
    const Interception::Watch* const watch = isWatching ? nullptr : current.load();
    if (watch == nullptr) {
        return 0;
    }
    const int before = errno;
    isWatching = true;
    const int error = (*watch)(call);
    isWatching = false;
    errno = error != 0 ? error : before;
    return error;
}

} // namespace

Interception::Interception(Watch watch) : m_watch(std::move(watch))
{
    current = &m_watch;
}

Interception Interception::at(InterceptedCall::Kind kind, std::string name, std::function<void()> action)
{
    return Interception{[kind, name = std::move(name), action = std::move(action)](const auto& call) {
        if (call.kind == kind && name == call.name) {
            action();
        }
        return 0;
    }};
}

Interception::~Interception()
{
    current = nullptr;
}

} // namespace tallyroom

// These stand in the place of the C library's: a program's own come first.
// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name)
extern "C" {

int statx(int folder, const char* name, int flags, unsigned mask, struct statx* told) noexcept
{
    const auto result = static_cast<int>(::syscall(SYS_statx, folder, name, flags, mask, told));
    using tallyroom::InterceptedCall;
    return result == 0 && tallyroom::heard({InterceptedCall::Kind::statx, folder, name, told}) != 0 ? -1
                                                                                                    : result;
}

int renameat2(int from, const char* name, int to, const char* newName, unsigned flags) noexcept
{
    using tallyroom::InterceptedCall;
    return tallyroom::heard({InterceptedCall::Kind::rename, from, name, nullptr}) != 0
               ? -1
               : static_cast<int>(::syscall(SYS_renameat2, from, name, to, newName, flags));
}

int unlinkat(int folder, const char* name, int flags) noexcept
{
    using tallyroom::InterceptedCall;
    return tallyroom::heard({InterceptedCall::Kind::unlink, folder, name, nullptr}) != 0
               ? -1
               : static_cast<int>(::syscall(SYS_unlinkat, folder, name, flags));
}

int posix_fadvise(int file, off_t offset, off_t length, int advice) noexcept
{
    using tallyroom::InterceptedCall;
    const int error = tallyroom::heard({InterceptedCall::Kind::advise, file, "", nullptr, offset, length});
    return error != 0 ? error : static_cast<int>(-::syscall(SYS_fadvise64, file, offset, length, advice));
}

} // extern "C"
// NOLINTEND(readability-inconsistent-declaration-parameter-name)
