#pragma once

#include <functional>
#include <string>

struct statx;

namespace tallyroom {

/// A system call of the code under test.
struct InterceptedCall {
    enum class Kind : unsigned char { statx, rename, unlink, advise };

    Kind kind = Kind::statx;
    int folder = -1; ///< that the name is relative to; the old one of a rename; the file itself of an advice
    const char* name = nullptr;   ///< the old one of a rename
    struct statx* told = nullptr; ///< the answer of statx, which the watch may change
    long offset = 0;              ///< of an advice, with its length
    long length = 0;
};

/// For its life, `watch` is called at every statx, renameat2, unlinkat and posix_fadvise of this process:
/// right after a statx, right before the others. If it returns an errno, the call fails with it instead. It
/// runs on the calling thread, and its own calls are not intercepted. One at a time.
class Interception {
public:
    using Watch = std::function<int(const InterceptedCall& call)>;

    explicit Interception(Watch watch);

    /// Does something at each call of the kind for an item of that name.
    static Interception at(InterceptedCall::Kind kind, std::string name, std::function<void()> action);

    Interception(const Interception&) = delete;
    Interception& operator=(const Interception&) = delete;
    ~Interception();

private:
    Watch m_watch;
};

} // namespace tallyroom
