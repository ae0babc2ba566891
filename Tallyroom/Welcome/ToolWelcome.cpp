#include "Welcome/ToolWelcome.h"

#include "Layout/Boxes.h"
#include "Layout/LayoutNow.h"
#include "Text/FileUrlText.h"
#include "Text/PlainText.h"
#include "Theme/SymbolIcon.h"
#include "Welcome/RecentFolderList.h"

#include <QLabel>
#include <QPainter>
#include <QPushButton>

#include <algorithm>
#include <utility>

namespace tallyroom {

namespace {

QLabel* addCentredText(QVBoxLayout& column, const QString& text, Theme::Text look)
{
    auto* const label = new QLabel{text};
    label->setAlignment(Qt::AlignCenter);
    label->setWordWrap(true);
    Theme::style(label, look);
    column.addWidget(label);
    return label;
}

} // namespace

ToolWelcome::ToolWelcome(Content content, QWidget* parent)
    : QScrollArea(parent), m_content(std::move(content)), m_offer(new QPushButton),
      m_action(new QPushButton{m_content.actionTitle}), m_recents(new RecentFolderList)
{
    auto* const column = new QWidget;
    column->setMaximumWidth(Theme::recentsWidth);
    auto* const lines = makeColumn(column);
    addIntroduction(*lines);
    addHint(*lines);
    addAction(*lines);
    lines->addWidget(m_recents);

    auto* const page = new QWidget;
    auto* const middle = new QHBoxLayout;
    middle->addStretch(1);
    middle->addWidget(column, 1000); // as wide as it may be; both sides share the rest
    middle->addStretch(1);
    auto* const layout = new QVBoxLayout{page};
    layout->setContentsMargins(Theme::margin, Theme::margin, Theme::margin, Theme::margin);
    layout->addStretch(2);
    layout->addLayout(middle);
    layout->addStretch(3);
    setWidgetResizable(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setWidget(page);
    Theme::style(page, Theme::Surface::window);
    Theme::style(this, Theme::Surface::window);
    setAccessibleName(m_content.title);
    connect(&Theme::shared(), &Theme::changed, this, &ToolWelcome::showSymbols);
    connect(m_recents, &RecentFolderList::requested, this, &ToolWelcome::recentRequested);
    showSymbols();
    setRecents({});
}

void ToolWelcome::addIntroduction(QVBoxLayout& column)
{
    m_icon = new QLabel;
    m_icon->setFixedSize(Theme::welcomeCircle, Theme::welcomeCircle);
    column.addWidget(m_icon, 0, Qt::AlignHCenter);
    column.addSpacing(Theme::gap);
    addCentredText(column, m_content.title, Theme::Text::heading);
    QLabel* const message = addCentredText(column, m_content.message, Theme::Text::secondary);
    // The column is wider than the message may be.
    constexpr int inset = (Theme::recentsWidth - Theme::messageWidth) / 2;
    message->setMaximumWidth(Theme::recentsWidth);
    message->setContentsMargins(inset, 0, inset, 0);
}

void ToolWelcome::addHint(QVBoxLayout& column)
{
    if (!m_content.hint) {
        return;
    }
    m_hintIcon = new QLabel;
    auto* const hint = new QLabel{*m_content.hint};
    hint->setWordWrap(true);
    Theme::style(hint, Theme::Text::secondary);
    // Beside its symbol the hint is as wide as its text, and wraps only where that has no room.
    const int wanted = QFontMetrics{Theme::shared().body()}.horizontalAdvance(*m_content.hint) + Theme::gap;
    hint->setMaximumWidth(std::min(wanted, Theme::messageWidth));
    auto* const line = new QHBoxLayout;
    line->setSpacing(Theme::gap);
    line->addStretch(1);
    line->addWidget(m_hintIcon, 0, Qt::AlignTop);
    line->addWidget(hint, 1000);
    line->addStretch(1);
    column.addSpacing(Theme::gap / 2);
    column.addLayout(line);
}

void ToolWelcome::addAction(QVBoxLayout& column)
{
    Theme::style(m_offer, Theme::Button::prominent);
    connect(m_offer, &QPushButton::clicked, this, [this] {
        if (m_offered) {
            Q_EMIT offerTaken(FileUrl{*m_offered});
        }
    });
    connect(m_action, &QPushButton::clicked, this, [this] { Q_EMIT actionRequested(); });
    column.addSpacing(Theme::gap);
    column.addWidget(m_offer, 0, Qt::AlignHCenter);
    column.addWidget(m_action, 0, Qt::AlignHCenter);
    setOffer({});
}

void ToolWelcome::setOffer(const std::optional<FileUrl>& folder)
{
    m_offered = folder;
    if (folder) {
        const QFontMetrics metrics{Theme::shared().strong()};
        const QString place = *folder == FileUrlText::homeFolder() ? QStringLiteral("le dossier personnel")
                                                                   : FileUrlText::displayFromHome(*folder);
        // An ampersand would be a mark of the button's own.
        m_offer->setText(QStringLiteral("Analyser ") +
                         metrics.elidedText(place, Qt::ElideMiddle, Theme::messageWidth * 2 / 3)
                             .replace(QLatin1Char{'&'}, QStringLiteral("&&")));
        m_offer->setAccessibleName(QStringLiteral("Analyser ") + place);
        m_offer->setToolTip(plainToolTip(FileUrlText::display(*folder)));
    }
    m_offer->setVisible(folder.has_value());
    Theme::style(m_action, folder ? Theme::Button::plain : Theme::Button::prominent);
    setFocusProxy(folder ? m_offer : m_action);
}

void ToolWelcome::showSymbols()
{
    const Theme& theme = Theme::shared();
    const QColor accent = m_content.accent.isValid() ? m_content.accent : theme.colour(Theme::Colour::accent);
    const qreal scale = devicePixelRatioF();
    QPixmap circle{QSize{Theme::welcomeCircle, Theme::welcomeCircle} * scale};
    circle.setDevicePixelRatio(scale);
    circle.fill(Qt::transparent);
    QPainter painter{&circle};
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(theme.wash(accent, Theme::trackOpacity));
    painter.drawEllipse(0, 0, Theme::welcomeCircle, Theme::welcomeCircle);
    SymbolIcon::paint(painter, m_icon->rect(), m_content.icon, accent, Theme::welcomeIconSize);
    painter.end();
    m_icon->setPixmap(circle);
    if (m_hintIcon != nullptr) {
        m_hintIcon->setPixmap(
            SymbolIcon::pixmap("lightbulb", theme.colour(Theme::Colour::secondary), Theme::iconSize, scale));
    }
}

void ToolWelcome::setRecents(const std::vector<FileUrl>& recents)
{
    m_recents->setRecents(recents);
    layOutNow(m_recents);
}

} // namespace tallyroom
