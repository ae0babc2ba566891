#pragma once

#include "Removal/FileRemover.h"

#include <QObject>
#include <QPointer>

#include <atomic>
#include <functional>
#include <optional>
#include <stop_token>
#include <thread>
#include <vector>

namespace tallyroom {

/// How far a batch of removals has come.
struct RemovalProgress {
    std::size_t completed = 0;
    std::size_t total = 0;
    bool isRestoring = false; ///< false while deleting

    friend bool operator==(const RemovalProgress&, const RemovalProgress&) = default;
};

/// What deletes one item and what puts one back; the real ones unless a test brings its own. Called on the
/// runner's thread.
struct RemovalOperations {
    std::function<FileRemover::RemovalResult(const FileUrl& url, bool permanently)> remove;
    std::function<FileRemover::RemovalResult(const FileRemover::TrashedItem& item)> restore;

    [[nodiscard]] static RemovalOperations real();
};

/// Deletes and restores off the main thread, one batch at a time for the whole application: a second one is
/// refused while one runs. Destroying the runner waits for the item that is being removed and starts no
/// other. Main thread.
class DeletionRunner : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool isRunning READ isRunning NOTIFY isRunningChanged)

public:
    /// Who asks, and what to call, on the main thread, as long as it lives.
    struct Listener {
        QObject* context = nullptr;
        std::function<void(const RemovalProgress&)> progressed;
        std::function<void(const FileRemover::RemovalResult&)> finished;
    };

    /// What became of a batch that was looked at before it is removed.
    struct Screened {
        std::vector<FileUrl> fine;
        std::vector<FileRemover::RemovalFailure> refused; ///< not touched, and why
    };

    /// Decides what of a batch may be removed; called once, on the runner's thread. After a stop, what it
    /// still passes is not removed.
    using Screening = std::function<Screened(std::vector<FileUrl> urls, const std::stop_token& stop)>;

    explicit DeletionRunner(RemovalOperations operations = RemovalOperations::real());
    ~DeletionRunner() override;

    [[nodiscard]] bool isRunning() const { return m_batch.has_value(); }

    /// Starts removing `urls`, those that `screening` passes where there is one; false when another batch
    /// runs, and nothing is done then.
    [[nodiscard]] bool remove(std::vector<FileUrl> urls, bool permanently, Listener listener,
                              Screening screening = {});

    /// Starts putting `items` back; false when another batch runs, and nothing is done then.
    [[nodiscard]] bool restore(std::vector<FileRemover::TrashedItem> items, Listener listener);

Q_SIGNALS:
    void isRunningChanged();

private:
    struct Batch {
        Listener listener;
        QPointer<QObject> context;
        RemovalProgress progress;
    };

    /// Works on a batch, telling `completed` after every item.
    using Work = std::function<FileRemover::RemovalResult(const std::stop_token& stop)>;

    bool start(std::size_t count, bool isRestoring, Listener listener, Work work);
    template <class Item, class Operation>
    [[nodiscard]] FileRemover::RemovalResult each(const std::vector<Item>& items, const Operation& operation,
                                                  const std::stop_token& stop);
    void complete(std::size_t count);
    void showProgress();
    void finish(const FileRemover::RemovalResult& result);

    RemovalOperations m_operations;
    std::optional<Batch> m_batch;
    std::atomic<std::size_t> m_completed = 0;
    std::atomic<bool> m_isProgressPosted = false;
    std::jthread m_worker;
};

} // namespace tallyroom
