#include "Shell/ContentView.h"

#include "Controls/Shortcut.h"
#include "Layout/TabOrder.h"
#include "Settings/Settings.h"
#include "Shell/Sidebar.h"
#include "Shell/ToolRegistry.h"
#include "Text/FileUrlText.h"
#include "Theme/SymbolIcon.h"
#include "Theme/Theme.h"
#include "Welcome/MessagePage.h"

#include <QApplication>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QHBoxLayout>
#include <QMessageBox>
#include <QMimeData>
#include <QPushButton>
#include <QStackedWidget>
#include <QTimer>

#include <algorithm>
#include <chrono>

namespace tallyroom {

namespace {

constexpr QSize smallestSize{700, 450};
constexpr QSize defaultSize{900, 600};
constexpr qint64 longScan = 10'000;                // milliseconds
constexpr std::chrono::seconds closingPatience{3}; // with the item in hand, when the window is closed
const QString geometryKey = QStringLiteral("window.geometry");

std::optional<FileUrl> droppedFolder(const QMimeData* dropped)
{
    const QList<QUrl> urls = dropped->urls();
    return urls.isEmpty() ? std::nullopt : FileUrlText::fromUrl(urls.first());
}

} // namespace

ContentView::ContentView(RemovalOperations operations)
    : m_store(std::move(operations)), m_sidebar(new Sidebar(ToolRegistry::all())),
      m_detail(new QStackedWidget), m_placeholder(new MessagePage("sidebar.left"))
{
    setWindowTitle(QStringLiteral("Tallyroom"));
    setWindowIcon(SymbolIcon::application());
    setMinimumSize(smallestSize);
    setAcceptDrops(true);
    makeLayout();
    addShortcuts();
    restoreSize();
    std::ranges::for_each(ToolRegistry::all(), [this](const ToolDescriptor& tool) { watch(tool); });
    m_store.dashboard.recovery().setTools(ToolRegistry::recoveryTools(m_store));
    connect(&m_store.dashboard, &DashboardViewModel::toolRequested, this, &ContentView::selectTool);
    connect(&m_store.dashboard, &DashboardViewModel::largestRequested, this,
            [this](const FileUrl& folder, FileKind kind) {
                selectTool(QStringLiteral("large-files"));
                m_store.largeFiles.openLargestOf(folder, kind);
            });
    connect(m_sidebar, &Sidebar::selected, this, &ContentView::selectTool);
    selectTool(ToolRegistry::initial().id);
    m_detail->currentWidget()->setFocus(); // Enter takes what it offers first
}

void ContentView::makeLayout()
{
    m_placeholder->setText(QStringLiteral("Aucun outil sélectionné"),
                           QStringLiteral("Choisissez un outil dans la barre latérale."));
    m_detail->addWidget(m_placeholder);
    auto* const row = new QHBoxLayout(this);
    row->setContentsMargins({});
    row->setSpacing(0);
    row->addWidget(m_sidebar);
    row->addWidget(m_detail, 1);
}

void ContentView::addShortcuts()
{
    addShortcut(this, Qt::CTRL | Qt::Key_Q, [this] { close(); });
    const auto& tools = ToolRegistry::all();
    for (std::size_t index = 0; index < tools.size(); ++index) {
        addShortcut(this, Qt::CTRL | static_cast<Qt::Key>(Qt::Key_1 + static_cast<int>(index)),
                    [this, id = tools[index].id] { selectTool(id); });
    }
}

void ContentView::selectTool(const QString& id)
{
    if (assignIfChanged(m_selectedToolID, id)) {
        showTool();
        Q_EMIT selectedToolChanged();
    }
}

void ContentView::showTool()
{
    m_sidebar->showSelected(m_selectedToolID);
    const ToolDescriptor* const tool = ToolRegistry::find(m_selectedToolID);
    if (tool == nullptr) {
        m_detail->setCurrentWidget(m_placeholder);
        return;
    }
    QWidget*& screen = m_screens[tool];
    if (screen == nullptr) {
        screen = tool->makeView(m_store);
        m_detail->addWidget(screen);
    }
    m_detail->setCurrentWidget(screen);
}

void ContentView::openFolder(const FileUrl& folder)
{
    selectTool(QStringLiteral("disk-usage"));
    Desktop::examine(this, folder,
                     [this](const FolderChoice& choice) { m_store.diskUsage.handleImport(choice); });
}

void ContentView::watch(const ToolDescriptor& descriptor)
{
    FolderTool& tool = descriptor.tool(m_store);
    connect(&tool, &FolderTool::explorationRequested, this, &ContentView::openFolder);
    connect(&tool, &FolderTool::stateChanged, this, [this, &descriptor, &tool] {
        m_sidebar->showBusy(descriptor.id, tool.isScanning());
        const auto since = m_scansSince.find(&descriptor);
        if (tool.isScanning() && since == m_scansSince.end()) {
            m_scansSince[&descriptor].start();
        } else if (!tool.isScanning() && since != m_scansSince.end()) {
            if (since->second.hasExpired(longScan) && !isActiveWindow()) {
                Desktop::notify(descriptor.name + QStringLiteral(" : analyse terminée"), tool.scanReport());
            }
            m_scansSince.erase(since);
        }
    });
}

void ContentView::restoreSize()
{
    resize(defaultSize);
    restoreGeometry(QByteArray::fromBase64(Settings::text(geometryKey).value_or(QString{}).toLatin1()));
}

void ContentView::closeEvent(QCloseEvent* event)
{
    if (m_store.deletions.isRunning() && !m_isLeaving) {
        event->ignore();
        askToLeave();
        return;
    }
    Settings::write(geometryKey, QString::fromLatin1(saveGeometry().toBase64()));
    QWidget::closeEvent(event);
}

/// Asks once, however often the window is told to close.
void ContentView::askToLeave()
{
    if (m_leaveQuestion != nullptr && m_leaveQuestion->isVisible()) {
        m_leaveQuestion->raise();
        return;
    }
    const bool isRestoring = m_store.deletions.progress()->isRestoring;
    m_leaveQuestion = new QMessageBox(QMessageBox::Question, QStringLiteral("Quitter Tallyroom ?"),
                                      isRestoring ? QStringLiteral("Une restauration est en cours.")
                                                  : QStringLiteral("Une suppression est en cours."),
                                      QMessageBox::NoButton, this);
    m_leaveQuestion->setInformativeText(
        QStringLiteral("Elle sera arrêtée après l’élément en cours ; ce qui est déjà fait le reste."));
    auto* const stop =
        m_leaveQuestion->addButton(QStringLiteral("Arrêter et quitter"), QMessageBox::AcceptRole);
    m_leaveQuestion->setDefaultButton(
        m_leaveQuestion->addButton(QStringLiteral("Continuer"), QMessageBox::RejectRole));
    m_leaveQuestion->setAttribute(Qt::WA_DeleteOnClose);
    connect(stop, &QAbstractButton::clicked, this, &ContentView::leave);
    // What the question is about may be over before it is answered.
    connect(&m_store.deletions, &DeletionRunner::isRunningChanged, m_leaveQuestion, &QWidget::close);
    m_leaveQuestion->open();
}

void ContentView::leave()
{
    m_isLeaving = true;
    m_store.deletions.stop();
    connect(&m_store.deletions, &DeletionRunner::isRunningChanged, this, &QWidget::close);
    if (m_store.deletions.isRunning()) {
        QTimer::singleShot(closingPatience, this, &QWidget::close);
    } else {
        close();
    }
}

bool ContentView::focusNextPrevChild(bool isForward)
{
    return TabOrder::moveFocus(*this, isForward);
}

void ContentView::dragEnterEvent(QDragEnterEvent* event)
{
    if (droppedFolder(event->mimeData())) {
        event->acceptProposedAction();
    }
}

void ContentView::dropEvent(QDropEvent* event)
{
    const auto folder = droppedFolder(event->mimeData());
    const ToolDescriptor* const tool = ToolRegistry::find(m_selectedToolID);
    if (!folder || tool == nullptr) {
        return;
    }
    event->acceptProposedAction();
    Desktop::examine(this, *folder, [&target = tool->tool(m_store)](const FolderChoice& choice) {
        target.handleImport(choice);
    });
}

} // namespace tallyroom
