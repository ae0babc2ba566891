#pragma once

#include "Bridge/StreamPump.h"
#include "Deletion/DeletionSupport.h"
#include "Removal/FileRemover.h"
#include "Removal/TrashContents.h"

#include <QObject>
#include <QPointer>

#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <span>
#include <stop_token>
#include <vector>

namespace tallyroom {

/// How far a batch of removals has come.
struct RemovalProgress {
    std::size_t completed = 0;
    std::size_t total = 0;
    bool isRestoring = false; ///< false while deleting
    bool isStopping = false;  ///< the item in hand is the last one

    friend bool operator==(const RemovalProgress&, const RemovalProgress&) = default;
};

/// How a batch ended.
struct RemovalOutcome {
    FileRemover::RemovalResult result;
    std::vector<Entry> done;  ///< the removed or restored items, in the order given
    std::size_t notBegun = 0; ///< left as it was because the batch was stopped
    /// How much more room their volumes have now, in bytes: after a removal for good, where they said so.
    std::optional<std::int64_t> gained{};
};

/// What a batch changed on the disk.
struct DiskChange {
    std::vector<Entry> gone;        ///< removed
    std::vector<Entry> back;        ///< put back
    UrlSet folders;                 ///< places that hold less or more than before, up to the root
    const QObject* asker = nullptr; ///< the tool that asked for it
};

/// The functions that delete and restore a batch; replaceable in tests. The runner calls them on its own
/// thread.
struct RemovalOperations {
    std::function<FileRemover::RemovalResult(std::span<const Entry> entries, bool permanently,
                                             const FileRemover::BatchOptions& options)>
        remove;
    std::function<FileRemover::RemovalResult(std::span<const FileRemover::TrashedItem> items,
                                             const FileRemover::BatchOptions& options)>
        restore;
    std::function<FileRemover::RemovalResult(std::span<const FileRemover::TrashedItem> items,
                                             const FileRemover::BatchOptions& options)>
        deleteTrashed{};
    std::function<FileRemover::RemovalResult(const TrashContents& contents,
                                             const FileRemover::BatchOptions& options)>
        empty = [](const TrashContents& contents, const FileRemover::BatchOptions& options) {
            return contents.empty(options);
        };

    [[nodiscard]] static RemovalOperations real();
};

/// Deletes and restores off the main thread, one batch at a time for the whole application: a second one is
/// refused while one runs. Destroying the runner stops the batch and waits for the item in hand, but not
/// for a file system that does not answer. Main thread.
class DeletionRunner : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool isRunning READ isRunning NOTIFY isRunningChanged)

public:
    /// The asking object and its callbacks; they run on the main thread as long as it lives.
    struct Listener {
        QObject* context = nullptr;
        std::function<void(const RemovalProgress&)> progressed;
        std::function<void(const RemovalOutcome&)> finished;
    };

    explicit DeletionRunner(RemovalOperations operations = RemovalOperations::real());
    ~DeletionRunner() override;

    [[nodiscard]] bool isRunning() const { return m_batch.has_value(); }

    /// How far the running batch has come; nothing while none runs.
    [[nodiscard]] std::optional<RemovalProgress> progress() const;

    /// Starts removing `entries`; false when another batch runs, and nothing is done then.
    [[nodiscard]] bool remove(std::vector<Entry> entries, bool permanently, Listener listener,
                              FileRemover::Screening screening = {});

    /// Starts restoring deleted items; does nothing and returns false when another batch runs.
    [[nodiscard]] bool restore(UndoableDeletion deletion, Listener listener);

    /// Starts removing what lies in a trash, likewise.
    [[nodiscard]] bool empty(std::shared_ptr<const TrashContents> contents, Listener listener);

    /// Starts removing deleted items from the trash, for good; does nothing and returns false when another
    /// batch runs. The items done are told as they lay in the trash.
    [[nodiscard]] bool deleteTrashed(const UndoableDeletion& deletion, Listener listener);

    /// Ends the running batch after the item in hand.
    void stop();

Q_SIGNALS:
    void isRunningChanged();
    /// A batch has ended and has changed something; the listener hears of its end afterwards.
    void diskChanged(const tallyroom::DiskChange& change);

private:
    /// What the worker sends: the count so far, and the result at the end.
    struct News {
        std::size_t completed = 0;
        std::optional<FileRemover::RemovalResult> result;
        std::optional<std::int64_t> gained{};
    };

    using Entries = std::shared_ptr<const std::vector<Entry>>;
    using Work = std::function<FileRemover::RemovalResult(const FileRemover::BatchOptions& options)>;
    enum class Kind : unsigned char { trashing, forGood, restoring };

    struct Batch {
        Listener listener;
        QPointer<QObject> context;
        Entries entries;
        RemovalProgress progress;
        std::optional<FileRemover::RemovalResult> result;
        std::optional<std::int64_t> gained{};
        std::stop_source stop{};
        std::future<void> end{}; // of the worker
        std::unique_ptr<StreamPump<News>> pump{};
    };

    bool start(const Entries& entries, std::size_t count, Kind kind, Listener listener,
               FileRemover::Screening screening, Work work);
    void receive(News news);
    void showProgress();
    void finish();

    RemovalOperations m_operations;
    std::optional<Batch> m_batch;
};

} // namespace tallyroom
