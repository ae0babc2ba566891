#include "Support/Isolation.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sched.h>
#include <string>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace tallyroom {

ScopedVariable::ScopedVariable(std::string name, const std::string& value) : m_name(std::move(name))
{
    if (const char* const former = std::getenv(m_name.c_str())) {
        m_former = former;
    }
    ::setenv(m_name.c_str(), value.c_str(), 1);
}

ScopedVariable::~ScopedVariable()
{
    if (m_former) {
        ::setenv(m_name.c_str(), m_former->c_str(), 1);
    } else {
        ::unsetenv(m_name.c_str());
    }
}

TemporaryMount TemporaryMount::memory(const std::string& folder, const std::string& options)
{
    return {"tallyroom-test", folder, "tmpfs", 0, options};
}

TemporaryMount TemporaryMount::bind(const std::string& source, const std::string& folder)
{
    return {source, folder, nullptr, MS_BIND, ""};
}

TemporaryMount TemporaryMount::overlay(const std::string& upper, const std::string& lower,
                                       const std::string& folder)
{
    return {"tallyroom-test", folder, "overlay", 0, "lowerdir=" + upper + ":" + lower};
}

TemporaryMount TemporaryMount::silent(const std::string& folder)
{
    FileDescriptor server{::open("/dev/fuse", O_RDWR | O_CLOEXEC)};
    const std::string options = "fd=" + std::to_string(server.get()) + ",rootmode=40000,user_id=0,group_id=0";
    return {"tallyroom-test", folder, "fuse", 0, options, std::move(server)};
}

namespace {

/// A mount namespace of this process alone, so that even a test that crashes leaves no mount behind. Entered
/// before any test: a folder opened earlier would show what lies below a mount.
const bool isApart =
    ::unshare(CLONE_NEWNS) == 0 && ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;

} // namespace

TemporaryMount::TemporaryMount(const std::string& source, std::string folder, const char* type,
                               unsigned long flags, const std::string& options, FileDescriptor server)
    : m_folder(std::move(folder)), m_server(std::move(server))
{
    if (!isApart || ::mount(source.c_str(), m_folder.c_str(), type, flags, options.c_str()) != 0) {
        m_refusal = std::string{"mounting is not permitted here: "} + std::strerror(errno);
    }
}

TemporaryMount::~TemporaryMount()
{
    if (isMounted()) {
        ::umount2(m_folder.c_str(), MNT_DETACH);
    }
}

bool TemporaryMount::makeReadOnly() const
{
    return ::mount("none", m_folder.c_str(), nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr) == 0;
}

constexpr unsigned patience = 60; // seconds

std::vector<int> inChildProcesses(int count, const std::function<int(int child)>& action)
{
    // All from this one thread: a child of a process in which another thread allocates may never get its
    // heap's lock.
    std::vector<pid_t> children;
    for (int number = 0; number < count; ++number) {
        const pid_t child = ::fork();
        if (child == 0) {
            ::alarm(patience); // better a failure than a wait without end, should that happen
            ::_exit(action(number));
        }
        children.push_back(child);
    }
    std::vector<int> codes;
    for (const pid_t child : children) {
        int status = 0;
        const bool hasExited = child > 0 && ::waitpid(child, &status, 0) == child && WIFEXITED(status);
        codes.push_back(hasExited ? WEXITSTATUS(status) : -1);
    }
    return codes;
}

int inChildProcess(const std::function<int()>& action)
{
    return inChildProcesses(1, [&action](int) { return action(); }).front();
}

namespace {

/// Root's name set aside for the life of this, of all threads, the workers' too. It stays the saved user, so
/// that there is a way back.
class WithoutPrivileges {
public:
    WithoutPrivileges()
        : m_isLeft(::setresgid(unprivilegedUser, unprivilegedUser, 0) == 0 &&
                   ::setresuid(unprivilegedUser, unprivilegedUser, 0) == 0)
    {
        ::prctl(PR_SET_DUMPABLE, 1); // or its own entries in /proc are closed to it
    }

    WithoutPrivileges(const WithoutPrivileges&) = delete;
    WithoutPrivileges& operator=(const WithoutPrivileges&) = delete;

    ~WithoutPrivileges()
    {
        if (::setresuid(0, 0, 0) != 0 || ::setresgid(0, 0, 0) != 0) {
            std::abort(); // the tests that follow would not be what they say
        }
        ::prctl(PR_SET_DUMPABLE, 1);
    }

    [[nodiscard]] bool isLeft() const noexcept { return m_isLeft; }

private:
    bool m_isLeft;
};

} // namespace

int asUnprivilegedUser(const std::function<int()>& action)
{
    if (::getuid() != 0) {
        return action();
    }
    const WithoutPrivileges person;
    return person.isLeft() ? action() : -1;
}

} // namespace tallyroom
