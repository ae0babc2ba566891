#pragma once

#include "Concurrency/ProgressStream.h"

#include <QObject>

#include <functional>
#include <memory>
#include <utility>

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

    /// What producers call: any thread, at any time, also while this object is destroyed or after it.
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

/// Owns a running scan's stream and hands over, on the main thread and at most once a frame, the newest
/// record that arrived, then the end. Records carry everything so far, so the older ones are passed over.
/// Destroying the pump cancels the scan, and nothing of it arrives any more, even when a producer is waking
/// it at that moment; a handler may destroy its own pump. Main thread.
template <class Record>
class StreamPump {
public:
    StreamPump(ProgressStream<Record> stream, std::function<void(Record)> onRecord,
               std::function<void()> onEnd)
        : m_feed(std::make_shared<Feed>(std::move(stream), std::move(onRecord), std::move(onEnd)))
    {
        m_pace.reset(new FramePace{[feed = m_feed] { drain(feed); }});
        m_feed->stream.onWake(m_pace->wakeUp());
    }

    StreamPump(const StreamPump&) = delete;
    StreamPump& operator=(const StreamPump&) = delete;

    ~StreamPump()
    {
        m_feed->isOpen = false;
        m_feed->stream.cancel();
    }

private:
    struct Feed {
        Feed(ProgressStream<Record> source, std::function<void(Record)> record, std::function<void()> end)
            : stream(std::move(source)), onRecord(std::move(record)), onEnd(std::move(end))
        {}

        ProgressStream<Record> stream;
        std::function<void(Record)> onRecord;
        std::function<void()> onEnd;
        bool isOpen = true;
    };

    static void drain(const std::shared_ptr<Feed>& feed)
    {
        if (!feed->isOpen) {
            return;
        }
        auto arrived = feed->stream.takeArrived();
        if (!arrived.records.empty()) {
            feed->onRecord(std::move(arrived.records.back()));
        }
        if (arrived.ended && feed->isOpen) {
            feed->isOpen = false;
            feed->onEnd();
        }
    }

    // Shared with the pace, so that a handler that destroys the pump does not destroy itself.
    std::shared_ptr<Feed> m_feed;
    std::unique_ptr<FramePace, FramePace::Retire> m_pace;
};

} // namespace tallyroom
