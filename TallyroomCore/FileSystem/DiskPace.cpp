#include "FileSystem/DiskPace.h"

#include <algorithm>

namespace tallyroom {

namespace {

using namespace std::chrono_literals;
using std::chrono::nanoseconds;

/// A head that moves takes longer; solid-state disks take a tenth of it.
constexpr nanoseconds longWait = 1500us;

/// A mean below that is not a head's, however many reads it is made of.
constexpr nanoseconds leastMean = 400us;

/// What is not read from the disk for so long lies in memory.
constexpr nanoseconds memoryStretch = 3ms;

/// A head that is led in order moves every 10 ms or so. A disk without a long wait for so long has none.
constexpr nanoseconds quickStretch = 50ms;

/// All readers together are judged by so much of their time.
constexpr nanoseconds window = 50ms;

constexpr int mostPatience = 128;

} // namespace

bool DiskPace::note(const DiskUse& use)
{
    const nanoseconds busy = use.worked + use.slept;
    const bool isRead = use.blocksRead > 0;
    const bool isLong =
        isRead && use.sleeps > 0 && use.slept >= longWait && use.slept / use.sleeps >= leastMean;
    const std::scoped_lock lock{m_mutex};
    const bool wasOrdered = isOrdered();
    if (wasOrdered) {
        noteOrdered(busy, isRead, isLong);
    } else {
        noteWide(busy, isLong ? use.slept : 0ns);
    }
    return isOrdered() != wasOrdered;
}

void DiskPace::noteOrdered(nanoseconds busy, bool isRead, bool isLong)
{
    m_sinceRead = isRead ? 0ns : m_sinceRead + busy;
    m_sinceLongWait = isLong ? 0ns : m_sinceLongWait + busy;
    if (m_sinceRead >= m_patience * memoryStretch || m_sinceLongWait >= m_patience * quickStretch) {
        m_busy = 0ns;
        m_waited = 0ns;
        m_isOrdered = false;
    }
}

void DiskPace::noteWide(nanoseconds busy, nanoseconds waited)
{
    m_busy += busy;
    m_waited += waited;
    if (m_busy < window) {
        return;
    }
    if (2 * m_waited > m_busy) {
        m_patience = std::min(2 * m_patience, mostPatience);
        m_sinceRead = 0ns;
        m_sinceLongWait = 0ns;
        m_isOrdered = true;
    }
    m_busy = 0ns;
    m_waited = 0ns;
}

} // namespace tallyroom
