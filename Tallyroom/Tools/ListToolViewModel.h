#pragma once

#include "Bridge/Desktop.h"
#include "Bridge/Observable.h"
#include "Bridge/StreamPump.h"
#include "Deletion/DeletionRunner.h"
#include "Deletion/DeletionSupport.h"
#include "Scanning/FileScanner.h"
#include "Tools/FolderTool.h"
#include "Tools/ToolState.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

namespace tallyroom {

/// The line that tells how a running scan goes on.
struct ScanLine {
    QString text;
    std::optional<double> fraction; ///< 0 to 1; nothing while the end is not known

    friend bool operator==(const ScanLine&, const ScanLine&) = default;
};

/// What all tools that list entries have in common: the choice of a folder, the scan and its progress, the
/// filter, deletion and undo. A tool adds `startScan` and what only it knows. Main thread.
class ListToolViewModel : public FolderTool {
    Q_OBJECT
    Q_PROPERTY(tallyroom::ToolState state READ state NOTIFY stateChanged)
    Q_PROPERTY(tallyroom::EntryList entries READ entries NOTIFY entriesChanged)
    Q_PROPERTY(std::optional<tallyroom::FileUrl> rootURL READ rootURL NOTIFY rootURLChanged)
    Q_PROPERTY(std::int64_t scanCompleted READ scanCompleted NOTIFY scanCompletedChanged)
    Q_PROPERTY(std::int64_t scanTotal READ scanTotal NOTIFY scanTotalChanged)
    Q_PROPERTY(bool isDiscovering READ isDiscovering NOTIFY isDiscoveringChanged)
    Q_PROPERTY(std::optional<QString> statusMessage READ statusMessage NOTIFY statusMessageChanged)
    Q_PROPERTY(std::optional<tallyroom::UndoableDeletion> undoable READ undoable NOTIFY undoableChanged)
    Q_PROPERTY(std::optional<tallyroom::RemovalProgress> removal READ removal NOTIFY removalChanged)
    Q_PROPERTY(QString searchText READ searchText WRITE setSearchText NOTIFY searchTextChanged)

public:
    /// What the search text is looked for in.
    enum class FilterSubject { name, path };
    /// Whether a scan begins by looking for its work items.
    enum class ScanBeginning { measuring, discovering };

    [[nodiscard]] const ToolState& state() const { return m_state; }

    /// The results, in the order in which the scan delivers them.
    [[nodiscard]] const EntryList& entries() const { return m_entries; }

    [[nodiscard]] const std::optional<FileUrl>& rootURL() const { return m_rootURL; }

    [[nodiscard]] std::int64_t scanCompleted() const { return m_scanCompleted; }

    [[nodiscard]] std::int64_t scanTotal() const { return m_scanTotal; }

    [[nodiscard]] bool isDiscovering() const { return m_isDiscovering; }

    /// The report of the last deletion or undo.
    [[nodiscard]] const std::optional<QString>& statusMessage() const { return m_statusMessage; }

    /// The last deletion, as long as it can be undone.
    [[nodiscard]] const std::optional<UndoableDeletion>& undoable() const { return m_undoable; }

    /// How far this tool's deletion or undo has come, while one runs.
    [[nodiscard]] const std::optional<RemovalProgress>& removal() const { return m_removal; }

    [[nodiscard]] const QString& searchText() const { return m_searchText; }

    /// Whether an entry contains the search text; empty while there is none. A copy of what it needs: it may
    /// be called on any thread.
    [[nodiscard]] std::function<bool(const Entry&)> filter() const;

    /// `entries` that contain the search text, in the same order. Linear in the list.
    [[nodiscard]] EntryList filteredEntries() const;

    /// The bytes of all `entries`, also of those that the filter hides. Linear in the list.
    [[nodiscard]] std::int64_t totalSize() const;

    /// scanCompleted / scanTotal; 0 while the total is not known.
    [[nodiscard]] double scanFraction() const;

    /// What is said of a running scan.
    [[nodiscard]] virtual ScanLine scanLine() const;

    /// The folder that the entries on screen come from.
    [[nodiscard]] virtual std::optional<FileUrl> listedFolder() const { return m_rootURL; }

    void setSearchText(const QString& text);

    void handleImport(const FolderChoice& choice) override;

    [[nodiscard]] bool isScanning() const override { return m_state.phase == ToolState::Phase::scanning; }

    [[nodiscard]] QString scanReport() const override;

    /// Makes `root` the tool's folder and scans it. By value: the recent folders change under way.
    void open(FileUrl root);

    /// Scans again what is on screen, without what the caches know.
    virtual void refresh();

    /// Stops a running scan and keeps what it has found.
    void cancelScan();

    /// Deletes the entries that `urls` names. Runs on; `entries`, `statusMessage` and `undoable` follow.
    void deleteSelected(const UrlSet& urls, bool permanently);

    /// Puts back what the last deletion moved to the trash. Runs on like a deletion.
    void undoDeletion();

    /// Takes the report off the screen.
    void dismissStatus();

    /// Leaves the error state for what was there before: the list, or the welcome when there is none.
    void dismissError();

Q_SIGNALS:
    void entriesChanged();
    void rootURLChanged();
    void scanCompletedChanged();
    void scanTotalChanged();
    void isDiscoveringChanged();
    void statusMessageChanged();
    void undoableChanged();
    void removalChanged();
    void searchTextChanged();

protected:
    /// `deletions` must outlive the view model.
    ListToolViewModel(FilterSubject filterSubject, ScanBeginning beginning, DeletionRunner& deletions);

    /// Starts the scan that fills the list; called with a root folder set and no scan running.
    [[nodiscard]] virtual FileScanner::ScanStream startScan() = 0;

    /// A root was chosen and will be scanned: a tool writes here what goes with it.
    virtual void rootChosen(PropertyUpdate& /*update*/) {}

    /// Items of `folder`'s list were deleted or put back on the disk.
    virtual void changedOnDisk(const FileUrl& folder) { FileScanner::invalidateCache(folder); }

    /// Replaces the running scan by a new one; does nothing without a root. For changed options.
    void scan();

    /// The same as a part of a larger step.
    void beginScan(PropertyUpdate& update);

private:
    /// One filling of the list. What was asked for one listing finds it expired after the next began.
    struct Listing {
        UrlSet removed;              ///< deleted while it filled: the scan may still report them
        std::vector<Entry> restored; ///< put back while it filled: the scan may have passed them by
    };

    struct Request {
        std::weak_ptr<Listing> listing;
        std::optional<FileUrl> folder;
    };

    [[nodiscard]] Request requestNow() const { return {m_listing, listedFolder()}; }

    void receive(const ScanProgress& record);
    void endScan();
    [[nodiscard]] EntryList amended(const EntryList& found) const;
    [[nodiscard]] DeletionRunner::Listener
    listener(std::function<void(const FileRemover::RemovalResult&)> finished);
    void showRemoval(const std::optional<RemovalProgress>& progress);
    void refuseRemoval();
    void finishDeletion(const FileRemover::RemovalResult& result, const std::vector<Entry>& targets,
                        bool permanently, const Request& request);
    void finishRestore(const FileRemover::RemovalResult& result, const UndoableDeletion& undone,
                       const Request& request);

    FilterSubject m_filterSubject;
    ScanBeginning m_beginning;
    DeletionRunner& m_deletions;
    ToolState m_state;
    EntryList m_entries;
    std::optional<FileUrl> m_rootURL;
    std::int64_t m_scanCompleted = 0;
    std::int64_t m_scanTotal = 0;
    bool m_isDiscovering = false;
    std::optional<QString> m_statusMessage;
    std::optional<UndoableDeletion> m_undoable;
    std::optional<RemovalProgress> m_removal;
    QString m_searchText;
    std::optional<SecurityScope> m_scope;
    std::shared_ptr<Listing> m_listing = std::make_shared<Listing>();
    std::unique_ptr<StreamPump<ScanProgress>> m_pump;
};

} // namespace tallyroom
