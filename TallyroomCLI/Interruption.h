#pragma once

#include <stop_token>
#include <thread>

namespace tallyroom {

/// Turns Ctrl+C (SIGINT) and SIGTERM into a stop that a scan obeys; the second one ends the process at once.
/// Make it before any other thread: the signals are blocked here and in every thread started later.
class Interruption {
public:
    Interruption();
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;
    ~Interruption();

    /// True once a signal has come.
    [[nodiscard]] bool hasCome() const noexcept { return m_stop.stop_requested(); }

    /// Runs `action` once when a signal comes, on another thread, while the callback object lives.
    template <class Action>
    [[nodiscard]] auto whenItComes(Action action) const
    {
        return std::stop_callback<Action>{m_stop.get_token(), std::move(action)};
    }

private:
    std::stop_source m_stop;
    std::jthread m_waiter;
};

} // namespace tallyroom
