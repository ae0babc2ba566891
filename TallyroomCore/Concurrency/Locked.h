#pragma once

#include <mutex>
#include <utility>

namespace tallyroom {

/// A value that parallel workers share: every read and change happens under its lock. Any thread.
template <class Value>
class Locked {
public:
    Locked() = default;

    explicit Locked(Value value) : m_value(std::move(value)) {}

    /// Runs `action(value)` under the lock and returns its result. `action` must not call foreign code.
    template <class Action>
    decltype(auto) with(Action&& action)
    {
        const std::scoped_lock lock{m_mutex};
        return std::forward<Action>(action)(m_value);
    }

    template <class Action>
    decltype(auto) with(Action&& action) const
    {
        const std::scoped_lock lock{m_mutex};
        return std::forward<Action>(action)(std::as_const(m_value));
    }

    /// A copy of the value as it is now.
    [[nodiscard]] Value get() const
    {
        const std::scoped_lock lock{m_mutex};
        return m_value;
    }

    void set(Value value)
    {
        const std::scoped_lock lock{m_mutex};
        m_value = std::move(value);
    }

private:
    mutable std::mutex m_mutex;
    Value m_value{};
};

} // namespace tallyroom
