#pragma once

#include "Bridge/FramePace.h"
#include "Concurrency/ProgressStream.h"

#include <functional>
#include <memory>
#include <utility>

namespace tallyroom {

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
