#include "Tools/Frame/ToolPages.h"

#include "Settings/RecentFolders.h"
#include "Theme/Theme.h"
#include "Welcome/MessagePage.h"
#include "Welcome/ScanningView.h"

#include <QPushButton>

#include <algorithm>
#include <initializer_list>

namespace tallyroom {

ToolPages::ToolPages(ScanToolViewModel& tool, const ToolWelcome::Content& welcome,
                     const QString& emptyMessage, QWidget* parent)
    : QStackedWidget(parent), m_tool(tool), m_emptyMessage(emptyMessage), m_welcome(new ToolWelcome(welcome)),
      m_scanning(new ScanningView(QStringLiteral("Analyse en cours…"))), m_lists(new QStackedWidget),
      m_empty(new MessagePage("folder")), m_noMatch(new MessagePage("magnifyingglass")),
      m_error(new MessagePage("exclamationmark.triangle"))
{
    makeMessages();
    const std::initializer_list<QWidget*> pages{m_welcome, m_scanning, m_lists, m_empty, m_noMatch, m_error};
    std::ranges::for_each(pages, [this](QWidget* one) { addWidget(one); });
    connect(m_welcome, &ToolWelcome::actionRequested, this, &ToolPages::folderRequested);
    connect(m_welcome, &ToolWelcome::recentRequested, &m_tool, &FolderTool::examine);
    connect(m_welcome, &ToolWelcome::offerTaken, &m_tool, &FolderTool::examine);
    connect(&RecentFolders::shared(), &RecentFolders::urlsChanged, this, &ToolPages::showRecents);
    showRecents();
}

void ToolPages::makeMessages()
{
    const auto* const other = m_empty->addAction(QStringLiteral("Choisir un autre dossier…"));
    connect(other, &QPushButton::clicked, this, &ToolPages::folderRequested);
    m_retry = m_empty->addAction(QStringLiteral("Réessayer"));
    connect(m_retry, &QPushButton::clicked, &m_tool, [this] { m_tool.refresh(); });
    m_noMatch->setText({}, QStringLiteral("Aucun élément ne correspond au filtre."));
    const auto* const clear = m_noMatch->addAction(QStringLiteral("Effacer le filtre"));
    connect(clear, &QPushButton::clicked, &m_tool, [this] { m_tool.clearFilter(); });
    const auto* const choose = m_error->addAction(QStringLiteral("Choisir un dossier…"));
    connect(choose, &QPushButton::clicked, this, &ToolPages::folderRequested);
    const auto* const back = m_error->addAction(QStringLiteral("Revenir"));
    connect(back, &QPushButton::clicked, &m_tool, &ScanToolViewModel::dismissError);
}

void ToolPages::showRecents()
{
    m_welcome->setOffer(RecentFolders::shared().openedLast());
    m_welcome->setRecents(RecentFolders::shared().urls());
}

void ToolPages::addList(QWidget* list)
{
    m_lists->addWidget(list);
}

void ToolPages::showList(QWidget* list)
{
    const bool hadFocus = m_lists->isAncestorOf(window()->focusWidget());
    m_lists->setCurrentWidget(list);
    if (hadFocus) {
        list->setFocus();
    }
}

bool ToolPages::takeKeyboard()
{
    QWidget* const target = currentWidget() == m_lists ? list() : currentWidget()->findChild<QPushButton*>();
    if (target != nullptr) {
        target->setFocus(Qt::OtherFocusReason);
    }
    return target != nullptr;
}

QWidget* ToolPages::page(bool isPatient, bool hidesEverything) const
{
    const bool isEmpty = m_tool.entryCount() == 0;
    switch (m_tool.state().phase) {
    case ToolState::Phase::idle:
        return m_welcome;
    case ToolState::Phase::error:
        return m_error;
    case ToolState::Phase::scanning:
        return isEmpty && !m_tool.isShowingRunning() && !isPatient ? static_cast<QWidget*>(m_scanning)
                                                                   : m_lists;
    case ToolState::Phase::loaded:
        if (isEmpty && m_tool.hasNarrowedScan() && m_tool.scanEnd().isComplete()) {
            return m_noMatch;
        }
        if (isEmpty) {
            return m_empty;
        }
        return hidesEverything ? static_cast<QWidget*>(m_noMatch) : m_lists;
    }
    return m_welcome;
}

QSize ToolPages::minimumSizeHint() const
{
    return {QStackedWidget::minimumSizeHint().width(), 2 * Theme::rowHeight};
}

void ToolPages::showPage(bool isPatient, bool hidesEverything)
{
    m_empty->setText({}, m_tool.scanEnd().emptyText(m_emptyMessage));
    m_retry->setVisible(m_tool.scanEnd().kind == ScanEnd::Kind::unread);
    m_error->setText(QStringLiteral("Ce dossier n’a pas pu être ouvert"), m_tool.state().message);
    const QWidget* const before = currentWidget();
    setCurrentWidget(page(isPatient, hidesEverything));
    // After the choice of a folder the keyboard goes on with what came of it.
    const bool wasElsewhere = before == m_welcome || before == m_error;
    if (currentWidget() == before || !isVisible()) {
        return;
    }
    if (currentWidget() == m_error) {
        takeKeyboard();
    } else if (wasElsewhere) {
        list()->setFocus();
    }
}

} // namespace tallyroom
