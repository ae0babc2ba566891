#include "MainThread.h"

#include "Theme/Theme.h"

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QTemporaryDir>

#include <algorithm>
#include <ctime>

namespace tallyroom {

namespace {

double processorTime()
{
    timespec now = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
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

TurnWatch::TurnWatch() : m_begun(processorTime())
{
    connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::awake, this, [this] {
        const double now = processorTime();
        m_longest = std::max(m_longest, now - m_begun);
        m_begun = now;
    });
}

} // namespace tallyroom
