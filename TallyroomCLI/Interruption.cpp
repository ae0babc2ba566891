#include "Interruption.h"

#include "Concurrency/Thread.h"
#include "ExitCode.h"

#include <csignal>
#include <pthread.h>
#include <unistd.h>

namespace tallyroom {

namespace {

sigset_t watchedSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGUSR1); // our own, to end the waiting
    return signals;
}

} // namespace

Interruption::Interruption()
{
    const sigset_t signals = watchedSignals();
    ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    m_waiter = tryThread([this, signals](const std::stop_token& done) {
        while (!done.stop_requested()) {
            int signal = 0;
            if (::sigwait(&signals, &signal) != 0 || signal == SIGUSR1) {
                continue;
            }
            if (!m_stop.request_stop()) {
                ::_exit(static_cast<int>(ExitCode::interrupted));
            }
        }
    });
    if (!m_waiter.joinable()) {
        ::pthread_sigmask(SIG_UNBLOCK, &signals, nullptr); // signals end the program then
    }
}

Interruption::~Interruption()
{
    if (m_waiter.joinable()) {
        m_waiter.request_stop();
        ::pthread_kill(m_waiter.native_handle(), SIGUSR1);
    }
}

} // namespace tallyroom
