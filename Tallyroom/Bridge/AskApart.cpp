#include "Bridge/AskApart.h"

#include "Concurrency/Thread.h"

namespace tallyroom {

void runApart(std::move_only_function<void()> work)
{
    std::jthread thread =
        runOnThread([work = std::move(work)](const std::stop_token& /*stop*/) mutable { work(); });
    if (thread.joinable()) {
        thread.detach();
    }
}

} // namespace tallyroom
