#include "Shell/ContentView.h"

#include "Controls/Shortcut.h"
#include "Layout/TabOrder.h"
#include "Settings/RecentFolders.h"
#include "Settings/ScanRules.h"
#include "Settings/Settings.h"
#include "Shell/DropHint.h"
#include "Shell/KeysDialog.h"
#include "Shell/PreferencesDialog.h"
#include "Shell/Sidebar.h"
#include "Shell/ToolRegistry.h"
#include "Shell/WindowMenu.h"
#include "Text/FileUrlText.h"
#include "Text/ToolText.h"
#include "Theme/SymbolIcon.h"
#include "Theme/Theme.h"
#include "Welcome/MessagePage.h"

#include <QApplication>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QGridLayout>
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
constexpr std::chrono::seconds closingPatience{3}; // with the item in hand, when the window is closed
const QString geometryKey = QStringLiteral("window.geometry");

std::optional<FileUrl> droppedFolder(const QMimeData* dropped)
{
    const QList<QUrl> urls = dropped->urls();
    return urls.isEmpty() ? std::nullopt : FileUrlText::fromUrl(urls.first());
}

} // namespace

ContentView::ContentView(RemovalOperations operations)
    : m_store(std::move(operations)), m_reports(m_store.deletions),
      m_sidebar(new Sidebar(ToolRegistry::all())), m_menu(new WindowMenu), m_detail(new QStackedWidget),
      m_placeholder(new MessagePage("sidebar.left")), m_dropHint(new DropHint(this))
{
    setWindowTitle(QStringLiteral("Tallyroom"));
    setWindowIcon(SymbolIcon::application());
    setMinimumSize(smallestSize);
    setAcceptDrops(true);
    makeLayout();
    connectMenu();
    addShortcuts();
    restoreSize();
    std::ranges::for_each(ToolRegistry::all(), [this](const ToolDescriptor& tool) { watch(tool); });
    m_store.dashboard.recovery().setTools(ToolRegistry::recoveryTools(m_store));
    connect(&m_store.dashboard, &DashboardViewModel::toolRequested, this, &ContentView::selectTool);
    connect(m_sidebar, &Sidebar::selected, this, &ContentView::selectTool);
    selectTool(ToolRegistry::initial().id);
    m_detail->currentWidget()->setFocus(); // Enter takes what it offers first
}

void ContentView::makeLayout()
{
    m_placeholder->setText(QStringLiteral("Aucun outil sélectionné"),
                           QStringLiteral("Choisissez un outil dans la barre latérale."));
    connect(m_placeholder->addAction(QStringLiteral("Aller au tableau de bord")), &QPushButton::clicked, this,
            [this] { selectTool(ToolRegistry::initial().id); });
    m_detail->addWidget(m_placeholder);
    // The menu lies over the room that each tool's header leaves for it.
    auto* const grid = new QGridLayout(this);
    grid->setContentsMargins({});
    grid->setSpacing(0);
    grid->addWidget(m_sidebar, 0, 0, 3, 1);
    grid->addWidget(m_detail, 0, 1, 3, 3);
    grid->addWidget(m_menu, 1, 2);
    grid->setRowMinimumHeight(0, Theme::gap + Theme::gap / 2);
    grid->setRowStretch(2, 1);
    grid->setColumnStretch(1, 1);
    grid->setColumnMinimumWidth(3, Theme::margin);
    m_menu->raise();
}

void ContentView::connectMenu()
{
    connect(m_menu, &WindowMenu::folderRequested, this, &ContentView::chooseFolder);
    connect(m_menu, &WindowMenu::keysRequested, this, &ContentView::showKeys);
    connect(m_menu, &WindowMenu::preferencesRequested, this, &ContentView::showPreferences);
    connect(m_menu, &WindowMenu::aboutRequested, this, &ContentView::showAbout);
    connect(&ScanRules::shared(), &ScanRules::changed, this, &ContentView::followScanRules);
}

/// For the tool on show, as Ctrl+O does it there; in the explorer where no tool is.
void ContentView::chooseFolder()
{
    const ToolDescriptor* const tool = ToolRegistry::find(m_selectedToolID);
    FolderTool& target = tool != nullptr ? tool->tool(m_store) : m_store.diskUsage;
    Desktop::chooseFolder(this, RecentFolders::shared().openedLast(),
                          [this, tool, &target](const FolderChoice& choice) {
                              if (tool == nullptr) {
                                  selectTool(ToolTexts::diskUsage.id);
                              }
                              target.handleImport(choice);
                          });
}

void ContentView::showKeys()
{
    const ToolDescriptor* const tool = ToolRegistry::find(m_selectedToolID);
    const QWidget* const screen = tool != nullptr ? m_detail->currentWidget() : nullptr;
    (new KeysDialog(*this, screen, tool != nullptr ? tool->name : QString{}, this))->open();
}

void ContentView::showPreferences()
{
    (new PreferencesDialog(m_store, this))->open();
}

void ContentView::showAbout()
{
    auto* const box =
        new QMessageBox(QMessageBox::NoIcon, QStringLiteral("À propos de Tallyroom"),
                        QStringLiteral("Tallyroom ") + QApplication::applicationVersion(), {}, this);
    box->setIconPixmap(SymbolIcon::application().pixmap(2 * Theme::controlHeight));
    box->setInformativeText(
        QStringLiteral("Montre ce qui occupe les disques, et aide à récupérer de la place.\n"
                       "Logiciel libre sous licence MIT."));
    box->addButton(QStringLiteral("Fermer"), QMessageBox::RejectRole);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
}

/// What is on show would go on showing what other rules have found; the other tools follow once they are on
/// show.
void ContentView::followScanRules()
{
    if (const ToolDescriptor* const tool = ToolRegistry::find(m_selectedToolID)) {
        tool->tool(m_store).followScanRules();
    }
}

void ContentView::addShortcuts()
{
    const auto& tools = ToolRegistry::all();
    for (std::size_t index = 0; index < tools.size(); ++index) {
        addShortcut(this, Qt::CTRL | static_cast<Qt::Key>(Qt::Key_1 + static_cast<int>(index)),
                    QStringLiteral("Aller à « %1 »").arg(tools[index].name),
                    [this, id = tools[index].id] { selectTool(id); });
    }
    for (const QKeySequence& keys : {QKeySequence{Qt::Key_F1}, QKeySequence{Qt::CTRL | Qt::Key_Question}}) {
        addShortcut(this, keys, QStringLiteral("Montrer les raccourcis clavier"), [this] { showKeys(); });
    }
    addShortcut(this, Qt::Key_F10, QStringLiteral("Ouvrir le menu"), [this] { m_menu->showMenu(); });
    addShortcut(this, Qt::CTRL | Qt::Key_Comma, QStringLiteral("Ouvrir les préférences"),
                [this] { showPreferences(); });
    addShortcut(this, Qt::CTRL | Qt::Key_Q, QStringLiteral("Quitter"), [this] { close(); });
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
    followScanRules();
}

void ContentView::openFolder(const FileUrl& folder)
{
    selectTool(ToolTexts::diskUsage.id);
    m_store.diskUsage.examine(folder);
}

void ContentView::openLargestOf(const FileUrl& folder, FileKind kind)
{
    selectTool(ToolTexts::largeFiles.id);
    m_store.largeFiles.openCategory(folder, kind.rawValue());
}

void ContentView::watch(const ToolDescriptor& descriptor)
{
    FolderTool& tool = descriptor.tool(m_store);
    connect(&tool, &FolderTool::explorationRequested, this, &ContentView::openFolder);
    connect(&tool, &FolderTool::largestRequested, this, &ContentView::openLargestOf);
    connect(&tool, &FolderTool::stateChanged, m_sidebar,
            [this, &descriptor, &tool] { m_sidebar->showBusy(descriptor.id, tool.isScanning()); });
    m_reports.follow(tool, descriptor.name);
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
    const ToolDescriptor* const tool = ToolRegistry::find(m_selectedToolID);
    if (const auto folder = droppedFolder(event->mimeData()); folder && tool != nullptr) {
        event->acceptProposedAction();
        m_dropHint->showOver(*m_detail,
                             QStringLiteral("Déposer pour ouvrir « %1 » dans « %2 »")
                                 .arg(FileUrlText::display(folder->lastPathComponent()), tool->name));
    }
}

void ContentView::dragLeaveEvent(QDragLeaveEvent* /*event*/)
{
    m_dropHint->hide();
}

void ContentView::dropEvent(QDropEvent* event)
{
    m_dropHint->hide();
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
