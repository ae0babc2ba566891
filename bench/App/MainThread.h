#pragma once

#include <QObject>

namespace tallyroom {

/// Makes the application on the first call: without a display, with settings of its own.
void startApplication();

/// The longest turn of the main thread's event loop since it was made, whatever a user did meanwhile had to
/// wait as long. Counted is the main thread's processor time, so that other programs on the machine do not
/// count. Made on the main thread.
class TurnWatch : public QObject {
public:
    TurnWatch();

    [[nodiscard]] double longestMilliseconds() const { return m_longest; }

private:
    double m_begun; // milliseconds of processor time
    double m_longest = 0;
};

} // namespace tallyroom
