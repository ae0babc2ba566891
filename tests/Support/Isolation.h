#pragma once

#include "FileSystem/FileDescriptor.h"

#include <functional>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace tallyroom {

/// Sets an environment variable for its life.
class ScopedVariable {
public:
    ScopedVariable(std::string name, const std::string& value);
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;
    ~ScopedVariable();

private:
    std::string m_name;
    std::optional<std::string> m_former;
};

/// A file system of its own in memory, or a bind mount, for its life. Made in a mount namespace of this
/// process alone. Many machines do not permit it: see SKIP_UNLESS_MOUNTED.
class TemporaryMount {
public:
    /// Mounts a tmpfs, `options` as mount(8) takes them ("size=64k").
    static TemporaryMount memory(const std::string& folder, const std::string& options = "");

    /// Shows the folder `source` at `folder` too.
    static TemporaryMount bind(const std::string& source, const std::string& folder);

    /// Shows at `folder` the folders `upper` and `lower` laid upon each other, for reading only.
    static TemporaryMount overlay(const std::string& upper, const std::string& lower,
                                  const std::string& folder);

    /// Mounts a file system whose server never answers: every call waits until the mount is gone.
    static TemporaryMount silent(const std::string& folder);

    TemporaryMount(const TemporaryMount&) = delete;
    TemporaryMount& operator=(const TemporaryMount&) = delete;
    ~TemporaryMount();

    [[nodiscard]] bool isMounted() const noexcept { return m_refusal.empty(); }

    [[nodiscard]] const std::string& refusal() const noexcept { return m_refusal; }

    /// Makes it read-only; false when a file in it is open for writing.
    [[nodiscard]] bool makeReadOnly() const;

private:
    TemporaryMount(const std::string& source, std::string folder, const char* type, unsigned long flags,
                   const std::string& options, FileDescriptor server = {});

    std::string m_folder;
    std::string m_refusal;
    FileDescriptor m_server; ///< of a file system in user space
};

/// Ends a test as skipped where a mount is not permitted.
#define SKIP_UNLESS_MOUNTED(mount)                                                                           \
    do {                                                                                                     \
        if (!(mount).isMounted()) {                                                                          \
            GTEST_SKIP() << (mount).refusal();                                                               \
        }                                                                                                    \
    } while (false)

/// Runs `action` in so many child processes at once, and returns what each returned, 0 to 255, or -1 when it
/// crashed. The children have none of the workers: nothing in them may wait for one.
std::vector<int> inChildProcesses(int count, const std::function<int(int child)>& action);

/// Runs `action` in a child process and returns what it returned, 0 to 255; -1 when the process crashed. The
/// child has none of the workers: nothing in it may wait for one.
int inChildProcess(const std::function<int()>& action);

/// A user without privileges: permissions do not stop root.
constexpr uid_t unprivilegedUser = 65534;

/// Runs `action` without root's privileges, as `unprivilegedUser` when this process runs as root, in all of
/// its threads; -1 when that is not to be had.
int asUnprivilegedUser(const std::function<int()>& action);

} // namespace tallyroom
