#include "Bridge/FramePace.h"

#include <QCoreApplication>
#include <QEvent>
#include <QTimerEvent>

#include <algorithm>
#include <chrono>
#include <mutex>
#include <utility>

namespace tallyroom {

namespace {

constexpr qint64 frame = 16;

// A call that took t milliseconds is followed by at least this many times t without one.
constexpr qint64 restShare = 3;
constexpr qint64 longestRest = 500;

qint64 now()
{
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

QEvent::Type ringType()
{
    static const auto type = static_cast<QEvent::Type>(QEvent::registerEventType());
    return type;
}

} // namespace

/// Producers share it. It may outlive the pace, and then does nothing.
struct FramePace::Doorbell {
    std::mutex mutex;
    QObject* owner = nullptr; // guarded by mutex
    bool hasRung = false;     // guarded by mutex

    void ring()
    {
        const std::scoped_lock lock{mutex};
        if (owner != nullptr && !std::exchange(hasRung, true)) {
            QCoreApplication::postEvent(owner, new QEvent{ringType()});
        }
    }

    void setOwner(QObject* object)
    {
        const std::scoped_lock lock{mutex};
        owner = object;
    }

    void answer()
    {
        const std::scoped_lock lock{mutex};
        hasRung = false;
    }
};

FramePace::FramePace(std::function<void()> onFrame)
    : m_doorbell(std::make_shared<Doorbell>()), m_onFrame(std::move(onFrame))
{
    m_doorbell->setOwner(this);
}

FramePace::~FramePace()
{
    m_doorbell->setOwner(nullptr);
}

void FramePace::Retire::operator()(FramePace* pace) const
{
    if (!pace->m_isCalling) {
        delete pace;
        return;
    }
    pace->m_doorbell->setOwner(nullptr);
    pace->deleteLater();
}

std::function<void()> FramePace::wakeUp() const
{
    return [doorbell = m_doorbell] { doorbell->ring(); };
}

bool FramePace::event(QEvent* event)
{
    if (event->type() != ringType()) {
        return QObject::event(event);
    }
    const qint64 wait = m_nextFrame - now();
    if (wait <= 0) {
        runFrame();
    } else if (m_timer == 0) {
        m_timer = startTimer(std::chrono::milliseconds{wait}, Qt::PreciseTimer);
    }
    return true;
}

void FramePace::timerEvent(QTimerEvent* /*event*/)
{
    killTimer(std::exchange(m_timer, 0));
    runFrame();
}

void FramePace::runFrame()
{
    // Answered before the callback empties the stream: later records ring again.
    m_doorbell->answer();
    const qint64 start = now();
    m_isCalling = true;
    m_onFrame();
    m_isCalling = false;
    const qint64 end = now();
    m_nextFrame = std::max(start + frame, end + std::min(restShare * (end - start), longestRest));
}

} // namespace tallyroom
