#include "Interruption.h"

#include "ExitCode.h"

#include <csignal>
#include <exception>
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
    const auto wait = [this, signals](const std::stop_token& done) {
        while (!done.stop_requested()) {
            int signal = 0;
            if (::sigwait(&signals, &signal) != 0 || signal == SIGUSR1) {
                continue;
            }
            if (!m_stop.request_stop()) {
                ::_exit(static_cast<int>(ExitCode::interrupted));
            }
        }
    };
    try {
        m_waiter = std::jthread{wait};
    } catch (const std::exception&) {
        ::pthread_sigmask(SIG_UNBLOCK, &signals, nullptr); // no thread is to be had: signals end the program
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
