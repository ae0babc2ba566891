#pragma once

#include "Bridge/Desktop.h"
#include "Bridge/Observable.h"
#include "Controls/Option.h"
#include "Deletion/DeletionRunner.h"
#include "Deletion/DeletionSupport.h"
#include "FileSystem/ScanScope.h"
#include "Model/Entry.h"
#include "Tools/Frame/FolderTool.h"
#include "Tools/Frame/Recovery.h"
#include "Tools/Frame/ScanEnd.h"
#include "Tools/Frame/ToolState.h"

#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace tallyroom {

/// The line that tells how a running scan goes on.
struct ScanLine {
    QString text;
    std::optional<double> fraction; ///< 0 to 1; nothing while the end is not known

    friend bool operator==(const ScanLine&, const ScanLine&) = default;
};

/// What all tools have in common that scan a folder and delete from what they found: the choice of the
/// folder, where the scan is, the search text, and how a deletion or an undo goes on. What is found, and by
/// which scan, is a matter of the tools. Main thread.
class ScanToolViewModel : public FolderTool {
    Q_OBJECT
    Q_PROPERTY(tallyroom::ToolState state READ state NOTIFY stateChanged)
    Q_PROPERTY(std::optional<tallyroom::FileUrl> rootURL READ rootURL NOTIFY rootURLChanged)
    Q_PROPERTY(std::optional<QString> statusMessage READ statusMessage NOTIFY statusMessageChanged)
    Q_PROPERTY(std::optional<tallyroom::UndoableDeletion> undoable READ undoable NOTIFY undoableChanged)
    Q_PROPERTY(std::optional<tallyroom::RemovalProgress> removal READ removal NOTIFY removalChanged)
    Q_PROPERTY(QString searchText READ searchText WRITE setSearchText NOTIFY searchTextChanged)

public:
    using Failures = std::vector<FileRemover::RemovalFailure>;
    using Visitor = std::function<void(const Entry&)>;

    [[nodiscard]] const ToolState& state() const { return m_state; }

    /// How the scan ended that made the list on screen; changes with `state` only.
    [[nodiscard]] const ScanEnd& scanEnd() const { return m_scanEnd; }

    [[nodiscard]] const std::optional<FileUrl>& rootURL() const { return m_rootURL; }

    /// The report of the last deletion or undo.
    [[nodiscard]] const std::optional<QString>& statusMessage() const { return m_statusMessage; }

    /// Whether that report is of a failure; changes with `statusMessage` only.
    [[nodiscard]] ReportTone statusTone() const { return m_statusTone; }

    /// What the last deletion or undo left as it was, and why; changes with `statusMessage` only.
    [[nodiscard]] const Failures& failures() const { return m_failures; }

    /// What else there is to know of the last removal: the volumes have gained something else than it says.
    /// Empty in general; changes with `statusMessage` only.
    [[nodiscard]] const QString& removalNote() const { return m_removalNote; }

    /// The last deletion, as long as it can be undone: until the next one, or until a scan begins.
    [[nodiscard]] const std::optional<UndoableDeletion>& undoable() const { return m_undoable; }

    [[nodiscard]] bool canUndo() const { return m_undoable.has_value(); }

    /// Whether `statusMessage` is about what `undoable` holds in the trash; changes with them only.
    [[nodiscard]] bool tellsOfTrash() const { return m_tellsOfTrash && canUndo(); }

    /// How far this tool's deletion or undo has come, while one runs.
    [[nodiscard]] const std::optional<RemovalProgress>& removal() const { return m_removal; }

    [[nodiscard]] const QString& searchText() const { return m_searchText; }

    /// The choices that its screen offers, in their order.
    [[nodiscard]] const std::vector<Option>& options() const { return m_options; }

    /// Offers another one; its functions must live as long as the tool.
    void addOption(Option option) { m_options.push_back(std::move(option)); }

    /// The folder that the entries on screen come from.
    [[nodiscard]] virtual std::optional<FileUrl> listedFolder() const { return rootURL(); }

    /// How many entries were found, those included that the search text hides.
    [[nodiscard]] virtual std::size_t entryCount() const = 0;

    /// Calls `visit` with every entry found, in the order of the list.
    virtual void forEachEntry(const Visitor& visit) const = 0;

    /// Whether a running scan has something to say of its progress.
    [[nodiscard]] virtual bool hasProgress() const = 0;

    /// The progress line of a running scan.
    [[nodiscard]] virtual ScanLine scanLine() const = 0;

    /// What its finds amount to for somebody who wants room; nothing for a tool that proposes nothing. Linear
    /// in the list; follows `progressChanged` and `remarksChanged`.
    [[nodiscard]] virtual Recovery recovery() const { return {}; }

    /// Whether the list shows something that is still being measured.
    [[nodiscard]] virtual bool isShowingRunning() const { return false; }

    void setSearchText(const QString& text);

    /// Whether only what `recovery` proposes is let through.
    [[nodiscard]] bool isShowingProposed() const { return m_proposed != nullptr; }

    /// Lets only that through, also when it changes, or everything again. Forgotten with the root.
    void showProposed(bool isOnly);

    /// Whether a filter may hide entries.
    [[nodiscard]] virtual bool isFiltering() const { return !m_searchText.isEmpty() || isShowingProposed(); }

    /// Whether the scan did not look for what the filter hides: its list may then be empty because of that.
    [[nodiscard]] virtual bool hasNarrowedScan() const { return false; }

    /// Shows everything again.
    virtual void clearFilter();

    void handleImport(const FolderChoice& choice) override;

    [[nodiscard]] bool isScanning() const override { return m_state.phase == ToolState::Phase::scanning; }

    /// Makes `root` the tool's folder and scans it. By value: the recent folders change under way.
    void open(FileUrl root);

    /// Scans the folder on screen again, without the caches.
    virtual void refresh();

    void followScanRules() override;

    /// Scans again after a stop; what the caches know comes at once.
    void resumeScan();

    /// Stops a running scan and keeps its finds.
    void cancelScan();

    /// What a tool adds to a deletion.
    struct RemovalPlan {
        FileRemover::Screening screening; ///< looks at each item right before it goes
        /// The bytes that come free when `done` has been removed.
        std::function<std::int64_t(const std::vector<Entry>& done)> freed = totalSize;
    };

    /// For a deletion that the person is asked about now: other removals may change the list before the
    /// answer comes, and what was agreed to stays as it was.
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

    /// Puts something else than a removal's report into its place.
    void tell(const QString& message, ReportTone tone);

    /// Takes the report off the screen.
    void dismissStatus();

    /// Leaves the error state for the previous page: the list, or the welcome without one.
    void dismissError();

Q_SIGNALS:
    void rootURLChanged();
    void statusMessageChanged();
    void undoableChanged();
    void removalChanged();
    void searchTextChanged();
    /// Something else than the search text changed what the filter lets through.
    void filterChanged();
    /// The list or the progress of the scan changed: one signal a record.
    void progressChanged();
    /// Something else has changed that rows, summary and `recovery` depend on: an option, or what comes after
    /// the entries.
    void remarksChanged();

protected:
    /// `deletions` must outlive the view model.
    explicit ScanToolViewModel(DeletionRunner& deletions);

    /// Replaces the scan on show by a new one of the same folder.
    virtual void scanAgain() { scan(); }

    /// Takes removed items, and all that lay below them, out of the list.
    virtual void takeOut(PropertyUpdate& update, const std::vector<Entry>& gone) = 0;

    /// Puts restored items into the list. `isOwn`: this tool removed them from the folder that it lists now.
    virtual void putBack(PropertyUpdate& update, const std::vector<Entry>& back, bool isOwn) = 0;

    /// The sizes of these folders have changed.
    virtual void measureAgain(const UrlSet& /*folders*/) {}

    /// The line that reports an undo.
    [[nodiscard]] virtual QString restoreReport(const RemovalOutcome& outcome) const;

    /// Empties the list and starts the scan; called with a root folder set and no scan running.
    virtual void startScan(PropertyUpdate& update) = 0;

    /// Leaves a running scan; nothing of it may arrive any more. Called without one too.
    virtual void dropScan(PropertyUpdate& update) = 0;

    /// A root was chosen: a tool resets the properties that depend on it.
    virtual void rootChosen(PropertyUpdate& /*update*/) {}

    /// Called when the search text changes, or what is proposed.
    virtual void filterChosen() {}

    /// The locations that the filter lets through, never changed; none where it does not look at them.
    [[nodiscard]] const std::shared_ptr<const UrlSet>& proposed() const { return m_proposed; }

    /// Replaces the running scan by a new one; does nothing without a root. For changed options.
    void scan();

    /// The same as a part of a larger step.
    void beginScan(PropertyUpdate& update);

    /// The scan is over: by itself, or because it was stopped.
    void endScan(const ScanEnd& end);

private:
    /// One filling of the list; a removal that began during it finds it expired after the next scan began.
    struct Filling {};

    using Finished = std::function<void(PropertyUpdate& update, const RemovalOutcome& outcome)>;

    void followProposed();
    void forgetUndo(PropertyUpdate& update, const std::vector<Entry>& gone);
    [[nodiscard]] DeletionRunner::Listener listener(Finished finished);
    void beginRemoval(bool isAccepted, const RemovalProgress& progress);
    void follow(const DiskChange& change);
    void report(PropertyUpdate& update, const QString& message, const FileRemover::RemovalResult& result,
                const QString& note = {});
    void showRemoval(const std::optional<RemovalProgress>& progress);
    void showStatus(const std::optional<QString>& message, ReportTone tone);

    DeletionRunner& m_deletions;
    ToolState m_state;
    ScanEnd m_scanEnd;
    std::optional<FileUrl> m_rootURL;
    std::shared_ptr<const ScanScope> m_scanScope; // of the last scan
    std::optional<QString> m_statusMessage;
    ReportTone m_statusTone = ReportTone::done;
    bool m_tellsOfTrash = false;
    Failures m_failures;
    QString m_removalNote;
    std::optional<RemovalProgress> m_removal;
    std::optional<UndoableDeletion> m_undoable;
    std::optional<FileUrl> m_removedFrom; // the folder listed when the last deletion began
    std::shared_ptr<Filling> m_filling = std::make_shared<Filling>();
    QString m_searchText;
    std::shared_ptr<const UrlSet> m_proposed; // while nothing else is shown
    std::vector<Option> m_options;
    std::optional<SecurityScope> m_scope;
};

} // namespace tallyroom
