#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <utility>

namespace tallyroom {

/// Work in the order of the places where it lies on a disk: always the item at the next higher place, from
/// the lowest again once there is none. A limited number of items is out at the same time; when none of them
/// shows a sign of life for a second, they may hang for good, and others go out beside them. Any thread.
template <class Place, class Item>
class ElevatorQueue {
public:
    struct Taken {
        Item item;
        std::uint64_t ticket = 0;
    };

    /// True when somebody has to be called: fewer than `limit` items are out.
    bool put(const Place& place, Item item, std::size_t limit)
    {
        const std::scoped_lock lock{m_mutex};
        m_items.emplace(place, std::move(item));
        return m_out.size() < limit + m_stuck.size();
    }

    /// The next item, unless there is none, or `limit` are out.
    std::optional<Taken> take(std::size_t limit)
    {
        const std::scoped_lock lock{m_mutex};
        if (m_items.empty()) {
            return std::nullopt;
        }
        const auto now = Clock::now();
        if (m_out.size() >= limit + m_stuck.size()) {
            if (now - m_lastSign < patience) {
                return std::nullopt;
            }
            m_stuck = m_out;
        }
        auto next = m_items.lower_bound(m_place);
        if (next == m_items.end()) {
            next = m_items.begin();
        }
        m_place = next->first;
        Taken taken{std::move(next->second), ++m_tickets};
        m_items.erase(next);
        m_out.insert(taken.ticket);
        m_lastSign = now;
        return taken;
    }

    /// An item that is out gets on.
    void showLife()
    {
        const std::scoped_lock lock{m_mutex};
        m_lastSign = Clock::now();
    }

    /// An item that was taken is done. Returns how many wait.
    std::size_t giveBack(std::uint64_t ticket)
    {
        const std::scoped_lock lock{m_mutex};
        m_out.erase(ticket);
        m_stuck.erase(ticket);
        return m_items.size();
    }

private:
    using Clock = std::chrono::steady_clock;

    static constexpr std::chrono::seconds patience{1};

    std::mutex m_mutex;
    std::multimap<Place, Item> m_items; // guarded by m_mutex, as are those below
    Place m_place{};
    std::uint64_t m_tickets = 0;
    std::set<std::uint64_t> m_out;
    std::set<std::uint64_t> m_stuck; ///< of those that are out
    Clock::time_point m_lastSign;
};

} // namespace tallyroom
