#pragma once

#include "Concurrency/StreamWake.h"

#include <algorithm>
#include <condition_variable>
#include <functional>
#include <iterator>
#include <memory>
#include <mutex>
#include <optional>
#include <stop_token>
#include <utility>
#include <vector>

namespace tallyroom {

template <class Record>
class ProgressSender;
template <class Record>
class ProgressStream;

/// A sending end and the stream it feeds. The last copy of the sender gone ends the stream; the stream
/// dropped stops the producers.
template <class Record>
[[nodiscard]] std::pair<ProgressSender<Record>, ProgressStream<Record>> makeProgressStream();

namespace detail {

template <class Record>
struct StreamState {
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<Record> waiting;
    std::shared_ptr<const std::function<void()>> wake;
    bool ended = false;
    std::stop_source stop;
};

/// Lives as long as any sender; its end is the stream's end.
template <class Record>
class SendingEnd {
public:
    explicit SendingEnd(std::shared_ptr<StreamState<Record>> state) : m_state(std::move(state)) {}

    SendingEnd(const SendingEnd&) = delete;
    SendingEnd& operator=(const SendingEnd&) = delete;

    ~SendingEnd()
    {
        StreamWake wake;
        const std::scoped_lock lock{m_state->mutex};
        m_state->ended = true;
        m_state->changed.notify_all();
        wake = StreamWake{m_state->wake};
    }

    StreamWake enqueue(std::vector<Record> records)
    {
        const std::scoped_lock lock{m_state->mutex};
        if (records.empty() || m_state->stop.stop_requested()) {
            return {};
        }
        if (!m_state->waiting.empty()) {
            std::ranges::move(records, std::back_inserter(m_state->waiting));
            return {};
        }
        m_state->waiting = std::move(records);
        m_state->changed.notify_all();
        return StreamWake{m_state->wake};
    }

    [[nodiscard]] std::stop_token stopToken() const { return m_state->stop.get_token(); }

private:
    std::shared_ptr<StreamState<Record>> m_state;
};

} // namespace detail

/// The producing end. Copies share one stream; all operations may be called from any thread, one copy a
/// thread.
template <class Record>
class ProgressSender {
public:
    explicit ProgressSender(std::shared_ptr<detail::SendingEnd<Record>> end) : m_end(std::move(end)) {}

    /// Appends a record; never waits for the consumer. A record sent after the stream was dropped is lost.
    void send(Record record) const
    {
        std::vector<Record> records;
        records.push_back(std::move(record));
        const StreamWake wake = enqueue(std::move(records));
    }

    /// Appends several records in one step, for a producer that makes them under a lock of its own: the
    /// wake-up fires when the result is destroyed.
    StreamWake enqueue(std::vector<Record> records) const { return m_end->enqueue(std::move(records)); }

    /// Asks for a stop once the consumer has dropped the stream.
    [[nodiscard]] std::stop_token stopToken() const { return m_end->stopToken(); }

private:
    std::shared_ptr<detail::SendingEnd<Record>> m_end;
};

/// The consuming end: one owner, one consumer. Dropping it stops the producers.
template <class Record>
class ProgressStream {
public:
    /// What had arrived in one locked look: the end never overtakes a record.
    struct Arrived {
        std::vector<Record> records;
        bool ended = false;
    };

    explicit ProgressStream(std::shared_ptr<detail::StreamState<Record>> state) : m_state(std::move(state)) {}

    ProgressStream(ProgressStream&&) noexcept = default;

    ProgressStream& operator=(ProgressStream&& other) noexcept
    {
        if (this != &other) {
            cancel();
            m_state = std::move(other.m_state);
            m_taken = std::move(other.m_taken);
            m_next = other.m_next;
        }
        return *this;
    }

    ProgressStream(const ProgressStream&) = delete;
    ProgressStream& operator=(const ProgressStream&) = delete;

    ~ProgressStream() { cancel(); }

    /// The next record; waits for it. Nothing when the stream has ended and all was taken.
    [[nodiscard]] std::optional<Record> next()
    {
        return nextWhen([this] { return m_state->ended; });
    }

    /// The same, but once the stream is cancelled it waits for no producer: one may be held up in a system
    /// call on a volume that does not answer. `cancel` may be called on another thread meanwhile.
    [[nodiscard]] std::optional<Record> nextUntilCancelled()
    {
        return nextWhen([this] { return m_state->ended || m_state->stop.stop_requested(); });
    }

    /// All that has arrived since the last look, without waiting.
    [[nodiscard]] Arrived takeArrived()
    {
        Arrived arrived;
        {
            const std::scoped_lock lock{m_state->mutex};
            arrived.records.swap(m_state->waiting);
            arrived.ended = m_state->ended;
        }
        if (m_next < m_taken.size()) {
            arrived.records.insert(
                arrived.records.begin(),
                std::make_move_iterator(m_taken.begin() + static_cast<std::ptrdiff_t>(m_next)),
                std::make_move_iterator(m_taken.end()));
        }
        m_taken.clear();
        m_next = 0;
        return arrived;
    }

    /// Calls `wake` whenever the stream goes from empty to not empty, at its end, and at once when something
    /// is waiting already. It runs on the producers' threads, under no lock, and may run once more after
    /// the stream is gone: what it touches must be its own.
    void onWake(std::function<void()> wake)
    {
        StreamWake now;
        const std::scoped_lock lock{m_state->mutex};
        m_state->wake = std::make_shared<const std::function<void()>>(std::move(wake));
        if (m_state->ended || !m_state->waiting.empty()) {
            now = StreamWake{m_state->wake};
        }
    }

    /// Stops the producers; what was sent before can still be taken, and the end still comes.
    void cancel() noexcept
    {
        if (m_state != nullptr) {
            m_state->stop.request_stop();
            const std::scoped_lock lock{m_state->mutex};
            m_state->changed.notify_all();
        }
    }

private:
    /// Waits for a record, or until `isOver` says that none will come.
    template <class Condition>
    std::optional<Record> nextWhen(const Condition& isOver)
    {
        if (m_next == m_taken.size()) {
            m_taken.clear();
            m_next = 0;
            std::unique_lock lock{m_state->mutex};
            m_state->changed.wait(lock, [&] { return isOver() || !m_state->waiting.empty(); });
            m_taken.swap(m_state->waiting);
        }
        if (m_taken.empty()) {
            return std::nullopt;
        }
        return std::move(m_taken[m_next++]);
    }

    std::shared_ptr<detail::StreamState<Record>> m_state;
    std::vector<Record> m_taken;
    std::size_t m_next = 0;
};

template <class Record>
std::pair<ProgressSender<Record>, ProgressStream<Record>> makeProgressStream()
{
    auto state = std::make_shared<detail::StreamState<Record>>();
    return {ProgressSender<Record>{std::make_shared<detail::SendingEnd<Record>>(state)},
            ProgressStream<Record>{state}};
}

} // namespace tallyroom
