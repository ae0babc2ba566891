#include "Tools/Frame/ToolScreen.h"

#include "Controls/ScanProgressBar.h"
#include "Controls/SearchField.h"
#include "Controls/SelectionBar.h"
#include "Deletion/StatusBanner.h"
#include "Rows/EntryRows.h"
#include "Rows/Selection.h"
#include "Text/FileUrlText.h"
#include "Text/NumberText.h"
#include "Text/UnreadText.h"
#include "Tools/Frame/EntryActions.h"
#include "Tools/Frame/ExportFlow.h"
#include "Tools/Frame/ToolHeader.h"
#include "Tools/Frame/ToolPages.h"
#include "Tools/Frame/ToolTitle.h"

#include <QEvent>
#include <QScopedValueRollback>

#include <chrono>

namespace tallyroom {

ToolScreen::ToolScreen(ScanToolViewModel& tool, const ToolText& text, EntryRows* rows, QWidget* parent)
    : QWidget(parent), m_tool(tool), m_text(text), m_header(new ToolHeader(m_text.searchPlaceholder)),
      m_title(new ToolTitle(m_text.name)),
      m_pages(new ToolPages(tool,
                            {m_text.icon,
                             m_text.name,
                             m_text.message,
                             QStringLiteral("Rien n’est modifié pendant l’analyse."),
                             QStringLiteral("Choisir un dossier…"),
                             {}},
                            m_text.emptyMessage)),
      m_rows(rows), m_progress(new ScanProgressBar), m_footer(new QWidget), m_banner(new StatusBanner),
      m_selectionBar(new SelectionBar)
{
    m_spinnerDelay.setSingleShot(true);
    m_spinnerDelay.setInterval(std::chrono::milliseconds{150});
    m_rows->setDeletionEnabled(true);
    m_rows->setAccessibleName(m_text.name);
    m_pages->addList(m_rows);
    makeLayout();
    connectTool();
    connectWidgets();
    addOptions();
    addShortcuts();
    EntryActions::install(*this, *m_rows,
                          {[this] { return currentEntry(); }, [this] { return m_tool.listedFolder(); },
                           [this](const QString& message) { m_tool.tell(message, ReportTone::done); }});
}

bool ToolScreen::event(QEvent* event)
{
    // Before the first showing, and not in the constructor: what a tool's own screen shows counts too.
    if (event->type() == QEvent::Polish) {
        showEverything();
    }
    return QWidget::event(event);
}

void ToolScreen::showTogether(const std::function<void()>& show)
{
    {
        const QScopedValueRollback guard{m_isPageLater, true};
        show();
    }
    showPage();
}

/// A button that hides or is disabled while it has the keyboard hands it to the list; the toolkit would
/// choose any part of the window.
bool ToolScreen::focusNextPrevChild(bool next)
{
    const QWidget* const focused = focusWidget();
    const bool isLost = focused != nullptr && isAncestorOf(focused) &&
                        !(focused->isVisibleTo(this) && focused->isEnabledTo(this));
    if (hasList() && isLost && m_pages->takeKeyboard()) {
        return true;
    }
    return QWidget::focusNextPrevChild(next);
}

void ToolScreen::showEverything()
{
    showTogether([this] {
        resetView();
        m_isReportOld = false;
        showFilter();
        showEntries();
        showState();
    });
    showBanner();
}

void ToolScreen::showBanner()
{
    m_isReportOld ? m_banner->showMessage(std::nullopt)
                  : m_banner->showMessage(m_tool.statusMessage(), m_tool.statusTone(), m_tool.failures(),
                                          m_tool.removalNote());
    m_banner->showUndo(m_tool.canUndo(), m_tool.tellsOfTrash());
    m_banner->showRemoval(m_tool.removal());
}

/// Takes no room while it has nothing to say.
void ToolScreen::showFooter()
{
    m_footer->setVisible(!m_progress->isHidden() || !m_banner->isHidden());
}

void ToolScreen::showState()
{
    if (m_tool.isScanning()) {
        m_spinnerDelay.start();
    } else {
        m_spinnerDelay.stop();
    }
    showTogether([this] {
        dropVanishedChecks();
        showProgress();
        showSummary();
    });
}

void ToolScreen::showNotice()
{
    if (const QString partial = m_tool.scanEnd().notice(); !partial.isEmpty()) {
        m_header->showNotice(partial, QStringLiteral("Reprendre"));
    } else if (m_tool.isShowingProposed() && notice().isEmpty()) {
        m_header->showNotice(QStringLiteral("Seul ce qui peut partir sans risque est affiché."),
                             QStringLiteral("Tout afficher"));
    } else {
        m_header->showNotice(notice());
    }
}

/// Forgets the checks of vanished entries; during a scan no entry is known to have vanished.
void ToolScreen::dropVanishedChecks()
{
    if (!m_tool.isScanning() && m_rows->isUpToDate()) {
        selection().forgetAbsent();
    }
}

void ToolScreen::showRows()
{
    dropVanishedChecks();
    showChecked();
    showPage();
}

bool ToolScreen::hasList() const
{
    const ToolState::Phase phase = m_tool.state().phase;
    return phase == ToolState::Phase::scanning || phase == ToolState::Phase::loaded;
}

void ToolScreen::showPage()
{
    if (m_isPageLater) {
        return;
    }
    const bool hidesEverything = m_tool.isFiltering() && !m_rows->hasRows();
    m_header->showEntryCount(hidesEverything ? 0 : m_tool.entryCount());
    // After a choice that failed, the folder that was there can still be refreshed, or another one chosen.
    const bool isError = m_tool.state().phase == ToolState::Phase::error;
    m_header->setVisible(hasList() || (isError && m_tool.rootURL()));
    m_selectionBar->setVisible(m_tool.isScanning() || (hasList() && m_tool.entryCount() > 0));
    m_pages->showPage(m_spinnerDelay.isActive(), hidesEverything);
    const bool isScanning = m_tool.isScanning() && !m_spinnerDelay.isActive();
    m_header->showScanning(isScanning);
    m_progress->setVisible(isScanning && m_tool.hasProgress());
    showFooter();
}

void ToolScreen::showProgress()
{
    const ScanLine line = m_tool.scanLine();
    m_progress->setProgress(line.text, line.fraction);
    showNotice();
    showPage();
}

void ToolScreen::showFilter()
{
    m_header->searchField().setText(m_tool.searchText());
    showTogether([this] { showFiltered(); });
}

Selection& ToolScreen::selection() const
{
    return m_rows->selection();
}

void ToolScreen::showChecked()
{
    m_selectionBar->setSelection(static_cast<std::int64_t>(selection().count()), selection().bytes());
    showSummary();
}

void ToolScreen::showSummary()
{
    // Nothing is counted as none before the end is known.
    const bool isKnown =
        m_tool.entryCount() > 0 || m_tool.isShowingRunning() || m_tool.scanEnd().isComplete();
    QString text = isKnown ? summary() : QString{};
    if (const std::size_t checked = selection().count(); checked > 0) {
        text += QStringLiteral(" · ") + NumberText::plural(checked, QStringLiteral("sélectionné"));
    }
    m_header->showSummary(text, UnreadText::count(m_tool.scanEnd().unreadPlaces));
}

void ToolScreen::resetView()
{
    if (m_title != nullptr && m_tool.rootURL()) {
        m_title->setFolder(FileUrlText::displayFromHome(*m_tool.rootURL()));
    }
    m_isReportOld = true;
    showBanner();
    m_rows->resetView();
    selection().clear();
}

void ToolScreen::showList(QWidget* list)
{
    m_pages->showList(list);
}

void ToolScreen::addList(QWidget* list)
{
    m_pages->addList(list);
}

void ToolScreen::chooseFolder()
{
    Desktop::chooseFolder(this, m_tool.rootURL(),
                          [&tool = m_tool](const FolderChoice& choice) { tool.handleImport(choice); });
}

void ToolScreen::askDeletion(const std::vector<Entry>& entries, DeleteConfirmation::Default choice)
{
    if (!entries.empty()) {
        auto* const dialog = new DeleteConfirmation(entries, choice, caution(entries), this);
        connect(dialog, &DeleteConfirmation::confirmed, &m_tool,
                [&tool = m_tool, plan = m_tool.planRemoval(entries)](const std::vector<Entry>& confirmed,
                                                                     bool permanently) {
                    tool.deleteEntries(confirmed, permanently, plan);
                });
        dialog->open();
    }
}

void ToolScreen::askFinalDeletion()
{
    if (const auto& undoable = m_tool.undoable()) {
        auto* const dialog = new DeleteConfirmation(trashedEntries(*undoable),
                                                    DeleteConfirmation::Default::leaveInTrash, {}, this);
        connect(dialog, &DeleteConfirmation::confirmed, this, [this] {
            m_pages->takeKeyboard(); // the button goes while the window is not active yet
            m_tool.deleteTrashed();
        });
        dialog->open();
    }
}

void ToolScreen::askDeletionOfChecked(DeleteConfirmation::Default choice)
{
    // Without a check the row that the keyboard is on is meant.
    std::vector<Entry> entries = selection().checkedEntries();
    if (const auto current = currentEntry(); entries.empty() && current) {
        entries.push_back(*current);
    }
    askDeletion(entries, choice);
}

ToolScreen::Caution ToolScreen::caution(const std::vector<Entry>& /*entries*/) const
{
    return {m_text.deletionWarning, {}};
}

void ToolScreen::exportText(std::function<std::string()> text)
{
    const QString part = m_tool.scanEnd().isComplete() ? QString{} : QStringLiteral(" (partiel)");
    exportAsCSV(this, std::move(text), exportName() + part, [this](const FileUrl& file) {
        m_tool.tell(QStringLiteral("Liste exportée dans « %1 ».").arg(FileUrlText::displayFromHome(file)),
                    ReportTone::done);
    });
}

QString ToolScreen::exportName() const
{
    return m_text.name;
}

void ToolScreen::activate(const Entry& entry)
{
    if (entry.isDirectory) {
        m_tool.explore(entry.url);
    } else {
        Desktop::reveal(entry.url);
    }
}

std::optional<Entry> ToolScreen::currentEntry() const
{
    return m_rows->currentEntry();
}

void ToolScreen::stopOrClearFilter()
{
    if (m_tool.removal()) {
        m_tool.stopRemoval();
    } else if (m_tool.isScanning()) {
        m_tool.cancelScan();
    } else {
        m_tool.clearFilter();
    }
}

} // namespace tallyroom
