#pragma once

#include <QEventLoop>
#include <QTimer>

#include <chrono>

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

} // namespace tallyroom
