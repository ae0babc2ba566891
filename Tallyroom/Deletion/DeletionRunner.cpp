#include "Deletion/DeletionRunner.h"

#include "Concurrency/Thread.h"

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

bool DeletionRunner::remove(std::vector<FileUrl> urls, bool permanently, Listener listener,
                            Screening screening)
{
    const std::size_t count = urls.size();
    const auto removeOne = [permanently, remove = m_operations.remove](const FileUrl& url) {
        return remove(url, permanently);
    };
    return start(
        count, false, std::move(listener),
        [this, removeOne, urls = std::move(urls), screening = std::move(screening)](const auto& stop) {
            if (!screening) {
                return each(urls, removeOne, stop);
            }
            Screened screened = screening(urls, stop);
            complete(screened.refused.size());
            RemovalResult result = each(screened.fine, removeOne, stop);
            moveAppend(result.failures, std::move(screened.refused));
            return result;
        });
}

bool DeletionRunner::restore(std::vector<FileRemover::TrashedItem> items, Listener listener)
{
    const std::size_t count = items.size();
    return start(count, true, std::move(listener),
                 [this, items = std::move(items), restore = m_operations.restore](const auto& stop) {
                     return each(items, restore, stop);
                 });
}

bool DeletionRunner::start(std::size_t count, bool isRestoring, Listener listener, Work work)
{
    if (m_batch) {
        return false;
    }
    const QPointer<QObject> context = listener.context;
    m_batch.emplace(std::move(listener), context, RemovalProgress{0, count, isRestoring});
    m_completed = 0;
    m_worker = runOnThread([this, work = std::move(work)](const std::stop_token& stop) {
        QMetaObject::invokeMethod(
            this, [this, result = work(stop)] { finish(result); }, Qt::QueuedConnection);
    });
    Q_EMIT isRunningChanged();
    return true;
}

template <class Item, class Operation>
RemovalResult DeletionRunner::each(const std::vector<Item>& items, const Operation& operation,
                                   const std::stop_token& stop)
{
    RemovalResult result;
    for (const Item& item : items) {
        if (stop.stop_requested()) {
            break;
        }
        RemovalResult one = operation(item);
        moveAppend(result.removed, std::move(one.removed));
        moveAppend(result.failures, std::move(one.failures));
        moveAppend(result.trashed, std::move(one.trashed));
        complete(1);
    }
    return result;
}

void DeletionRunner::complete(std::size_t count)
{
    m_completed += count;
    // One report under way is enough, it reads the newest count.
    if (!m_isProgressPosted.exchange(true)) {
        QMetaObject::invokeMethod(this, &DeletionRunner::showProgress, Qt::QueuedConnection);
    }
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
