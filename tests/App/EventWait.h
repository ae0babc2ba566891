#pragma once

#include <QEvent>
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

/// Lets events happen until the object gets one of the type.
class Awaited : public QObject {
public:
    Awaited(QObject& object, QEvent::Type type) : m_type(type)
    {
        object.installEventFilter(this);
        connect(&m_limit, &QTimer::timeout, &m_loop, [this] { m_loop.exit(1); });
    }

    bool come()
    {
        m_limit.start(std::chrono::seconds{5});
        return m_loop.exec() == 0;
    }

    bool eventFilter(QObject* /*object*/, QEvent* event) override
    {
        if (event->type() == m_type) {
            m_loop.quit();
        }
        return false;
    }

private:
    QEvent::Type m_type;
    QEventLoop m_loop;
    QTimer m_limit;
};

/// Gives a window that is shown the keyboard, as a window manager does.
inline void activate(QWidget& window)
{
    window.activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
}

} // namespace tallyroom
