#pragma once

#include <QEventLoop>
#include <QObject>
#include <QTest>
#include <QTimer>
#include <QWidget>

#include <chrono>
#include <gtest/gtest.h>

namespace tallyroom {

/// Runs the event loop until `condition` holds, asking after each `signal`; false when it never did.
template <class Sender, class Signal, class Condition>
[[nodiscard]] bool waitUntil(Sender* sender, Signal signal, Condition condition)
{
    QEventLoop loop;
    QObject::connect(sender, signal, &loop, [&] {
        if (condition()) {
            loop.quit();
        }
    });
    // Only so that a broken program fails instead of hanging.
    QTimer::singleShot(std::chrono::seconds{20}, &loop, &QEventLoop::quit);
    if (!condition()) {
        loop.exec();
    }
    return condition();
}

/// Gives a window that is shown the keyboard, as a window manager does.
inline void activate(QWidget& window)
{
    window.activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
}

} // namespace tallyroom
