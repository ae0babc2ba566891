#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <optional>
#include <stop_token>
#include <utility>
#include <vector>

namespace tallyroom {

/// Questions asked on other threads, and the answers so far. The asker owns it; a thread that answers too
/// late finds it gone.
template <class Answer>
class Answers {
public:
    struct Look {
        std::vector<std::optional<Answer>> answers;
        std::size_t open = 0;    ///< not answered yet
        std::size_t refused = 0; ///< not even asked
    };

    explicit Answers(std::size_t count) : m_look{std::vector<std::optional<Answer>>(count), count, 0} {}

    void put(std::size_t place, std::optional<Answer> answer)
    {
        const std::scoped_lock lock{m_mutex};
        m_look.answers[place] = std::move(answer);
        --m_look.open;
        m_changed.notify_all();
    }

    void refuse()
    {
        const std::scoped_lock lock{m_mutex};
        --m_look.open;
        ++m_look.refused;
        m_changed.notify_all();
    }

    /// Waits until at most `open` questions are open, for a stop, or for the time.
    Look waitUntil(std::size_t open, std::chrono::steady_clock::time_point limit,
                   const std::stop_token& stop = {})
    {
        std::unique_lock lock{m_mutex};
        m_changed.wait_until(lock, stop, limit, [&] { return m_look.open <= open; });
        return m_look;
    }

private:
    std::mutex m_mutex;
    std::condition_variable_any m_changed;
    Look m_look; // guarded by m_mutex
};

} // namespace tallyroom
