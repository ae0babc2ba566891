#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <deque>
#include <iterator>
#include <mutex>
#include <utility>
#include <vector>

namespace tallyroom {

/// Work that many workers put aside for each other: a worker takes its newest item, or the oldest one of
/// somebody else, which in a tree is the largest part left. Any thread; a worker's number may be any, and
/// workers may share one.
template <class Item>
class StealingQueues {
public:
    explicit StealingQueues(std::size_t count) : m_queues(count) {}

    [[nodiscard]] bool isEmpty() const { return m_count.load() == 0; }

    /// Leaves `items` empty.
    void put(std::size_t worker, std::vector<Item>& items)
    {
        Queue& queue = queueOf(worker);
        const std::scoped_lock lock{queue.mutex};
        std::ranges::move(items, std::back_inserter(queue.items));
        m_count.fetch_add(items.size());
        items.clear();
    }

    /// False when there is nothing.
    bool take(std::size_t worker, Item& item)
    {
        for (std::size_t step = 0; step < m_queues.size() && !isEmpty(); ++step) {
            Queue& queue = queueOf(worker + step);
            const std::scoped_lock lock{queue.mutex};
            if (queue.items.empty()) {
                continue;
            }
            if (step == 0) {
                item = std::move(queue.items.back());
                queue.items.pop_back();
            } else {
                item = std::move(queue.items.front());
                queue.items.pop_front();
            }
            m_count.fetch_sub(1);
            return true;
        }
        return false;
    }

private:
    struct Queue {
        std::mutex mutex;
        std::deque<Item> items; // guarded by mutex
    };

    Queue& queueOf(std::size_t worker) { return m_queues[worker % m_queues.size()]; }

    std::vector<Queue> m_queues;
    std::atomic<std::size_t> m_count = 0;
};

} // namespace tallyroom
