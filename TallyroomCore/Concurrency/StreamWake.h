#pragma once

#include <functional>
#include <memory>
#include <utility>

namespace tallyroom {

/// What wakes the consumer. Fires when it is destroyed, so that a producer that sends under a lock of its
/// own can declare it before that lock: no foreign code runs under anybody's mutex.
class [[nodiscard]] StreamWake {
public:
    StreamWake() = default;

    explicit StreamWake(std::shared_ptr<const std::function<void()>> callback)
        : m_callback(std::move(callback))
    {}

    StreamWake(const StreamWake&) = delete;
    StreamWake& operator=(const StreamWake&) = delete;
    StreamWake(StreamWake&&) noexcept = default;

    StreamWake& operator=(StreamWake&& other) noexcept
    {
        // One wake-up is as good as two: keep whichever is set.
        if (other.m_callback != nullptr) {
            m_callback = std::move(other.m_callback);
        }
        return *this;
    }

    ~StreamWake()
    {
        if (m_callback != nullptr) {
            (*m_callback)();
        }
    }

private:
    std::shared_ptr<const std::function<void()>> m_callback;
};

} // namespace tallyroom
