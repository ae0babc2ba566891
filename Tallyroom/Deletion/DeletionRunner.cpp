#include "Deletion/DeletionRunner.h"

#include "Bridge/AskApart.h"
#include "Deletion/EntryPlaces.h"
#include "Scanning/FileScanner.h"
#include "Volumes/FreeSpace.h"

#include <chrono>
#include <string>
#include <string_view>
#include <utility>

namespace tallyroom {

using FileRemover::BatchOptions;
using FileRemover::RemovalResult;

namespace {

/// How long leaving waits for the item in hand. A rename takes less; a dead mount never answers.
constexpr std::chrono::seconds leavingPatience{2};

/// Puts `folder` and all folders above it into `folders`.
void addWithParents(UrlSet& folders, FileUrl folder)
{
    while (folders.insert(folder).second && folder != folder.parent()) {
        folder = folder.parent();
    }
}

/// Puts the folders around `entries`, up to the root, into `folders`.
void addFoldersOf(const std::vector<Entry>& entries, UrlSet& folders)
{
    EntryPlaces places;
    std::string lastFolder; // the next entry is often from the same one
    for (const Entry& entry : entries) {
        const std::string_view place = places.of(entry);
        const std::string_view folder = place.substr(0, place.find_last_of('/') + 1);
        if (folder != lastFolder) {
            lastFolder = folder;
            addWithParents(folders, FileUrl{std::string{place}}.parent());
        }
    }
}

/// Forgets what the scans know of `entries` and of the folders above them.
void invalidateAround(const std::vector<Entry>& entries)
{
    UrlSet folders;
    for (const Entry& entry : entries) {
        addWithParents(folders, entry.url);
    }
    for (const FileUrl& folder : folders) {
        FileScanner::invalidateCache(folder);
    }
}

/// The entries at `urls`, which are some of theirs in the same order.
std::vector<Entry> entriesAt(const std::vector<FileUrl>& urls, const std::vector<Entry>& entries)
{
    std::vector<Entry> found;
    auto url = urls.begin();
    for (const Entry& entry : entries) {
        if (url != urls.end() && entry.url == *url) {
            found.push_back(entry);
            ++url;
        }
    }
    return found;
}

} // namespace

RemovalOperations RemovalOperations::real()
{
    return {.remove =
                [](std::span<const Entry> entries, bool permanently, const BatchOptions& options) {
                    return FileRemover::remove(entries, permanently, options);
                },
            .restore = [](std::span<const FileRemover::TrashedItem> items,
                          const BatchOptions& options) { return FileRemover::restore(items, options); },
            .deleteTrashed =
                [](std::span<const FileRemover::TrashedItem> items, const BatchOptions& options) {
                    return FileRemover::deleteTrashed(items, options);
                }};
}

DeletionRunner::DeletionRunner(RemovalOperations operations) : m_operations(std::move(operations)) {}

DeletionRunner::~DeletionRunner()
{
    if (m_batch) {
        m_batch->stop.request_stop();
        m_batch->end.wait_for(leavingPatience);
    }
}

std::optional<RemovalProgress> DeletionRunner::progress() const
{
    return m_batch ? std::optional{m_batch->progress} : std::nullopt;
}

bool DeletionRunner::remove(std::vector<Entry> entries, bool permanently, Listener listener,
                            FileRemover::Screening screening)
{
    const auto shared = std::make_shared<const std::vector<Entry>>(std::move(entries));
    return start(shared, shared->size(), permanently ? Kind::forGood : Kind::trashing, std::move(listener),
                 std::move(screening),
                 [shared, permanently, remove = m_operations.remove](const BatchOptions& options) {
                     return remove(*shared, permanently, options);
                 });
}

bool DeletionRunner::restore(UndoableDeletion deletion, Listener listener)
{
    const auto shared = std::make_shared<const std::vector<Entry>>(std::move(deletion.entries));
    const std::size_t count = deletion.trashed.size();
    return start(shared, count, Kind::restoring, std::move(listener), {},
                 [trashed = std::move(deletion.trashed), restore = m_operations.restore](
                     const BatchOptions& options) { return restore(trashed, options); });
}

bool DeletionRunner::empty(std::shared_ptr<const TrashContents> contents, Listener listener)
{
    const auto entries = std::make_shared<const std::vector<Entry>>(contents->entries());
    return start(entries, entries->size(), Kind::forGood, std::move(listener), {},
                 [contents = std::move(contents), empty = m_operations.empty](const BatchOptions& options) {
                     return empty(*contents, options);
                 });
}

bool DeletionRunner::deleteTrashed(const UndoableDeletion& deletion, Listener listener)
{
    return start(std::make_shared<const std::vector<Entry>>(trashedEntries(deletion)),
                 deletion.trashed.size(), Kind::forGood, std::move(listener), {},
                 [trashed = deletion.trashed, remove = m_operations.deleteTrashed](
                     const BatchOptions& options) { return remove(trashed, options); });
}

bool DeletionRunner::start(const Entries& entries, std::size_t count, Kind kind, Listener listener,
                           FileRemover::Screening screening, Work work)
{
    if (m_batch) {
        return false;
    }
    auto [sender, stream] = makeProgressStream<News>();
    const QPointer<QObject> context = listener.context;
    const RemovalProgress progress{.total = count, .isRestoring = kind == Kind::restoring};
    Batch& batch = m_batch.emplace(std::move(listener), context, entries, progress, std::nullopt);
    batch.pump = std::make_unique<StreamPump<News>>(
        std::move(stream), [this](News news) { receive(std::move(news)); }, [this] { finish(); });
    auto telling = std::make_shared<ProgressSender<News>>(std::move(sender));
    BatchOptions options;
    options.stop = batch.stop.get_token();
    options.screening = std::move(screening);
    options.progress = [telling](std::size_t completed, std::size_t) { telling->send({completed, {}}); };
    std::packaged_task<void()> task{[entries, kind, options = std::move(options), work = std::move(work),
                                     telling = std::move(telling)]() mutable {
        FreeSpace free;
        if (kind == Kind::forGood) {
            free.note(*entries); // before anything goes
        }
        RemovalResult result = work(options);
        invalidateAround(*entries);
        const std::size_t completed = result.removed.size() + result.failures.size();
        telling->send({completed, std::move(result), free.gained()});
        options = {};
        telling.reset();
    }};
    batch.end = task.get_future();
    runApart(std::move(task));
    Q_EMIT isRunningChanged();
    return true;
}

void DeletionRunner::stop()
{
    if (m_batch && !m_batch->progress.isStopping) {
        m_batch->stop.request_stop();
        m_batch->progress.isStopping = true;
        showProgress();
    }
}

void DeletionRunner::receive(News news)
{
    m_batch->progress.completed = news.completed;
    m_batch->result = std::move(news.result);
    m_batch->gained = news.gained;
    showProgress();
}

void DeletionRunner::showProgress()
{
    if (m_batch->context != nullptr) {
        m_batch->listener.progressed(m_batch->progress);
    }
}

void DeletionRunner::finish()
{
    const Batch batch = std::move(*std::exchange(m_batch, std::nullopt));
    RemovalOutcome outcome;
    outcome.result = batch.result.value_or(RemovalResult{});
    outcome.gained = batch.gained;
    outcome.notBegun = batch.progress.total - outcome.result.removed.size() - outcome.result.failures.size();
    DiskChange change{.gone = {}, .back = {}, .folders = {}, .asker = batch.context.data()};
    std::vector<Entry>& changed = batch.progress.isRestoring ? change.back : change.gone;
    changed = entriesAt(outcome.result.removed, *batch.entries);
    addFoldersOf(changed, change.folders);
    for (const FileRemover::RemovalFailure& failure : outcome.result.failures) {
        if (failure.freedBytes > 0) {
            addWithParents(change.folders, failure.url);
        }
    }
    if (!change.folders.empty()) {
        Q_EMIT diskChanged(change);
    }
    outcome.done = std::move(changed);
    if (batch.context != nullptr) {
        batch.listener.finished(outcome);
    }
    Q_EMIT isRunningChanged();
}

} // namespace tallyroom
