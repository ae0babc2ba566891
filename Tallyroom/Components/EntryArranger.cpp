#include "Components/EntryArranger.h"

#include "Concurrency/Thread.h"

#include <algorithm>
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

void EntryArranger::arrange(EntryArrangement::Request request, Running running)
{
    m_waiting.reset();
    if (m_isRunning && running == Running::stops) {
        m_thread.request_stop();
    }
    const bool isStopped = m_thread.get_stop_source().stop_requested();
    if (isQuick(request) && (!m_isRunning || isStopped)) {
        m_rankedCount = request.entries.size();
        Q_EMIT arranged(EntryArrangement{request});
    } else if (m_isRunning) {
        m_waiting = std::move(request);
    } else {
        start(std::move(request));
    }
}

bool EntryArranger::isQuick(const EntryArrangement::Request& request) const
{
    // A list ranks itself when it is read first; what has come since the last time is what that costs.
    const std::size_t count = request.entries.size();
    const std::size_t known = request.isTheList() ? std::min(m_rankedCount, count) : 0;
    return count - known <= quickCount;
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
        m_rankedCount = arrangement.entries().size();
        Q_EMIT arranged(arrangement);
    }
    if (next && !m_isRunning) {
        arrange(*std::move(next), Running::finishes);
    }
}

} // namespace tallyroom
