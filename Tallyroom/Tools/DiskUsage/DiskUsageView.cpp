#include "Tools/DiskUsage/DiskUsageView.h"

#include "Bridge/AskApart.h"
#include "Deletion/RemovedPlaces.h"
#include "FileSystem/FileAttributes.h"
#include "Layout/Boxes.h"
#include "Rows/Selection.h"
#include "Settings/Settings.h"
#include "Text/FileUrlText.h"
#include "Theme/SymbolIcon.h"
#include "Tools/DiskUsage/Breadcrumb.h"
#include "Tools/DiskUsage/Treemap/TreemapPanel.h"
#include "Tools/Frame/ToolHeader.h"

#include <QButtonGroup>
#include <QKeyEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QPushButton>

#include <algorithm>
#include <array>

namespace tallyroom {

namespace {

const QString treemapKey = QStringLiteral("diskUsage.treemap");

ListToolStyle explorerStyle(const ShownContents& contents, std::function<std::int64_t()> total)
{
    ListToolStyle style{ToolTexts::diskUsage, {}};
    style.table.firstColumnTitle = style.firstColumnTitle;
    style.table.showsChevronForDirectories = true;
    style.table.columns = contentColumns(contents, std::move(total));
    style.columnsKey = QStringLiteral("diskUsage.columns");
    return style;
}

QPushButton* listButton(std::string_view symbol, const QString& name, Theme::Button look)
{
    auto* const button = new QPushButton;
    button->setCheckable(true);
    button->setIcon(SymbolIcon::icon(symbol));
    button->setAccessibleName(name);
    button->setToolTip(QStringLiteral("Basculer entre tableau et treemap"));
    Theme::style(button, look);
    return button;
}

} // namespace

DiskUsageView::DiskUsageView(FolderNavigatorViewModel& navigator, QWidget* parent)
    : ListToolScreen(navigator,
                     explorerStyle(navigator.contents(), [this] { return table().countedBytes(); }), parent),
      m_navigator(navigator), m_back(new QPushButton), m_breadcrumb(new Breadcrumb),
      m_tableButton(listButton("list.bullet", QStringLiteral("Tableau"), Theme::Button::first)),
      m_treemapButton(listButton("square.grid.2x2", QStringLiteral("Treemap"), Theme::Button::last)),
      m_panel(new TreemapPanel(selection())), m_treemap(&m_panel->map())
{
    header().setLeading(makeWayBack());
    header().addOption(makeListChoice());
    addList(m_panel);
    connectTreemap();
    addNavigationShortcuts();
    connect(&m_navigator, &FolderNavigatorViewModel::currentURLChanged, this, &DiskUsageView::changeFolder);
    connect(&m_navigator, &FolderNavigatorViewModel::stateChanged, this, [this] {
        forgetPlace();
        examineDeeperChecks();
    });
    connect(&m_navigator, &FolderNavigatorViewModel::canGoBackChanged, m_back,
            [this] { m_back->setEnabled(m_navigator.canGoBack()); });
    showTreemap(Settings::flag(treemapKey, false));
}

QWidget* DiskUsageView::makeWayBack()
{
    m_back->setIcon(SymbolIcon::icon("chevron.left"));
    m_back->setAccessibleName(QStringLiteral("Retour"));
    m_back->setToolTip(QStringLiteral("Retour"));
    m_back->setEnabled(m_navigator.canGoBack());
    Theme::style(m_back, Theme::Button::icon);
    connect(m_back, &QPushButton::clicked, &m_navigator, &FolderNavigatorViewModel::goBack);
    connect(m_breadcrumb, &Breadcrumb::selected, &m_navigator, &FolderNavigatorViewModel::goTo);
    auto* const way = new QWidget;
    way->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed); // the header shares the room out
    auto* const row = makeRow(way);
    row->addWidget(m_back);
    row->addWidget(m_breadcrumb, 1);
    return way;
}

QWidget* DiskUsageView::makeListChoice()
{
    auto* const choice = new QWidget;
    auto* const row = makeRow(choice, {}, 0);
    auto* const group = new QButtonGroup(choice);
    for (QPushButton* const button : {m_tableButton, m_treemapButton}) {
        group->addButton(button);
        row->addWidget(button);
    }
    connect(group, &QButtonGroup::buttonToggled, this, [this] {
        if (m_treemapButton->isChecked() != m_isTreemapShown) {
            showTreemap(m_treemapButton->isChecked());
            Settings::write(treemapKey, m_isTreemapShown);
        }
    });
    return choice;
}

void DiskUsageView::connectTreemap()
{
    connect(m_treemap, &TreemapView::selectionToggled, this,
            [this](const Entry& entry) { selection().toggle(entry); });
    connect(m_treemap, &TreemapView::lookedCloser, &m_navigator.outline(), &FolderOutline::lookCloser);
    connect(&m_navigator.outline(), &FolderOutline::changed, this, &DiskUsageView::showOutline);
    connect(&m_navigator, &FolderNavigatorViewModel::itemsGone, this,
            [this](const std::vector<Entry>& items) {
                const RemovedPlaces places{items};
                selection().forgetDeeper([&places](const Entry& entry) { return places.covers(entry); });
            });
    connect(m_treemap, &TreemapView::activated, this, [this](const Entry& entry) { activate(entry); });
    connect(m_treemap, &TreemapView::contextMenuRequested, this,
            [this](const Entry& entry, const QPoint& position) {
                QMenu* const menu = table().makeContextMenu(entry).release();
                menu->setParent(m_treemap, menu->windowFlags());
                menu->setAttribute(Qt::WA_DeleteOnClose);
                menu->popup(position);
            });
    // The side button goes back wherever in the list it is pressed.
    for (QWidget* const list : {static_cast<QWidget*>(&table()), static_cast<QWidget*>(m_treemap)}) {
        list->installEventFilter(this);
        for (QWidget* const part : list->findChildren<QWidget*>()) {
            part->installEventFilter(this);
        }
    }
}

bool DiskUsageView::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::MouseButtonPress &&
        static_cast<QMouseEvent*>(event)->button() == Qt::BackButton) {
        m_navigator.goBack();
        return true;
    }
    // The map has a use for Escape too, but what runs is stopped first.
    const bool isEscape =
        event->type() == QEvent::ShortcutOverride && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape;
    if (isEscape && watched == m_treemap && (m_navigator.isScanning() || m_navigator.removal())) {
        event->ignore();
        return true;
    }
    static constexpr std::array ownMoves{QEvent::KeyPress, QEvent::MouseButtonPress, QEvent::Wheel};
    if (std::ranges::find(ownMoves, event->type()) != ownMoves.end()) {
        m_return.reset();
    }
    return ListToolScreen::eventFilter(watched, event);
}

void DiskUsageView::addNavigationShortcuts()
{
    addShortcut(Qt::ALT | Qt::Key_Left, QStringLiteral("Revenir en arrière"),
                [this] { m_navigator.goBack(); });
    addShortcut(Qt::Key_Backspace, QStringLiteral("Revenir en arrière"), [this] { m_navigator.goBack(); });
    addShortcut(Qt::Key_Back, {}, [this] { m_navigator.goBack(); });
    addShortcut(Qt::ALT | Qt::Key_Up, QStringLiteral("Aller au dossier parent"),
                [this] { m_navigator.goUp(); });
    addShortcut(Qt::ALT | Qt::Key_Home, QStringLiteral("Aller au premier dossier"),
                [this] { m_navigator.goToRoot(); });
}

QString DiskUsageView::exportName() const
{
    const auto& folder = m_navigator.currentURL();
    return folder ? FileUrlText::toFileName(FileUrl{std::string{folder->lastPathComponent()}})
                  : ListToolScreen::exportName();
}

void DiskUsageView::activate(const Entry& entry)
{
    m_navigator.activate(entry);
}

std::optional<Entry> DiskUsageView::currentEntry() const
{
    return m_isTreemapShown ? m_treemap->currentEntry() : ListToolScreen::currentEntry();
}

void DiskUsageView::resetView()
{
    ListToolScreen::resetView();
    m_panel->forgetFolder();
    showPlace();
}

void DiskUsageView::showPlace()
{
    m_breadcrumb->setItems(m_navigator.breadcrumb(), m_navigator.wayToRoot());
    m_shownFolder = m_navigator.currentURL();
}

/// On the way back the reader finds the row that he left, and the rows around it where they were.
void DiskUsageView::changeFolder()
{
    const std::optional<FileUrl> left = m_shownFolder;
    if (left) {
        EntryBookmark place = table().bookmark();
        if (const auto current = currentEntry()) {
            place.current = current->url; // the map's, where it is shown
        }
        m_bookmarks.insert_or_assign(*left, std::move(place));
    }
    m_navigator.clearFilter(); // it was typed for the names of another folder
    resetView();
    m_return.reset();
    if (m_shownFolder) {
        if (const auto known = m_bookmarks.find(*m_shownFolder); known != m_bookmarks.end()) {
            m_return = known->second;
        } else if (left && left->isInside(*m_shownFolder)) {
            const std::vector<std::string> components = left->pathComponents();
            m_return.emplace().current =
                m_shownFolder->appending(components[m_shownFolder->pathComponents().size()]);
        }
    }
    std::erase_if(m_bookmarks, [&history = m_navigator.history()](const auto& one) {
        return std::ranges::find(history, one.first) == history.end();
    });
}

void DiskUsageView::returnToPlace()
{
    if (!m_return) {
        return;
    }
    table().goTo(*m_return);
    if (m_return->current) {
        m_treemap->setCurrentEntry(*m_return->current);
    }
    forgetPlace();
}

/// Once all rows are there the place is the reader's own affair.
void DiskUsageView::forgetPlace()
{
    if (!m_navigator.isScanning() && table().isUpToDate()) {
        m_return.reset();
    }
}

/// After a scan: what was checked further down may be gone since, or have grown.
void DiskUsageView::examineDeeperChecks()
{
    const std::vector<Entry> asked = selection().deeperEntries();
    if (m_navigator.isScanning() || asked.empty()) {
        return;
    }
    using Entries = std::vector<Entry>;
    const auto look = [asked] {
        Entries found;
        for (Entry entry : asked) {
            const auto attributes = fileAttributes(entry.url);
            if (attributes && (attributes->type == EntryType::folder) == entry.isDirectory) {
                FileScanner::measure(entry.url).applyTo(entry);
                found.push_back(entry);
            }
        }
        return found;
    };
    askApart<Entries>(this, look,
                      [this, asked](const Entries& found) { selection().renewDeeper(asked, found); });
}

void DiskUsageView::showTreemap(bool isShown)
{
    m_isTreemapShown = isShown;
    (isShown ? m_treemapButton : m_tableButton)->setChecked(true);
    m_navigator.outline().setWanted(isShown);
    showTiles();
    showOutline();
    showList(isShown ? static_cast<QWidget*>(m_panel) : &table());
}

void DiskUsageView::showRows()
{
    ListToolScreen::showRows();
    showTiles();
    returnToPlace();
}

/// A hidden map takes up the rows when it is shown.
void DiskUsageView::showTiles()
{
    if (m_isTreemapShown) {
        const EntryArrangement& rows = table().arrangement();
        std::vector<std::uint32_t> shown;
        rows.shown().forEach([&](std::uint32_t position) { shown.push_back(position); });
        m_treemap->setEntries(rows.entries(), std::move(shown));
    }
}

void DiskUsageView::showOutline()
{
    if (m_isTreemapShown) {
        m_treemap->setOutlines(m_navigator.outline().outlines());
    }
}

} // namespace tallyroom
