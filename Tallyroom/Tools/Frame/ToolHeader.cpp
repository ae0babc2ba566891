#include "Tools/Frame/ToolHeader.h"

#include "Controls/ExportButton.h"
#include "Controls/LinkedLabel.h"
#include "Controls/NoticeLine.h"
#include "Controls/SearchField.h"
#include "Layout/FlowLayout.h"
#include "Theme/SymbolIcon.h"
#include "Theme/Theme.h"
#include "Tools/Frame/FolderButton.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace tallyroom {

namespace {

constexpr int searchWidth = 220;
constexpr int summaryHeight = 20; // of a line, whatever signs it needs from other fonts

void moveInto(QBoxLayout* target, int index, QLayout* part)
{
    if (auto* const current = qobject_cast<QBoxLayout*>(part->parent()); current != target) {
        current->removeItem(part);
        target->insertLayout(index, part);
    }
}

} // namespace

ToolHeader::ToolHeader(const QString& searchPlaceholder, QWidget* parent)
    : QWidget(parent), m_column(new QVBoxLayout(this)), m_row(new QHBoxLayout), m_filters(new QHBoxLayout),
      m_options(new FlowLayout), m_search(new SearchField(searchPlaceholder)), m_folder(new FolderButton),
      m_refresh(new QPushButton), m_stop(new QPushButton), m_export(new ExportButton),
      m_summary(new LinkedLabel), m_notice(new NoticeLine), m_actions(new QHBoxLayout)
{
    m_search->setMaximumWidth(searchWidth);
    m_search->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    Theme::style(m_refresh, Theme::Button::icon);
    m_refresh->setIcon(SymbolIcon::icon("arrow.clockwise"));
    m_refresh->setAccessibleName(QStringLiteral("Rafraîchir"));
    m_refresh->setToolTip(QStringLiteral("Recalculer les tailles (ignore le cache)"));
    // As wide as the button whose place it takes: nothing moves when a scan begins or ends.
    Theme::style(m_stop, Theme::Button::icon);
    m_stop->setIcon(SymbolIcon::icon("stop.fill"));
    m_stop->setAccessibleName(QStringLiteral("Arrêter"));
    m_stop->setToolTip(QStringLiteral("Arrêter l’analyse (Échap)"));
    Theme::style(m_summary, Theme::Text::secondary);
    m_summary->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Minimum);
    m_summary->setWordWrap(true);
    m_summary->setMinimumHeight(summaryHeight); // the list below does not jump

    m_filters->setSpacing(Theme::gap);
    m_filters->addWidget(m_search, 1);
    m_filters->addLayout(m_options);
    m_row->setSpacing(Theme::gap);
    m_row->addLayout(m_filters);
    for (QWidget* const button : buttons()) {
        m_row->addWidget(button);
    }
    m_row->addSpacing(Theme::windowMenuRoom);
    m_column->setContentsMargins(Theme::margin, Theme::gap + Theme::gap / 2, Theme::margin, Theme::gap);
    m_column->setSpacing(Theme::gap / 2);
    m_column->addLayout(m_row);
    m_column->addWidget(m_summary);
    m_column->addWidget(m_notice);
    m_column->addLayout(m_actions);
    m_actions->setSpacing(Theme::gap);
    m_actions->addStretch(1);

    connect(m_folder, &FolderButton::folderRequested, this, &ToolHeader::folderRequested);
    connect(m_folder, &FolderButton::recentRequested, this, &ToolHeader::recentRequested);
    connect(m_refresh, &QPushButton::clicked, this, &ToolHeader::refreshRequested);
    connect(m_stop, &QPushButton::clicked, this, &ToolHeader::stopRequested);
    connect(m_export, &QPushButton::clicked, this, &ToolHeader::exportRequested);
    connect(m_summary, &LinkedLabel::linkRequested, this, &ToolHeader::unreadRequested);
    connect(m_notice, &NoticeLine::actionRequested, this, &ToolHeader::noticeActionRequested);
    showScanning(false);
}

void ToolHeader::setLeading(QWidget* leading)
{
    delete std::exchange(m_leading, leading);
    m_row->insertWidget(0, leading, 1);
}

void ToolHeader::addOption(QWidget* option)
{
    m_options->addWidget(option);
}

void ToolHeader::addAction(QWidget* action)
{
    m_actions->insertWidget(m_actions->count() - 1, action);
    m_actions->setContentsMargins(0, Theme::gap / 2, 0, Theme::gap / 2);
}

void ToolHeader::addRow(QWidget* row)
{
    row->setContentsMargins(0, Theme::gap / 2, 0, Theme::gap / 2);
    m_column->addWidget(row);
}

void ToolHeader::showNotice(const QString& notice, const QString& action)
{
    m_notice->setText(notice, action);
}

void ToolHeader::showScanning(bool isScanning)
{
    m_refresh->setVisible(!isScanning);
    m_stop->setVisible(isScanning);
}

void ToolHeader::showSummary(const QString& summary, const QString& unread)
{
    m_summary->setContent(summary, unread);
}

void ToolHeader::showEntryCount(std::size_t count)
{
    m_export->setEntryCount(count);
}

bool ToolHeader::event(QEvent* event)
{
    const bool isHandled = QWidget::event(event);
    // An option that says something longer wants more room.
    if (event->type() == QEvent::Resize || event->type() == QEvent::LayoutRequest) {
        fold();
    }
    return isHandled;
}

std::array<QWidget*, 4> ToolHeader::buttons() const
{
    return {m_folder, m_refresh, m_stop, m_export};
}

int ToolHeader::buttonsWidth() const
{
    int width = Theme::windowMenuRoom;
    for (const QWidget* const button : buttons()) {
        width += button->isHidden() ? 0 : Theme::gap + button->sizeHint().width();
    }
    return width;
}

/// Where the room ends, the search field shrinks first, then the leading part; then the filters go below it,
/// and the options below the search field.
void ToolHeader::fold()
{
    const QMargins margins = m_column->contentsMargins();
    const int room = width() - margins.left() - margins.right();
    const int smallestSearch = m_search->minimumSizeHint().width();
    const int options = m_options->sizeHint().width() + (m_options->count() > 0 ? Theme::gap : 0);
    const int others = options + buttonsWidth();
    const int leading = m_leading == nullptr ? 0 : m_leading->minimumSizeHint().width();
    const int wanted = m_leading == nullptr ? 0 : m_leading->sizeHint().width();
    const bool isNarrow = room < leading + Theme::gap + smallestSearch + others;
    const int search = std::max(std::min(room - wanted - Theme::gap - others, searchWidth), smallestSearch);
    moveInto(isNarrow ? m_column : m_row, isNarrow ? 1 : m_row->indexOf(m_folder), m_filters);
    m_search->setMinimumWidth(isNarrow ? smallestSearch : search);
    m_search->setMaximumWidth(isNarrow ? QWIDGETSIZE_MAX : search);
    const bool areOptionsBelow = options > 0 && room < smallestSearch + options;
    moveInto(areOptionsBelow ? m_column : m_filters, areOptionsBelow ? 2 : m_filters->count(), m_options);
}

} // namespace tallyroom
