#pragma once

#include "Bridge/StreamPump.h"
#include "Concurrency/ProgressStream.h"

#include <QObject>

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

/// Keeps a pump as long as its parent lives.
class PumpHolder : public QObject {
public:
    using QObject::QObject;

    std::shared_ptr<void> pump;
};

/// The same with the answer handed to `then` on the main thread, unless `context` is gone by then.
template <class Answer>
void askApart(QObject* context, std::function<Answer()> question, std::function<void(const Answer&)> then)
{
    auto* const holder = new PumpHolder(context); // goes with the answer
    holder->pump = std::make_shared<StreamPump<Answer>>(
        askApart<Answer>(std::move(question)),
        [holder, then = std::move(then)](const Answer& answer) {
            holder->deleteLater();
            then(answer);
        },
        [] {});
}

} // namespace tallyroom
