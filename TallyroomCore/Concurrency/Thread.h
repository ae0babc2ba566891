#pragma once

#include <exception>
#include <memory>
#include <stop_token>
#include <thread>
#include <utility>

namespace tallyroom {

/// Runs `action(std::stop_token)` on a thread of its own; the thread is not joinable when the system grants
/// none (a limit on processes or on address space).
template <class Action>
[[nodiscard]] std::jthread tryThread(Action&& action)
{
    try {
        return std::jthread{std::forward<Action>(action)};
    } catch (const std::exception&) { // system_error, or bad_alloc for the thread's own state
        return {};
    }
}

/// The same, but where no thread is granted the action runs at once on the caller's.
template <class Action>
[[nodiscard]] std::jthread runOnThread(Action action)
{
    const auto shared = std::make_shared<Action>(std::move(action));
    auto thread = tryThread([shared](const std::stop_token& stop) { (*shared)(stop); });
    if (!thread.joinable()) {
        (*shared)(std::stop_token{});
    }
    return thread;
}

} // namespace tallyroom
