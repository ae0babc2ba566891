#include "Deletion/DeletionRunner.h"

#include <iterator>
#include <span>
#include <utility>

namespace tallyroom {

using FileRemover::RemovalResult;

namespace {

template <class Item>
void moveAppend(std::vector<Item>& all, std::vector<Item>&& some)
{
    all.insert(all.end(), std::make_move_iterator(some.begin()), std::make_move_iterator(some.end()));
}

} // namespace

RemovalOperations RemovalOperations::real()
{
    return {.remove =
                [](const FileUrl& url, bool permanently) {
                    return FileRemover::remove(std::span{&url, 1}, permanently);
                },
            .restore =
                [](const FileRemover::TrashedItem& item) {
                    return FileRemover::restore(std::span{&item, 1});
                }};
}

DeletionRunner::DeletionRunner(RemovalOperations operations) : m_operations(std::move(operations)) {}

DeletionRunner::~DeletionRunner()
{
    // Joined here and not by the member's end: what it posts must not find half an object.
    m_worker.request_stop();
    if (m_worker.joinable()) {
        m_worker.join();
    }
}

bool DeletionRunner::remove(std::vector<FileUrl> urls, bool permanently, Listener listener)
{
    const std::size_t count = urls.size();
    return start(count, false, std::move(listener),
                 [urls = std::move(urls), permanently, remove = m_operations.remove](std::size_t index) {
                     return remove(urls[index], permanently);
                 });
}

bool DeletionRunner::restore(std::vector<FileRemover::TrashedItem> items, Listener listener)
{
    const std::size_t count = items.size();
    return start(count, true, std::move(listener),
                 [items = std::move(items), restore = m_operations.restore](std::size_t index) {
                     return restore(items[index]);
                 });
}

bool DeletionRunner::start(std::size_t count, bool isRestoring, Listener listener, Step step)
{
    if (m_batch) {
        return false;
    }
    const QPointer<QObject> context = listener.context;
    m_batch.emplace(std::move(listener), context, RemovalProgress{0, count, isRestoring});
    m_completed = 0;
    m_worker = std::jthread{
        [this, count, step = std::move(step)](const std::stop_token& stop) { run(stop, count, step); }};
    Q_EMIT isRunningChanged();
    return true;
}

void DeletionRunner::run(const std::stop_token& stop, std::size_t count, const Step& step)
{
    RemovalResult result;
    for (std::size_t index = 0; index < count && !stop.stop_requested(); ++index) {
        RemovalResult one = step(index);
        moveAppend(result.removed, std::move(one.removed));
        moveAppend(result.failures, std::move(one.failures));
        moveAppend(result.trashed, std::move(one.trashed));
        m_completed = index + 1;
        // One report under way is enough, it reads the newest count.
        if (!m_isProgressPosted.exchange(true)) {
            QMetaObject::invokeMethod(this, &DeletionRunner::showProgress, Qt::QueuedConnection);
        }
    }
    QMetaObject::invokeMethod(
        this, [this, result = std::move(result)] { finish(result); }, Qt::QueuedConnection);
}

void DeletionRunner::showProgress()
{
    m_isProgressPosted = false;
    if (!m_batch) {
        return;
    }
    m_batch->progress.completed = m_completed;
    if (m_batch->context != nullptr) {
        m_batch->listener.progressed(m_batch->progress);
    }
}

void DeletionRunner::finish(const RemovalResult& result)
{
    const Batch batch = *std::exchange(m_batch, std::nullopt);
    if (batch.context != nullptr) {
        batch.listener.finished(result);
    }
    Q_EMIT isRunningChanged();
}

} // namespace tallyroom
