#pragma once

#include <QObject>

#include <atomic>
#include <thread>

namespace tallyroom {

/// Makes the application on the first call: without a display, with settings of its own.
void startApplication();

/// The longest time for which the main thread worked before it came to look at what was waiting: whatever a
/// user did then would have had to wait as long. A thread of its own asks every millisecond; counted is the
/// main thread's processor time, so that other programs on the machine do not count. Made on the main thread.
class TurnWatch {
public:
    TurnWatch();

    [[nodiscard]] double longestMilliseconds() const { return m_longest; }

private:
    void ask(const std::stop_token& stop);

    QObject m_context;
    double m_longest = 0; // written on the main thread only
    std::atomic<bool> m_isAnswered = true;
    clockid_t m_clock = {};
    std::jthread m_asker;
};

} // namespace tallyroom
