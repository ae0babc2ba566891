#include "Tools/Dashboard/BreakdownPanel.h"

#include "Controls/LinkedLabel.h"
#include "Controls/NoticeLine.h"
#include "Controls/Spinner.h"
#include "Layout/Boxes.h"
#include "Layout/LayoutNow.h"
#include "Settings/RecentFolders.h"
#include "Text/KindText.h"
#include "Text/NumberText.h"
#include "Text/UnreadText.h"
#include "Text/VolumeText.h"
#include "Theme/SymbolIcon.h"
#include "Theme/Theme.h"
#include "Tools/Dashboard/DashboardViewModel.h"
#include "Tools/Dashboard/KindBar.h"
#include "Tools/Dashboard/KindRow.h"
#include "Tools/Frame/FolderButton.h"
#include "Tools/Frame/ToolTitle.h"
#include "Tools/Frame/UnreadList.h"
#include "Welcome/RecentFolderList.h"

#include <QLabel>
#include <QPushButton>

#include <chrono>

namespace tallyroom {

namespace {

using Phase = AnalysisState::Phase;

constexpr std::chrono::milliseconds partsPatience{150};

QLabel* plainLabel(Theme::Text look)
{
    auto* const label = new QLabel;
    Theme::style(label, look);
    return label;
}

} // namespace

BreakdownPanel::BreakdownPanel(DashboardViewModel& dashboard, QWidget* parent)
    : QWidget(parent), m_dashboard(dashboard), m_title(new ToolTitle(QStringLiteral("Répartition par type"))),
      m_error(new QWidget), m_errorSymbol(new QLabel), m_errorText(plainLabel(Theme::Text::body)),
      m_progress(new QWidget), m_scanned(plainLabel(Theme::Text::secondary)), m_kinds(new QWidget),
      m_bar(new KindBar), m_outdated(new NoticeLine), m_total(new LinkedLabel), m_rows(new QVBoxLayout),
      m_account(plainLabel(Theme::Text::secondary)), m_message(plainLabel(Theme::Text::secondary)),
      m_resume(new QPushButton(QStringLiteral("Reprendre"))), m_recentsPlace(new QWidget),
      m_recents(new RecentFolderList)
{
    m_patience.setSingleShot(true);
    m_patience.setInterval(partsPatience);
    Theme::style(m_total, Theme::Text::secondary);
    auto* const column = makeColumn(this);
    column->addWidget(makeHeader());
    column->addWidget(makeCard());
    connect(m_total, &LinkedLabel::linkRequested, this,
            [this] { UnreadList::open(m_dashboard.analysisEnd().unreadPlaces, this); });
    connect(&m_patience, &QTimer::timeout, this, &BreakdownPanel::showParts);
    connect(&m_dashboard, &DashboardViewModel::stateChanged, this, &BreakdownPanel::showState);
    connect(&m_dashboard, &DashboardViewModel::summaryChanged, this, [this] {
        if (!m_dashboard.isScanning()) { // else with the end
            showParts();
        }
    });
    connect(&m_dashboard, &DashboardViewModel::analysisScannedChanged, this, &BreakdownPanel::showProgress);
    connect(&m_dashboard, &DashboardViewModel::analyzedFolderChanged, this, &BreakdownPanel::showState);
    connect(&RecentFolders::shared(), &RecentFolders::urlsChanged, this, &BreakdownPanel::showRecents);
    connect(m_recents, &RecentFolderList::requested, &m_dashboard, &FolderTool::examine);
    connect(&Theme::shared(), &Theme::changed, this, &BreakdownPanel::showErrorSymbol);
    showErrorSymbol();
    showProgress();
    showState();
}

QWidget* BreakdownPanel::makeHeader()
{
    auto* const header = new QWidget;
    auto* const choose = new QPushButton(QStringLiteral("Choisir un dossier…"));
    choose->setIcon(SymbolIcon::icon("folder"));
    Theme::style(choose, Theme::Button::plain);
    connect(choose, &QPushButton::clicked, this, &BreakdownPanel::folderRequested);
    auto* const recents = new FolderButton;
    recents->setIcon(SymbolIcon::icon("clock"));
    connect(recents, &FolderButton::folderRequested, this, &BreakdownPanel::folderRequested);
    connect(recents, &FolderButton::recentRequested, &m_dashboard, &FolderTool::examine);
    auto* const row = makeRow(header);
    row->addWidget(m_title, 1);
    row->addWidget(choose);
    row->addWidget(recents);
    return header;
}

QWidget* BreakdownPanel::makeCard()
{
    auto* const card = new QWidget;
    Theme::style(card, Theme::Surface::card);
    m_message->setAlignment(Qt::AlignCenter);
    m_message->setWordWrap(true);
    m_message->setMinimumHeight(Theme::tallRowHeight);
    Theme::style(m_resume, Theme::Button::plain);
    connect(m_resume, &QPushButton::clicked, &m_dashboard, &DashboardViewModel::resumeAnalysis);
    auto* const column = makeColumn(card, cardMargins);
    column->addWidget(makeError());
    column->addWidget(makeProgress());
    column->addWidget(makeKinds());
    column->addWidget(m_message);
    column->addWidget(m_resume, 0, Qt::AlignHCenter);
    column->addWidget(makeRecents());
    return card;
}

QWidget* BreakdownPanel::makeRecents()
{
    m_recents->setMaximumWidth(Theme::recentsWidth);
    auto* const row = new QHBoxLayout(m_recentsPlace);
    row->setContentsMargins({});
    row->addStretch(1);
    row->addWidget(m_recents, 1000); // as wide as it may be; both sides share the rest
    row->addStretch(1);
    return m_recentsPlace;
}

QWidget* BreakdownPanel::makeError()
{
    m_errorText->setWordWrap(true);
    auto* const row = makeRow(m_error);
    row->addWidget(m_errorSymbol, 0, Qt::AlignTop);
    row->addWidget(m_errorText, 1);
    return m_error;
}

QWidget* BreakdownPanel::makeProgress()
{
    auto* const stop = new QPushButton(QStringLiteral("Arrêter"));
    stop->setIcon(SymbolIcon::icon("stop.fill"));
    Theme::style(stop, Theme::Button::plain);
    connect(stop, &QPushButton::clicked, &m_dashboard, &DashboardViewModel::cancelAnalysis);
    auto* const row = makeRow(m_progress);
    row->addWidget(new Spinner(Theme::iconSize));
    row->addWidget(m_scanned, 1);
    row->addWidget(stop);
    return m_progress;
}

QWidget* BreakdownPanel::makeKinds()
{
    m_rows->setSpacing(0);
    auto* const column = makeColumn(m_kinds);
    column->addWidget(m_outdated);
    column->addWidget(m_bar);
    column->addWidget(m_total);
    column->addLayout(m_rows);
    m_account->setWordWrap(true);
    column->addWidget(m_account);
    connect(m_outdated, &NoticeLine::actionRequested, &m_dashboard, &DashboardViewModel::resumeAnalysis);
    return m_kinds;
}

void BreakdownPanel::showState()
{
    if (m_dashboard.isScanning()) {
        // The screen stays as it is for a moment, in case the new breakdown comes at once.
        m_patience.start();
        return;
    }
    m_patience.stop();
    showParts();
}

void BreakdownPanel::showParts()
{
    const AnalysisState& state = m_dashboard.analysisState();
    const bool isScanning = state.phase == Phase::scanning;
    m_title->setFolder(hasFolder() || isStopped() ? m_dashboard.analyzedFolder() : QString{});
    m_error->setVisible(state.phase == Phase::error);
    m_errorText->setText(state.message);
    m_progress->setVisible(isScanning);
    showKinds();
    m_message->setText(message());
    m_message->setVisible(!m_message->text().isEmpty());
    m_resume->setVisible(state.phase == Phase::none && isStopped());
    showRecents();
}

void BreakdownPanel::showProgress()
{
    m_scanned->setText(QStringLiteral("Analyse… ") + NumberText::files(m_dashboard.analysisScanned()));
}

void BreakdownPanel::showKinds()
{
    while (QLayoutItem* const item = m_rows->takeAt(0)) {
        delete item->widget();
        delete item;
    }
    const std::optional<FolderSummary>& summary = m_dashboard.summary();
    m_kinds->setVisible(summary && !summary->categories.empty());
    if (!summary) {
        return;
    }
    m_outdated->setText(m_dashboard.isOutdated()
                            ? QStringLiteral("Le contenu a changé depuis : ces chiffres datent d’avant.")
                            : QString{},
                        QStringLiteral("Analyser de nouveau"));
    m_total->setContent(KindText::total(*summary), UnreadText::count(m_dashboard.analysisEnd().unreadPlaces));
    const std::optional<VolumeAccount>& account = m_dashboard.volumeAccount();
    m_account->setVisible(account.has_value());
    m_account->setText(account ? VolumeText::account(*account, m_dashboard.analysisEnd().unreadPlaces)
                               : QString{});
    std::vector<KindShare> kinds;
    for (const CategorySize& category : summary->categories) {
        kinds.push_back({category, m_dashboard.fraction(category)});
    }
    m_bar->setKinds(kinds);
    for (const KindShare& kind : kinds) {
        auto* const row = new KindRow(
            {.kind = kind, .largest = kinds.front().category.totalBytes, .isLast = &kind == &kinds.back()});
        connect(row, &KindRow::clicked, &m_dashboard,
                [&dashboard = m_dashboard, name = kind.category.kind] { dashboard.openLargestOf(name); });
        m_rows->addWidget(row);
    }
}

void BreakdownPanel::showRecents()
{
    const std::vector<FileUrl>& recents = RecentFolders::shared().urls();
    m_recents->setRecents(recents);
    m_recentsPlace->setVisible(!hasFolder() && !recents.empty());
    layOutNow(m_recents);
}

/// Whether there is something to be said of a folder.
bool BreakdownPanel::hasFolder() const
{
    return m_dashboard.summary() || m_dashboard.isScanning() ||
           m_dashboard.analysisState().phase == Phase::loaded;
}

bool BreakdownPanel::isStopped() const
{
    return m_dashboard.analysisEnd().kind == ScanEnd::Kind::stopped;
}

void BreakdownPanel::showErrorSymbol()
{
    m_errorSymbol->setPixmap(SymbolIcon::pixmap("exclamationmark.triangle",
                                                Theme::shared().colour(Theme::Colour::danger),
                                                Theme::iconSize, devicePixelRatioF()));
}

/// The words that stand where there are no kinds to show.
QString BreakdownPanel::message() const
{
    const bool hasKinds = m_dashboard.summary() && !m_dashboard.summary()->categories.empty();
    switch (m_dashboard.analysisState().phase) {
    case Phase::none:
        if (isStopped()) {
            return m_dashboard.analysisEnd().emptyText({});
        }
        return QStringLiteral("Choisissez un dossier : Tallyroom compte la place que prend chaque type de "
                              "fichiers.\nRien n’est modifié pendant l’analyse.");
    case Phase::loaded:
        return hasKinds
                   ? QString{}
                   : m_dashboard.analysisEnd().emptyText(QStringLiteral("Aucun fichier dans ce dossier."));
    case Phase::scanning:
    case Phase::error:
        break;
    }
    return {};
}

} // namespace tallyroom
