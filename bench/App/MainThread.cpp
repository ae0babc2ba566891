#include "MainThread.h"

#include "Components/Theme.h"

#include <QApplication>
#include <QTemporaryDir>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <pthread.h>

namespace tallyroom {

namespace {

double milliseconds(clockid_t clock)
{
    timespec now = {};
    clock_gettime(clock, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

} // namespace

void startApplication()
{
    static const QTemporaryDir settings;
    static const QApplication* const application = [] {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        qputenv("XDG_CONFIG_HOME", settings.path().toLocal8Bit());
        static int count = 1;
        static char name[] = "tallyroom-bench";
        static char* arguments[] = {name, nullptr};
        return new QApplication(count, arguments);
    }();
    (void)application;
    Theme::shared().apply();
}

TurnWatch::TurnWatch()
{
    pthread_getcpuclockid(pthread_self(), &m_clock);
    m_asker = std::jthread{[this](const std::stop_token& stop) { ask(stop); }};
}

void TurnWatch::ask(const std::stop_token& stop)
{
    while (!stop.stop_requested()) {
        if (m_isAnswered.exchange(false)) {
            const double asked = milliseconds(m_clock);
            QMetaObject::invokeMethod(
                &m_context,
                [this, asked] {
                    m_longest = std::max(m_longest, milliseconds(m_clock) - asked);
                    m_isAnswered = true;
                },
                Qt::QueuedConnection);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds{1});
    }
}

} // namespace tallyroom
