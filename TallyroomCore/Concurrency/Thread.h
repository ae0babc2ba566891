#pragma once

#include <exception>
#include <memory>
#include <stop_token>
#include <thread>
#include <utility>

namespace tallyroom {

/// Runs `action(std::stop_token)` on a thread of its own. When the system grants no thread (a limit on
/// processes or on address space), runs it at once on the caller's, and returns a thread that is not
/// joinable.
template <class Action>
[[nodiscard]] std::jthread runOnThread(Action action)
{
    const auto shared = std::make_shared<Action>(std::move(action));
    try {
        return std::jthread{[shared](const std::stop_token& stop) { (*shared)(stop); }};
    } catch (const std::exception&) { // system_error, or bad_alloc for the thread's own state
    }
    (*shared)(std::stop_token{});
    return {};
}

} // namespace tallyroom
