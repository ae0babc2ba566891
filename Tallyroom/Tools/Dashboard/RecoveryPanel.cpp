#include "Tools/Dashboard/RecoveryPanel.h"

#include "Deletion/StatusBanner.h"
#include "FileSystem/HomeFolder.h"
#include "Layout/Boxes.h"
#include "Layout/LayoutNow.h"
#include "Text/FileUrlText.h"
#include "Text/NumberText.h"
#include "Text/SizeProportion.h"
#include "Text/SizeText.h"
#include "Text/VolumeText.h"
#include "Theme/SymbolIcon.h"
#include "Theme/Theme.h"
#include "Tools/Dashboard/DashboardViewModel.h"
#include "Tools/Dashboard/RecoveryLine.h"
#include "Tools/Dashboard/RecoveryViewModel.h"
#include "Tools/Frame/FolderButton.h"
#include "Tools/Frame/ToolTitle.h"

#include <QLabel>
#include <QPushButton>

#include <algorithm>
#include <tuple>

namespace tallyroom {

namespace {

/// A line with what it is ranked by: those that are known first, then by what may go and by what is left.
struct RankedLine {
    RecoveryLine* line = nullptr;
    RecoveryLine::Content content;
    bool isKnown = false;
    std::int64_t safeBytes = 0;
    std::int64_t otherBytes = 0;

    [[nodiscard]] auto rank() const { return std::tuple{isKnown, safeBytes, otherBytes}; }
};

QString atMost(std::int64_t bytes)
{
    return QStringLiteral("≤\u00a0") + sizeText(bytes);
}

/// What comes back with what a row proposes, and no more than is known of it.
QString gainText(const RecoveryRow& row)
{
    if (!row.reclaim) {
        return atMost(row.recovery.safeBytes);
    }
    const Reclaim& reclaim = *row.reclaim;
    if (reclaim.isExact() || reclaim.atLeast > 0) {
        return VolumeText::atLeast(reclaim.atLeast, !reclaim.isExact());
    }
    return reclaim.unread > 0 ? QStringLiteral("inconnu") : atMost(reclaim.atMost);
}

RankedLine rankedLine(RecoveryLine* line, const RecoveryRow& row)
{
    const Recovery& found = row.recovery;
    const std::int64_t gained = row.reclaim ? row.reclaim->atMost : found.safeBytes;
    const bool isVain = row.reclaim && row.reclaim->isExact() && gained == 0;
    RankedLine ranked{line, {}, row.phase == RecoveryRow::Phase::complete, gained, found.otherBytes};
    ranked.content.words = row.words;
    ranked.content.isBusy = row.phase == RecoveryRow::Phase::running || !found.isKnown;
    if (row.reclaim && row.reclaim->linkedElsewhere > 0) {
        ranked.content.words +=
            QStringLiteral(" · %1 gardés par d’autres noms").arg(sizeText(row.reclaim->linkedElsewhere));
    }
    if (found.safeBytes > 0 && !isVain) {
        ranked.content.figure = row.proposes() ? gainText(row) : sizeText(found.safeBytes);
    }
    if (row.proposes() && !ranked.content.figure.isEmpty()) {
        ranked.content.action = QStringLiteral("Libérer %1…").arg(ranked.content.figure);
    }
    return ranked;
}

RankedLine rankedLine(RecoveryLine* line, const TrashContents& trash)
{
    RankedLine ranked{line, {}, true, trash.totalBytes, 0};
    ranked.content.words = NumberText::plural(trash.items.size(), QStringLiteral("élément")) +
                           QStringLiteral(" · sur le volume de ce dossier");
    ranked.content.figure = VolumeText::atLeast(trash.totalBytes, trash.unread > 0);
    ranked.content.action = QStringLiteral("Vider la corbeille…");
    return ranked;
}

} // namespace

RecoveryPanel::RecoveryPanel(DashboardViewModel& dashboard, QWidget* parent)
    : QWidget(parent), m_dashboard(dashboard), m_recovery(dashboard.recovery()),
      m_title(new ToolTitle(QStringLiteral("À récupérer"))),
      m_search(new QPushButton(QStringLiteral("Chercher dans le dossier personnel"))),
      m_stop(new QPushButton(QStringLiteral("Arrêter"))), m_message(new QLabel), m_column(new QVBoxLayout),
      m_gain(new QWidget), m_gained(new QLabel),
      m_empty(new QPushButton(QStringLiteral("Vider la corbeille…"))), m_banner(new StatusBanner)
{
    auto* const column = makeColumn(this);
    column->addWidget(makeHeader());
    column->addWidget(makeCard());
    connectBanner();
    connect(&m_recovery, &RecoveryViewModel::changed, this, &RecoveryPanel::showEverything);
    connect(&m_recovery, &RecoveryViewModel::removalChanged, this, &RecoveryPanel::showBanner);
    connect(&m_recovery, &RecoveryViewModel::removalChanged, this, &RecoveryPanel::showGain);
    connect(&m_dashboard, &DashboardViewModel::isRefreshingChanged, this, &RecoveryPanel::showGain);
    connect(&m_dashboard, &DashboardViewModel::volumesChanged, this, &RecoveryPanel::showEverything);
    connect(&m_dashboard.trash(), &TrashViewModel::contentsChanged, this, &RecoveryPanel::showEverything);
    setFocusProxy(m_search);
    setVisible(!m_recovery.tools().empty());
    showEverything();
    showBanner();
}

QWidget* RecoveryPanel::makeHeader()
{
    Theme::style(m_search, Theme::Button::primary);
    connect(m_search, &QPushButton::clicked, &m_recovery,
            [this] { m_recovery.examine(HomeFolder::current()); });
    m_stop->setIcon(SymbolIcon::icon("stop.fill"));
    Theme::style(m_stop, Theme::Button::plain);
    connect(m_stop, &QPushButton::clicked, &m_recovery, &RecoveryViewModel::stop);
    auto* const others = new FolderButton;
    others->setAccessibleName(QStringLiteral("Chercher dans un autre dossier"));
    others->setToolTip(others->accessibleName());
    connect(others, &FolderButton::folderRequested, this, &RecoveryPanel::chooseFolder);
    connect(others, &FolderButton::recentRequested, &m_recovery, &RecoveryViewModel::examine);
    auto* const header = new QWidget;
    auto* const row = makeRow(header);
    row->addWidget(m_title, 1);
    row->addWidget(m_stop);
    row->addWidget(m_search);
    row->addWidget(others);
    return header;
}

QWidget* RecoveryPanel::makeCard()
{
    Theme::style(m_message, Theme::Text::secondary);
    m_message->setAlignment(Qt::AlignCenter);
    m_message->setWordWrap(true);
    m_message->setMinimumHeight(Theme::tallRowHeight);
    auto* const card = new QWidget;
    Theme::style(card, Theme::Surface::card);
    m_column->setSpacing(0);
    auto* const column = makeColumn(card, {Theme::cardPadding, Theme::gap, Theme::cardPadding, Theme::gap});
    column->addWidget(m_banner); // what was done is seen without scrolling
    column->addWidget(makeGain());
    column->addWidget(m_message);
    column->addLayout(m_column);
    addLines();
    return card;
}

QWidget* RecoveryPanel::makeGain()
{
    Theme::style(m_gained, Theme::Text::body);
    m_gained->setWordWrap(true);
    Theme::style(m_empty, Theme::Button::plain);
    connect(m_empty, &QPushButton::clicked, this, &RecoveryPanel::requestEmptying);
    auto* const row = makeRow(m_gain);
    row->addWidget(m_gained, 1);
    row->addWidget(m_empty);
    m_gain->hide();
    return m_gain;
}

void RecoveryPanel::addLines()
{
    const std::vector<RecoveryTool>& tools = m_recovery.tools();
    for (std::size_t place = 0; place < tools.size(); ++place) {
        auto* const line = new RecoveryLine(tools[place].name, tools[place].icon, true);
        connect(line, &RecoveryLine::actionRequested, this, [this, place] { ask(place); });
        connect(line, &RecoveryLine::viewRequested, &m_dashboard,
                [&dashboard = m_dashboard, place, tool = tools[place]] {
                    tool.tool->clearFilter();
                    tool.tool->showProposed(dashboard.recovery().rows()[place].proposes());
                    dashboard.view(tool.id);
                });
        m_lines.push_back(line);
        m_column->addWidget(line);
        line->hide();
    }
    m_trash = new RecoveryLine(QStringLiteral("Corbeille"), "trash", false);
    connect(m_trash, &RecoveryLine::actionRequested, this, &RecoveryPanel::requestEmptying);
    m_column->addWidget(m_trash);
    m_trash->hide();
}

void RecoveryPanel::connectBanner()
{
    connect(m_banner, &StatusBanner::stopRequested, &m_recovery, &RecoveryViewModel::stopRemoval);
    connect(m_banner, &StatusBanner::undoRequested, &m_recovery, &RecoveryViewModel::undoRemoval);
    connect(m_banner, &StatusBanner::dismissed, this, [this] {
        if (ScanToolViewModel* const remover = m_recovery.remover()) {
            remover->dismissStatus();
        }
    });
    connect(m_banner, &StatusBanner::finalDeletionRequested, this, &RecoveryPanel::askFinalDeletion);
}

void RecoveryPanel::chooseFolder()
{
    Desktop::chooseFolder(this, m_recovery.folder(), [&recovery = m_recovery](const FolderChoice& choice) {
        recovery.handleImport(choice);
    });
}

void RecoveryPanel::showEverything()
{
    showButtons();
    showLines();
    m_message->setText(message());
    m_message->setVisible(!m_message->text().isEmpty());
    showGain();
    layOutNow(m_message);
}

void RecoveryPanel::showButtons()
{
    const std::optional<FileUrl>& folder = m_recovery.folder();
    m_title->setFolder(!folder                            ? QString{}
                       : *folder == HomeFolder::current() ? QStringLiteral("dossier personnel")
                                                          : FileUrlText::displayFromHome(*folder));
    const bool isSearching = m_recovery.isSearching();
    const bool hadKeyboard = m_search->hasFocus() || m_stop->hasFocus();
    m_stop->setVisible(isSearching);
    m_search->setVisible(!isSearching);
    if (hadKeyboard) { // the toolkit would choose any part of the window
        (isSearching ? m_stop : m_search)->setFocus();
    }
    Theme::style(m_search, m_recovery.folder() ? Theme::Button::plain : Theme::Button::primary);
}

void RecoveryPanel::showLines()
{
    std::vector<RankedLine> lines;
    for (std::size_t place = 0; place < m_recovery.rows().size(); ++place) {
        lines.push_back(rankedLine(m_lines[place], m_recovery.rows()[place]));
    }
    const auto volume = lines.empty() ? std::nullopt : m_dashboard.volumeOf(*m_recovery.folder());
    const auto trash = volume ? m_dashboard.trash().of(volume->url) : nullptr;
    if (trash != nullptr) {
        lines.push_back(rankedLine(m_trash, *trash));
    }
    m_trash->setVisible(trash != nullptr);
    std::ranges::stable_sort(lines, std::ranges::greater{}, &RankedLine::rank);
    const std::int64_t largest =
        lines.empty() ? 0 : std::ranges::max(lines, {}, &RankedLine::safeBytes).safeBytes;
    for (std::size_t place = 0; place < lines.size(); ++place) {
        RankedLine& ranked = lines[place];
        ranked.content.share = SizeProportion::fraction(ranked.safeBytes, largest);
        ranked.content.isLast = place + 1 == lines.size();
        if (m_column->indexOf(ranked.line) != static_cast<int>(place)) {
            m_column->removeWidget(ranked.line);
            m_column->insertWidget(static_cast<int>(place), ranked.line);
        }
        ranked.line->setContent(ranked.content);
        ranked.line->show();
    }
}

QString RecoveryPanel::message() const
{
    if (!m_recovery.error().isEmpty()) {
        return m_recovery.error();
    }
    const std::vector<RecoveryRow>& rows = m_recovery.rows();
    if (rows.empty()) {
        return QStringLiteral(
            "Tallyroom cherche ce qui peut partir sans risque : caches qui se refont, anciens "
            "node_modules, copies en trop.\nRien n’est modifié pendant la recherche.");
    }
    const bool isNothing = m_trash->isHidden() && std::ranges::all_of(rows, [](const RecoveryRow& row) {
                               return row.phase == RecoveryRow::Phase::complete && row.recovery.isKnown &&
                                      row.recovery.safe.empty();
                           });
    return isNothing
               ? QStringLiteral("Rien à proposer dans ce dossier : il n’y a rien qui parte sans risque.")
               : QString{};
}

/// What the volume had before and has now. Waits until it is known anew.
void RecoveryPanel::showGain()
{
    const std::optional<VolumeUsage>& before = m_recovery.volumeBefore();
    m_gain->setVisible(before && !m_gained->text().isEmpty());
    if (!before) {
        m_gained->clear();
        return;
    }
    const ScanToolViewModel* const remover = m_recovery.remover();
    const auto now = m_dashboard.volumeOf(*m_recovery.folder());
    if (!now || m_dashboard.isRefreshing() || (remover != nullptr && remover->removal())) {
        return;
    }
    QString text = QStringLiteral("%1 disponibles avant, %2 maintenant.")
                       .arg(VolumeText::size(before->availableBytes), VolumeText::size(now->availableBytes));
    if (remover != nullptr && remover->tellsOfTrash()) { // other programs write and delete meanwhile
        text = QStringLiteral("Rien n’est encore libéré · ") + text;
    }
    const auto trash = m_dashboard.trash().of(now->url);
    if (trash != nullptr) {
        text += QStringLiteral(" La corbeille contient %1, libérés quand elle sera vidée.")
                    .arg(VolumeText::atLeast(trash->totalBytes, trash->unread > 0));
    }
    m_gained->setText(text);
    m_empty->setVisible(trash != nullptr);
    m_gain->show();
}

void RecoveryPanel::showBanner()
{
    const ScanToolViewModel* const remover = m_recovery.remover();
    if (remover == nullptr) {
        m_banner->showMessage(std::nullopt);
        m_banner->showUndo(false);
        m_banner->showRemoval(std::nullopt);
        return;
    }
    m_banner->showMessage(remover->statusMessage(), remover->statusTone(), remover->failures(),
                          remover->removalNote());
    m_banner->showUndo(remover->canUndo(), remover->tellsOfTrash());
    m_banner->showRemoval(remover->removal());
}

void RecoveryPanel::ask(std::size_t place)
{
    const RecoveryRow row = m_recovery.proposalOf(place);
    if (!row.proposes()) {
        return; // since the line was written
    }
    const std::vector<Entry> proposed = row.recovery.safe.toVector();
    auto* const dialog = new DeleteConfirmation(proposed, DeleteConfirmation::Default::trash,
                                                {row.recovery.caution, {}}, this);
    connect(dialog, &DeleteConfirmation::confirmed, &m_recovery,
            [this, place, plan = m_recovery.tools()[place].tool->planRemoval(proposed)](
                const std::vector<Entry>& entries, bool permanently) {
                m_recovery.remove(place, entries, permanently, plan);
            });
    dialog->open();
}

void RecoveryPanel::askFinalDeletion()
{
    ScanToolViewModel* const remover = m_recovery.remover();
    if (remover == nullptr || !remover->undoable()) {
        return;
    }
    auto* const dialog = new DeleteConfirmation(trashedEntries(*remover->undoable()),
                                                DeleteConfirmation::Default::leaveInTrash, {}, this);
    connect(dialog, &DeleteConfirmation::confirmed, remover, &ScanToolViewModel::deleteTrashed);
    dialog->open();
}

void RecoveryPanel::requestEmptying()
{
    if (const auto volume = m_dashboard.volumeOf(*m_recovery.folder())) {
        Q_EMIT emptyRequested(volume->url);
    }
}

} // namespace tallyroom
