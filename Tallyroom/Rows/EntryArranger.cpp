#include "Rows/EntryArranger.h"

#include "Concurrency/Thread.h"

#include <utility>

namespace tallyroom {

namespace {

constexpr std::size_t quickCount = 10'000; // filtered and sorted by name well within one frame

} // namespace

EntryArranger::~EntryArranger()
{
    // Stopped and joined while there still is somebody to report to.
    m_thread = {};
}

void EntryArranger::arrange(EntryArrangement::Request request, IfBusy ifBusy)
{
    m_waiting.reset();
    if (m_isRunning && ifBusy == IfBusy::cancel) {
        m_thread.request_stop();
    }
    const bool isStopped = m_thread.get_stop_source().stop_requested();
    if (request.entries.size() <= quickCount && (!m_isRunning || isStopped)) {
        Q_EMIT arranged(EntryArrangement{request});
    } else if (m_isRunning) {
        m_waiting = std::move(request);
    } else {
        start(std::move(request));
    }
}

void EntryArranger::start(EntryArrangement::Request request)
{
    m_isRunning = true;
    m_thread = runOnThread([this, request = std::move(request)](const std::stop_token& stop) {
        QMetaObject::invokeMethod(
            this, [this, arrangement = EntryArrangement{request, stop}] { finish(arrangement); },
            Qt::QueuedConnection);
    });
}

void EntryArranger::finish(const EntryArrangement& arrangement)
{
    const bool isStopped = m_thread.get_stop_source().stop_requested();
    m_isRunning = false;
    m_thread = {};
    auto next = std::exchange(m_waiting, std::nullopt);
    if (!isStopped) {
        Q_EMIT arranged(arrangement);
    }
    if (next && !m_isRunning) {
        arrange(*std::move(next), IfBusy::letFinish);
    }
}

} // namespace tallyroom
