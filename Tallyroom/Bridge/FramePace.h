#pragma once

#include <QObject>

#include <functional>
#include <memory>

class QTimerEvent;

namespace tallyroom {

/// Turns wake-ups from any thread into calls on the main thread, at most one a frame, and fewer when a call
/// takes long, so that the window keeps the greater part of the time for itself. Main thread, but for the
/// callback that `wakeUp` gives out.
class FramePace : public QObject {
    Q_OBJECT

public:
    /// Ends the calls at once; the object itself outlives a call that is under way.
    struct Retire {
        void operator()(FramePace* pace) const;
    };

    explicit FramePace(std::function<void()> onFrame);
    ~FramePace() override;

    /// Producers call it: from any thread, at any time, also during and after this object’s destruction.
    [[nodiscard]] std::function<void()> wakeUp() const;

protected:
    bool event(QEvent* event) override;
    void timerEvent(QTimerEvent* event) override;

private:
    struct Doorbell;

    void runFrame();

    std::shared_ptr<Doorbell> m_doorbell;
    std::function<void()> m_onFrame;
    qint64 m_nextFrame = 0; // milliseconds of the steady clock
    int m_timer = 0;
    bool m_isCalling = false;
};

} // namespace tallyroom
