#include "Tools/Dashboard/DashboardView.h"

#include "Controls/Shortcut.h"
#include "Deletion/EmptyTrashConfirmation.h"
#include "Deletion/StatusBanner.h"
#include "Layout/Boxes.h"
#include "Layout/LayoutNow.h"
#include "Text/FileUrlText.h"
#include "Text/ToolText.h"
#include "Text/VolumeText.h"
#include "Theme/SymbolIcon.h"
#include "Theme/Theme.h"
#include "Tools/Dashboard/BreakdownPanel.h"
#include "Tools/Dashboard/DashboardViewModel.h"
#include "Tools/Dashboard/RecoveryPanel.h"
#include "Tools/Dashboard/VolumeCard.h"
#include "Tools/Dashboard/VolumeGrid.h"
#include "Tools/Frame/ToolTitle.h"

#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>

#include <algorithm>
#include <chrono>
#include <utility>

namespace tallyroom {

namespace {

constexpr std::chrono::milliseconds noticePatience{500};

} // namespace

DashboardView::DashboardView(DashboardViewModel& dashboard, QWidget* parent)
    : QWidget(parent), m_dashboard(dashboard), m_scroll(new QScrollArea),
      m_reload(new QPushButton(QStringLiteral("Recharger"))), m_volumes(new VolumeGrid),
      m_noVolume(new QLabel), m_unanswered(new QLabel), m_banner(new StatusBanner)
{
    m_patience.setSingleShot(true);
    m_patience.setInterval(noticePatience);
    makeLayout();
    addShortcuts();
    connect(&m_patience, &QTimer::timeout, this, &DashboardView::showNotices);
    connect(&m_dashboard, &DashboardViewModel::volumesChanged, this, &DashboardView::showVolumes);
    connect(&m_dashboard, &DashboardViewModel::mainVolumeChanged, this, &DashboardView::showVolumes);
    connect(&m_dashboard, &DashboardViewModel::unansweredVolumesChanged, this, &DashboardView::showNotices);
    connect(&m_dashboard, &DashboardViewModel::isRefreshingChanged, this, &DashboardView::showReading);
    connect(m_reload, &QPushButton::clicked, &m_dashboard, &DashboardViewModel::refresh);
    connect(m_volumes, &VolumeGrid::chosen, &m_dashboard, &DashboardViewModel::explore);
    connectTrash();
    showVolumes();
    showReading();
}

void DashboardView::connectTrash()
{
    TrashViewModel& trash = m_dashboard.trash();
    connect(&trash, &TrashViewModel::contentsChanged, this, &DashboardView::showTrashes);
    connect(&trash, &TrashViewModel::statusMessageChanged, this, &DashboardView::showBanner);
    connect(&trash, &TrashViewModel::removalChanged, this, &DashboardView::showBanner);
    connect(&trash, &TrashViewModel::emptyingReady, this, &DashboardView::askToEmpty);
    connect(m_volumes, &VolumeGrid::emptyRequested, &trash, &TrashViewModel::prepareEmptying);
    connect(m_banner, &StatusBanner::stopRequested, &trash, &TrashViewModel::stop);
    connect(m_banner, &StatusBanner::dismissed, &trash, &TrashViewModel::dismissStatus);
}

void DashboardView::makeLayout()
{
    makePage();
    auto* const column = makeColumn(this, {}, 0);
    column->addWidget(makeHeader());
    column->addWidget(m_scroll, 1);
}

void DashboardView::makePage()
{
    auto* const breakdown = new BreakdownPanel(m_dashboard);
    connect(breakdown, &BreakdownPanel::folderRequested, this, &DashboardView::chooseFolder);
    auto* const page = new QWidget;
    auto* const column =
        makeColumn(page, {Theme::margin, Theme::gap / 2, Theme::margin, Theme::margin}, Theme::cardGap);
    column->addWidget(makeVolumes());
    column->addSpacing(Theme::gap);
    column->addWidget(breakdown);
    auto* const recovery = new RecoveryPanel(m_dashboard);
    connect(recovery, &RecoveryPanel::emptyRequested, &m_dashboard.trash(), &TrashViewModel::prepareEmptying);
    // What comes in above it must not push it off the window.
    connect(&m_dashboard.recovery(), &RecoveryViewModel::searchBegan, recovery, [this, recovery] {
        layOutNow(recovery);
        m_scroll->verticalScrollBar()->setValue(recovery->y() - Theme::cardGap);
    });
    column->addSpacing(Theme::gap);
    column->addWidget(recovery);
    setFocusProxy(recovery);
    column->addStretch(1);
    Theme::style(page, Theme::Surface::window);
    m_scroll->setWidgetResizable(true);
    m_scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_scroll->setFocusPolicy(Qt::NoFocus); // its parts take the keys, and hand on those that scroll
    m_scroll->setWidget(page);
}

/// Into the page too, wherever it is scrolled to.
bool DashboardView::focusNextPrevChild(bool next)
{
    const bool hasMoved = QWidget::focusNextPrevChild(next);
    if (QWidget* const focused = focusWidget(); hasMoved && m_scroll->isAncestorOf(focused)) {
        m_scroll->ensureWidgetVisible(focused);
    }
    return hasMoved;
}

QWidget* DashboardView::makeHeader()
{
    m_reload->setIcon(SymbolIcon::icon("arrow.clockwise"));
    m_reload->setToolTip(QStringLiteral("Recharger l'espace disque (instantané)"));
    Theme::style(m_reload, Theme::Button::plain);
    auto* const header = new QWidget;
    auto* const row = makeRow(
        header, {Theme::margin, Theme::gap + Theme::gap / 2, Theme::margin, Theme::cardGap - Theme::gap / 2});
    row->addWidget(new ToolTitle(ToolTexts::dashboard.name), 1);
    row->addWidget(m_reload);
    row->addSpacing(Theme::windowMenuRoom);
    return header;
}

QWidget* DashboardView::makeVolumes()
{
    Theme::style(m_noVolume, Theme::Surface::card);
    Theme::style(m_noVolume, Theme::Text::secondary);
    Theme::style(m_unanswered, Theme::Text::secondary);
    m_noVolume->setAlignment(Qt::AlignCenter);
    // As high as the card that takes its place.
    const auto measure = [this] { m_noVolume->setFixedHeight(VolumeCard::cardHeight()); };
    connect(&Theme::shared(), &Theme::changed, m_noVolume, measure);
    measure();
    auto* const volumes = new QWidget;
    auto* const column = makeColumn(volumes);
    column->addWidget(m_volumes);
    column->addWidget(m_noVolume);
    column->addWidget(m_unanswered);
    column->addWidget(m_banner);
    return volumes;
}

void DashboardView::addShortcuts()
{
    addShortcut(this, Qt::CTRL | Qt::Key_O, QStringLiteral("Ouvrir un dossier"), [this] { chooseFolder(); });
    addShortcut(this, Qt::Key_F5, QStringLiteral("Recharger les volumes"), [this] { m_dashboard.refresh(); });
    addShortcut(this, Qt::CTRL | Qt::Key_Z, QStringLiteral("Annuler la suppression"),
                [this] { m_dashboard.recovery().undoRemoval(); });
    addShortcut(this, Qt::Key_Escape, QStringLiteral("Arrêter ce qui est en cours"), [this] {
        if (!m_dashboard.recovery().stopRemoval()) {
            m_dashboard.cancelAnalysis();
            m_dashboard.recovery().stop();
        }
    });
}

void DashboardView::chooseFolder()
{
    Desktop::chooseFolder(
        this, m_dashboard.analyzedURL(),
        [&dashboard = m_dashboard](const FolderChoice& choice) { dashboard.handleImport(choice); });
}

void DashboardView::showVolumes()
{
    m_volumes->setVolumes(m_dashboard.volumes(), m_dashboard.mainVolume());
    QWidget* last = m_reload;
    for (VolumeCard* const card : m_volumes->cards()) {
        setTabOrder(std::exchange(last, card), card);
        setTabOrder(std::exchange(last, card->emptyButton()), card->emptyButton());
    }
    showTrashes();
    showNotices();
}

void DashboardView::showTrashes()
{
    m_volumes->setTrashes([this](const VolumeUsage& volume) {
        const auto contents = m_dashboard.trash().of(volume.url);
        return contents == nullptr ? QString{}
                                   : VolumeText::atLeast(contents->totalBytes, contents->unread > 0);
    });
    layOutNow(m_volumes);
}

void DashboardView::showBanner()
{
    const TrashViewModel& trash = m_dashboard.trash();
    m_banner->showMessage(trash.statusMessage(), trash.statusTone(), trash.failures());
    m_banner->showRemoval(trash.removal());
}

/// Asks about what lies there at this moment, and empties that and nothing else.
void DashboardView::askToEmpty(const FileUrl& mountPoint)
{
    const auto contents = m_dashboard.trash().of(mountPoint);
    const auto& cards = m_volumes->cards();
    const auto card =
        std::ranges::find(cards, mountPoint, [](const VolumeCard* one) { return one->usage().url; });
    if (!isVisible() || contents == nullptr || card == cards.end()) {
        return; // the person has gone on to something else
    }
    auto* const dialog =
        new EmptyTrashConfirmation(*contents, FileUrlText::display((*card)->usage().name), this);
    connect(dialog, &QDialog::accepted, &m_dashboard.trash(), [&dashboard = m_dashboard, contents] {
        dashboard.recovery().keepBefore();
        dashboard.trash().empty(contents);
    });
    dialog->open();
}

void DashboardView::showReading()
{
    if (m_dashboard.isRefreshing()) {
        m_patience.start();
    } else {
        m_patience.stop();
    }
    showNotices();
}

/// Shows how many volumes are missing, or that there is none.
void DashboardView::showNotices()
{
    const bool isReading = m_dashboard.isRefreshing();
    const bool isQuiet = m_patience.isActive();
    const bool hasVolumes = !m_volumes->cards().empty();
    m_volumes->setVisible(hasVolumes);
    m_noVolume->setVisible(!hasVolumes);
    const QString reading = isQuiet ? QString{} : QStringLiteral("Lecture des volumes…");
    m_noVolume->setText(isReading ? reading : QStringLiteral("Aucun volume n’a pu être lu."));
    const QString unanswered = VolumeText::unanswered(m_dashboard.unansweredVolumes(), isReading);
    m_unanswered->setText(unanswered);
    m_unanswered->setVisible(!unanswered.isEmpty() && !isQuiet);
    layOutNow(m_volumes);
}

} // namespace tallyroom
