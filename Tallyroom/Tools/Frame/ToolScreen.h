#pragma once

#include "Deletion/DeleteConfirmation.h"
#include "Text/ToolText.h"
#include "Tools/Frame/ScanToolViewModel.h"

#include <QKeySequence>
#include <QPointer>
#include <QTimer>
#include <QWidget>

#include <functional>
#include <string>

namespace tallyroom {

class EntryRows;
class ScanProgressBar;
class Selection;
class SelectionBar;
class StatusBanner;
class ToolHeader;
class ToolPages;
class ToolTitle;

/// The frame that all tools share that list what they found: header, list, progress, banner, selection bar,
/// and the pages that stand in for the list; the keys too. A tool's screen fills the list, adds its options
/// and overrides where it differs. Main thread.
class ToolScreen : public QWidget {
    Q_OBJECT

public:
    /// The checks. Those of shown entries are what "Supprimer…" is about.
    [[nodiscard]] Selection& selection() const;

    /// Opens the folder chooser.
    void chooseFolder();

    /// Asks whether `entries` are to be deleted; nothing is asked about none.
    void askDeletion(const std::vector<Entry>& entries, DeleteConfirmation::Default choice);

    /// Writes what the list shows as CSV, where the user wants it.
    virtual void exportEntries() = 0;

protected:
    /// The warning before entries are deleted, beyond their number.
    using Caution = DeleteConfirmation::Caution;

    /// `tool` must outlive the screen, which takes `rows` over.
    ToolScreen(ScanToolViewModel& tool, const ToolText& text, EntryRows* rows, QWidget* parent);

    [[nodiscard]] ToolHeader& header() const { return *m_header; }

    /// Puts another view of the list into the place of the rows, or the rows back.
    void showList(QWidget* list);

    /// Adds a list view besides the rows; it becomes visible by `showList`.
    void addList(QWidget* list);

    /// Runs `act` on `keys` while this screen is on show and no text field wants them; the list of keys says
    /// what for by `name`.
    void addShortcut(const QKeySequence& keys, const QString& name, const std::function<void()>& act);

    /// "11 éléments · 86,4 Go"
    [[nodiscard]] virtual QString summary() const = 0;

    /// A warning about the list of a completed scan.
    [[nodiscard]] virtual QString notice() const { return {}; }

    /// Asks where to, writes what `text` makes off the main thread, and says where it is.
    void exportText(std::function<std::string()> text);

    /// The file name that an export proposes, without extension.
    [[nodiscard]] virtual QString exportName() const;

    /// What a row does when it is entered: opens a folder in the explorer, shows a file in the file browser.
    virtual void activate(const Entry& entry);

    [[nodiscard]] virtual Caution caution(const std::vector<Entry>& entries) const;

    /// The entry that the keyboard is on.
    [[nodiscard]] virtual std::optional<Entry> currentEntry() const;

    /// Another folder is about to be shown: checks and place are forgotten.
    virtual void resetView();

    // One a property; a tool that shows more of it extends them.
    virtual void showEntries() = 0;

    /// What the search text and a tool's own filter let through.
    virtual void showFiltered() { showEntries(); }

    /// Other rows are on screen.
    virtual void showRows();
    void showProgress();
    void showFilter();
    void showPage();
    void showChecked();
    void showSummary();
    void showNotice();

    bool event(QEvent* event) override;
    bool focusNextPrevChild(bool next) override;

private:
    void addOptions();
    void makeLayout();
    void connectTool();
    void connectWidgets();
    void addShortcuts();

    /// Runs `show`, which may show several things, and chooses the page once.
    void showTogether(const std::function<void()>& show);

    void showEverything();
    void showState();
    void showBanner();
    void showFooter();
    void dropVanishedChecks();
    [[nodiscard]] bool hasList() const;

    void askFinalDeletion();
    void askDeletionOfChecked(DeleteConfirmation::Default choice);
    void stopOrClearFilter();

    ScanToolViewModel& m_tool;
    ToolText m_text;
    bool m_isPageLater = false;
    bool m_isReportOld = false; // about the folder that was shown before
    QTimer m_spinnerDelay;      // scans that end at once are not worth a spinner

    ToolHeader* m_header;
    QPointer<ToolTitle> m_title; // none where a tool has put something else into its place
    ToolPages* m_pages;
    EntryRows* m_rows;
    ScanProgressBar* m_progress;
    QWidget* m_footer;
    StatusBanner* m_banner;
    SelectionBar* m_selectionBar;
};

} // namespace tallyroom
