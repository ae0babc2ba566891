#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

namespace tallyroom {

/// Threads for calls that may never return, such as to a file system whose server is gone: no caller waits
/// for them, and the pool loses no workers. One question at a time is asked about a subject, so that a
/// subject that hangs costs one thread, which serves others again once it has come back.
class PatientCalls {
public:
    /// At most `threads` at once; they start when there is something to ask and end when there is nothing.
    /// A subject hangs when a question about it has not come back after `patience`.
    PatientCalls(unsigned threads, std::chrono::milliseconds patience);

    /// Asks once the earlier questions about `subject` have come back. False, and nothing is asked, when it
    /// hangs. Any thread; never waits, unless the system grants no thread. `question` runs on a thread that
    /// may outlive this object and `main`: what it touches must be its own. It must not throw.
    bool ask(const std::string& subject, std::function<void()> question);

private:
    class Threads;
    std::shared_ptr<Threads> m_threads;
};

} // namespace tallyroom
