#pragma once

#include "Concurrency/ProgressStream.h"

#include <functional>
#include <memory>
#include <utility>

namespace tallyroom {

/// Runs `work` on a thread of its own that nobody waits for: a call into a dead mount, which never returns,
/// keeps neither the window nor the end of the program. `work` may outlive everything it does not own. Where
/// no thread can be started it runs at once.
void runApart(std::move_only_function<void()> work);

/// The answer of `question`, asked on such a thread, as a stream of one record; for a StreamPump.
template <class Answer>
[[nodiscard]] ProgressStream<Answer> askApart(std::function<Answer()> question)
{
    auto [sender, stream] = makeProgressStream<Answer>();
    runApart([sender = std::make_unique<ProgressSender<Answer>>(std::move(sender)),
              question = std::move(question)]() mutable {
        sender->send(question());
        sender.reset();
    });
    return std::move(stream);
}

} // namespace tallyroom
