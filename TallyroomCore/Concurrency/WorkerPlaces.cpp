#include "Concurrency/WorkerPlaces.h"

#include <algorithm>
#include <utility>

namespace tallyroom {

namespace {

using Clock = std::chrono::steady_clock;

/// How long a worker may sit in one piece of work before it counts as held up.
constexpr std::chrono::seconds longestPiece{1};

} // namespace

WorkerPlace* WorkerPlaces::take()
{
    const auto free = std::ranges::find(m_places, false, &WorkerPlace::isTaken);
    if (free == m_places.end()) {
        return nullptr;
    }
    free->isTaken = true;
    free->isHeldUp = false;
    free->seenAt = Clock::now();
    return &*free;
}

void WorkerPlaces::leave(WorkerPlace& place)
{
    place.isTaken = false;
    place.isHeldUp = false;
}

void WorkerPlaces::look()
{
    const Clock::time_point now = Clock::now();
    for (WorkerPlace& place : m_places) {
        const std::uint64_t beat = place.beat.load(std::memory_order_acquire);
        if (beat % 2 == 0 || beat != place.seenBeat) {
            place.seenBeat = beat;
            place.seenAt = now;
        }
        place.isHeldUp = place.isTaken && now - place.seenAt >= longestPiece;
    }
}

unsigned WorkerPlaces::heldUp() const
{
    return static_cast<unsigned>(std::ranges::count_if(
        m_places, [](const WorkerPlace& place) { return place.isTaken && place.isHeldUp; }));
}

unsigned WorkerPlaces::heldUpWithin(const void* job) const
{
    return static_cast<unsigned>(std::ranges::count_if(m_places, [job](const WorkerPlace& place) {
        return place.isTaken && place.isHeldUp && place.within.load() == job;
    }));
}

std::vector<std::jthread> WorkerPlaces::giveUp()
{
    std::vector<std::jthread> gone;
    for (WorkerPlace& place : m_places) {
        if (place.isTaken && place.thread.joinable()) {
            place.thread.detach();
        } else {
            gone.push_back(std::move(place.thread));
        }
    }
    return gone;
}

} // namespace tallyroom
