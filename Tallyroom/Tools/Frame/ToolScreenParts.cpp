// How the parts of a tool's screen are put together: ToolScreen.cpp says what they show.
#include "Controls/OptionMenu.h"
#include "Controls/ScanProgressBar.h"
#include "Controls/SearchField.h"
#include "Controls/SelectionBar.h"
#include "Controls/Shortcut.h"
#include "Deletion/StatusBanner.h"
#include "Layout/Boxes.h"
#include "Rows/EntryRows.h"
#include "Rows/Selection.h"
#include "Theme/Theme.h"
#include "Tools/Frame/ToolHeader.h"
#include "Tools/Frame/ToolPages.h"
#include "Tools/Frame/ToolScreen.h"
#include "Tools/Frame/ToolTitle.h"
#include "Tools/Frame/UnreadList.h"

namespace tallyroom {

void ToolScreen::makeLayout()
{
    m_header->setLeading(m_title);
    auto* const footer = makeColumn(m_footer, {Theme::margin, Theme::gap, Theme::margin, Theme::gap});
    footer->addWidget(m_progress);
    footer->addWidget(m_banner);
    auto* const column = makeColumn(this, {}, 0);
    column->addWidget(m_header);
    column->addWidget(m_pages, 1);
    column->addWidget(m_footer);
    column->addWidget(m_selectionBar);
}

void ToolScreen::connectTool()
{
    connect(&m_tool, &ScanToolViewModel::stateChanged, this, &ToolScreen::showState);
    connect(&m_tool, &ScanToolViewModel::progressChanged, this, [this] {
        showTogether([this] {
            showEntries();
            showProgress();
        });
    });
    connect(&m_tool, &ScanToolViewModel::searchTextChanged, this, &ToolScreen::showFilter);
    connect(&m_tool, &ScanToolViewModel::filterChanged, this, [this] {
        showFilter();
        showNotice();
    });
    connect(&m_tool, &ScanToolViewModel::rootURLChanged, this, [this] { resetView(); });
    connect(&m_tool, &ScanToolViewModel::statusMessageChanged, this, [this] {
        m_isReportOld = false;
        showBanner();
    });
    connect(&m_tool, &ScanToolViewModel::undoableChanged, this, &ToolScreen::showBanner);
    connect(&m_tool, &ScanToolViewModel::removalChanged, this, &ToolScreen::showBanner);
    connect(&m_spinnerDelay, &QTimer::timeout, this, &ToolScreen::showPage);
    connect(&DesktopRefusals::shared(), &DesktopRefusals::refused, this, [this](const QString& message) {
        if (isVisible()) {
            m_tool.tell(message, ReportTone::failed);
        }
    });
}

void ToolScreen::connectWidgets()
{
    connect(m_pages, &ToolPages::folderRequested, this, &ToolScreen::chooseFolder);
    connect(m_header, &ToolHeader::folderRequested, this, &ToolScreen::chooseFolder);
    connect(m_header, &ToolHeader::recentRequested, &m_tool, &FolderTool::examine);
    connect(m_header, &ToolHeader::refreshRequested, &m_tool, [this] { m_tool.refresh(); });
    connect(m_header, &ToolHeader::stopRequested, &m_tool, &ScanToolViewModel::cancelScan);
    connect(m_header, &ToolHeader::noticeActionRequested, &m_tool,
            [this] { m_tool.scanEnd().notice().isEmpty() ? m_tool.clearFilter() : m_tool.resumeScan(); });
    connect(m_header, &ToolHeader::unreadRequested, this,
            [this] { UnreadList::open(m_tool.scanEnd().unreadPlaces, this); });
    connect(m_header, &ToolHeader::exportRequested, this, &ToolScreen::exportEntries);
    connect(&m_header->searchField(), &SearchField::textChanged, &m_tool, &ScanToolViewModel::setSearchText);
    connect(&m_header->searchField(), &SearchField::listRequested, m_pages,
            [this] { m_pages->list()->setFocus(Qt::TabFocusReason); });
    connect(&selection(), &Selection::changed, this, &ToolScreen::showChecked);
    connect(m_rows, &EntryRows::rowsChanged, this, [this] { showRows(); });
    connect(m_rows, &EntryRows::activated, this, [this](const Entry& entry) { activate(entry); });
    connect(m_rows, &EntryRows::deleteRequested, this,
            [this](const Entry& entry) { askDeletion({entry}, DeleteConfirmation::Default::trash); });
    connect(m_banner, &StatusBanner::contentChanged, this, &ToolScreen::showFooter);
    connect(m_banner, &StatusBanner::stopRequested, &m_tool, &ScanToolViewModel::stopRemoval);
    connect(m_banner, &StatusBanner::undoRequested, &m_tool, &ScanToolViewModel::undoDeletion);
    connect(m_banner, &StatusBanner::finalDeletionRequested, this, &ToolScreen::askFinalDeletion);
    connect(m_banner, &StatusBanner::dismissed, &m_tool, &ScanToolViewModel::dismissStatus);
    connect(m_selectionBar, &SelectionBar::selectAllRequested, this, [this] { selection().setAll(); });
    connect(m_selectionBar, &SelectionBar::clearRequested, this, [this] { selection().clear(); });
    connect(m_selectionBar, &SelectionBar::deleteRequested, this,
            [this] { askDeletion(selection().checkedEntries(), DeleteConfirmation::Default::trash); });
}

void ToolScreen::addOptions()
{
    for (const Option& option : m_tool.options()) {
        auto* const menu = new OptionMenu(option);
        connect(&m_tool, &ScanToolViewModel::remarksChanged, menu, &OptionMenu::showTitle);
        m_header->addOption(menu);
    }
}

void ToolScreen::addShortcut(const QKeySequence& keys, const QString& name, const std::function<void()>& act)
{
    tallyroom::addShortcut(this, keys, name, act);
}

void ToolScreen::addShortcuts()
{
    addShortcut(Qt::CTRL | Qt::Key_O, QStringLiteral("Ouvrir un dossier"), [this] { chooseFolder(); });
    addShortcut(Qt::Key_F5, QStringLiteral("Analyser de nouveau"), [this] { m_tool.refresh(); });
    addShortcut(Qt::CTRL | Qt::Key_F, QStringLiteral("Filtrer la liste"),
                [this] { m_header->searchField().setFocus(Qt::ShortcutFocusReason); });
    addShortcut(Qt::Key_Escape, QStringLiteral("Arrêter, ou effacer le filtre"),
                [this] { stopOrClearFilter(); });
    addShortcut(Qt::CTRL | Qt::Key_A, QStringLiteral("Cocher tous les éléments"),
                [this] { selection().setAll(); });
    addShortcut(Qt::CTRL | Qt::Key_E, QStringLiteral("Exporter la liste"), [this] { exportEntries(); });
    addShortcut(Qt::CTRL | Qt::Key_Z, QStringLiteral("Annuler la suppression"),
                [this] { m_tool.undoDeletion(); });
    addShortcut(Qt::Key_Delete, QStringLiteral("Supprimer"),
                [this] { askDeletionOfChecked(DeleteConfirmation::Default::trash); });
    addShortcut(Qt::SHIFT | Qt::Key_Delete, QStringLiteral("Supprimer définitivement"),
                [this] { askDeletionOfChecked(DeleteConfirmation::Default::permanent); });
}

} // namespace tallyroom
