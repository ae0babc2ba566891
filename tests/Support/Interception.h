#pragma once

#include <functional>

struct statx;

namespace tallyroom {

/// A call into the system that the code under test makes.
struct InterceptedCall {
    enum class Kind : unsigned char { statx, rename, unlink };

    Kind kind = Kind::statx;
    int folder = -1;              ///< that the name is relative to; of a rename, where it comes from
    const char* name = nullptr;   ///< of a rename, the old one
    struct statx* told = nullptr; ///< what statx tells, to be changed at will
};

/// For its life, `watch` hears of every statx, renameat2 and unlinkat of this process: of a statx after it
/// was done, of the others before. What it returns, when it is not 0, is the errno that the call fails with
/// instead. Called on the thread that calls; what it calls itself is not intercepted. One at a time.
class Interception {
public:
    using Watch = std::function<int(const InterceptedCall& call)>;

    explicit Interception(Watch watch);
    Interception(const Interception&) = delete;
    Interception& operator=(const Interception&) = delete;
    ~Interception();

private:
    Watch m_watch;
};

} // namespace tallyroom
