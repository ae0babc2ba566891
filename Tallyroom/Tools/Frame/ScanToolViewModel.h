#pragma once

#include "Bridge/Desktop.h"
#include "Controls/Option.h"
#include "FileSystem/ScanScope.h"
#include "Tools/Frame/Recovery.h"
#include "Tools/Frame/RemovingTool.h"
#include "Tools/Frame/ScanEnd.h"
#include "Tools/Frame/ToolState.h"

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

/// A tool that scans a folder: the choice of the folder, how far the scan is, and the filter. What it finds,
/// and by which scan, each tool decides. Main thread.
class ScanToolViewModel : public RemovingTool {
    Q_OBJECT
    Q_PROPERTY(tallyroom::ToolState state READ state NOTIFY stateChanged)
    Q_PROPERTY(std::optional<tallyroom::FileUrl> rootURL READ rootURL NOTIFY rootURLChanged)
    Q_PROPERTY(QString searchText READ searchText WRITE setSearchText NOTIFY searchTextChanged)

public:
    [[nodiscard]] const ToolState& state() const { return m_state; }

    /// How the scan ended that made the list on screen; changes with `state` only.
    [[nodiscard]] const ScanEnd& scanEnd() const { return m_scanEnd; }

    [[nodiscard]] const std::optional<FileUrl>& rootURL() const { return m_rootURL; }

    [[nodiscard]] const QString& searchText() const { return m_searchText; }

    /// The choices that its screen offers, in their order.
    [[nodiscard]] const std::vector<Option>& options() const { return m_options; }

    /// Offers another one; its functions must live as long as the tool.
    void addOption(Option option) { m_options.push_back(std::move(option)); }

    [[nodiscard]] std::optional<FileUrl> listedFolder() const override { return rootURL(); }

    /// How many entries were found, those included that the search text hides.
    [[nodiscard]] virtual std::size_t entryCount() const = 0;

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

    /// Leaves the error state for the previous page: the list, or the welcome without one.
    void dismissError();

Q_SIGNALS:
    void rootURLChanged();
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
    void followProposed();

    ToolState m_state;
    ScanEnd m_scanEnd;
    std::optional<FileUrl> m_rootURL;
    std::shared_ptr<const ScanScope> m_scanScope; // of the last scan
    QString m_searchText;
    std::shared_ptr<const UrlSet> m_proposed; // while nothing else is shown
    std::vector<Option> m_options;
    std::optional<SecurityScope> m_scope;
};

} // namespace tallyroom
