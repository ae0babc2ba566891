#pragma once

#include "Bridge/Observable.h"
#include "Deletion/DeletionRunner.h"
#include "Deletion/DeletionSupport.h"
#include "Model/Entry.h"
#include "Tools/Frame/FolderTool.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace tallyroom {

/// A tool that removes what it lists: how a removal or an undo goes on, what it reports, and how the list
/// follows what this tool and others remove and put back. Main thread.
class RemovingTool : public FolderTool {
    Q_OBJECT
    Q_PROPERTY(std::optional<QString> statusMessage READ statusMessage NOTIFY statusMessageChanged)
    Q_PROPERTY(std::optional<tallyroom::UndoableDeletion> undoable READ undoable NOTIFY undoableChanged)
    Q_PROPERTY(std::optional<tallyroom::RemovalProgress> removal READ removal NOTIFY removalChanged)

public:
    using Failures = std::vector<FileRemover::RemovalFailure>;
    using Visitor = std::function<void(const Entry&)>;

    /// The report of the last deletion or undo.
    [[nodiscard]] const std::optional<QString>& statusMessage() const { return m_statusMessage; }

    /// Whether that report is of a failure; changes with `statusMessage` only.
    [[nodiscard]] ReportTone statusTone() const { return m_statusTone; }

    /// What the last deletion or undo left as it was, and why; changes with `statusMessage` only.
    [[nodiscard]] const Failures& failures() const { return m_failures; }

    /// A note on the last removal, where the volumes gained more or less than it reports. Usually empty;
    /// changes with `statusMessage` only.
    [[nodiscard]] const QString& removalNote() const { return m_removalNote; }

    /// The last deletion, as long as it can be undone: until the next one, or until a scan begins.
    [[nodiscard]] const std::optional<UndoableDeletion>& undoable() const { return m_undoable; }

    [[nodiscard]] bool canUndo() const { return m_undoable.has_value(); }

    /// Whether `statusMessage` is about what `undoable` holds in the trash; changes with them only.
    [[nodiscard]] bool tellsOfTrash() const { return m_tellsOfTrash && canUndo(); }

    /// How far this tool's deletion or undo has come, while one runs.
    [[nodiscard]] const std::optional<RemovalProgress>& removal() const { return m_removal; }

    /// The folder that the entries on screen come from.
    [[nodiscard]] virtual std::optional<FileUrl> listedFolder() const = 0;

    /// Calls `visit` with every entry found, in the order of the list.
    virtual void forEachEntry(const Visitor& visit) const = 0;

    /// What a tool adds to a deletion.
    struct RemovalPlan {
        FileRemover::Screening screening; ///< looks at each item right before it goes
        /// The bytes that come free when `done` has been removed.
        std::function<std::int64_t(const std::vector<Entry>& done)> freed = totalSize;
    };

    /// Made when the user is asked: other removals may change the list before the answer, but the plan stays
    /// what the user agreed to.
    [[nodiscard]] virtual RemovalPlan planRemoval(const std::vector<Entry>& /*entries*/) const { return {}; }

    /// Deletes those of the entries found that `urls` names.
    void deleteSelected(const UrlSet& urls, bool permanently);

    /// Deletes `entries` as they were found, by the plan that was made for them. Runs on; the list,
    /// `statusMessage` and `undoable` follow. Does nothing without entries, and says so when another removal
    /// runs.
    void deleteEntries(const std::vector<Entry>& entries, bool permanently, const RemovalPlan& plan);

    /// Puts back what the last deletion moved to the trash. Runs on like a deletion.
    void undoDeletion();

    /// Removes what the last deletion moved to the trash, for good: those items only. Runs on like a
    /// deletion.
    void deleteTrashed();

    /// Ends this tool's deletion or undo after the item in hand; what it did so far is reported and can be
    /// undone.
    void stopRemoval();

    /// Shows another message in place of the report.
    void tell(const QString& message, ReportTone tone) { showStatus(message, tone); }

    /// Takes the report off the screen.
    void dismissStatus() { showStatus(std::nullopt, ReportTone::done); }

Q_SIGNALS:
    void statusMessageChanged();
    void undoableChanged();
    void removalChanged();

protected:
    /// `deletions` must outlive the tool.
    explicit RemovingTool(DeletionRunner& deletions);

    /// Takes removed items, and all that lay below them, out of the list.
    virtual void takeOut(PropertyUpdate& update, const std::vector<Entry>& gone) = 0;

    /// Puts restored items into the list. `isOwn`: this tool removed them from the folder that it lists now.
    virtual void putBack(PropertyUpdate& update, const std::vector<Entry>& back, bool isOwn) = 0;

    /// The sizes of these folders have changed.
    virtual void measureAgain(const UrlSet& /*folders*/) {}

    /// The line that reports an undo.
    [[nodiscard]] virtual QString restoreReport(const RemovalOutcome& outcome) const;

    /// Another list begins to fill: undoing puts entries into the one on screen, so that it is over for what
    /// was removed before, and for a removal that still runs.
    void forgetRemovals(PropertyUpdate& update);

private:
    /// One filling of the list.
    struct Filling {};

    /// Reports an outcome, and returns what can be undone after it.
    using Finished =
        std::function<std::optional<UndoableDeletion>(PropertyUpdate& update, const RemovalOutcome& outcome)>;

    [[nodiscard]] DeletionRunner::Listener listener(Finished finished);
    void beginRemoval(bool isAccepted, const RemovalProgress& progress);
    void follow(const DiskChange& change);
    void forgetUndo(PropertyUpdate& update, const std::vector<Entry>& gone);
    void reportRemoval(PropertyUpdate& update, const RemovalOutcome& outcome, std::int64_t freed,
                       bool permanently);
    void report(PropertyUpdate& update, const QString& message, const FileRemover::RemovalResult& result,
                const QString& note = {});
    void showRemoval(const std::optional<RemovalProgress>& progress);
    void showStatus(const std::optional<QString>& message, ReportTone tone);

    DeletionRunner& m_deletions;
    std::optional<QString> m_statusMessage;
    ReportTone m_statusTone = ReportTone::done;
    bool m_tellsOfTrash = false;
    Failures m_failures;
    QString m_removalNote;
    std::optional<RemovalProgress> m_removal;
    std::optional<UndoableDeletion> m_undoable;
    std::optional<FileUrl> m_removedFrom; // the folder listed when the last deletion began
    std::shared_ptr<Filling> m_filling = std::make_shared<Filling>(); // a removal finds it expired later
};

} // namespace tallyroom
