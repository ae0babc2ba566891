#include "Tools/Dashboard/RecoveryLine.h"

#include "Controls/Capsule.h"
#include "Controls/Spinner.h"
#include "Layout/Boxes.h"
#include "Theme/SymbolIcon.h"
#include "Theme/Theme.h"

#include <QLabel>
#include <QPainter>
#include <QPushButton>

#include <algorithm>
#include <utility>

namespace tallyroom {

namespace {

constexpr int leastBar = 10 * Theme::gap;
constexpr int mostBar = 40 * Theme::gap;
constexpr int leastWidthWithBar = 90 * Theme::gap; // less has no room for a bar

/// As wide as sums and buttons get: those of all lines stand below each other.
const QString widestSum = QStringLiteral("≥\u00a0888,8\u00a0Mo");

int widestAction(QPushButton& button)
{
    button.ensurePolished();
    int width = 0;
    for (const QString& text :
         {QStringLiteral("Libérer %1…").arg(widestSum), QStringLiteral("Vider la corbeille…")}) {
        button.setText(text);
        width = std::max(width, button.sizeHint().width());
    }
    return width;
}

} // namespace

ShareBar::ShareBar(QWidget* parent) : QWidget(parent)
{
    setMinimumWidth(leastBar);
    setMaximumWidth(mostBar);
    setFixedHeight(Theme::volumeBarHeight);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    connect(&Theme::shared(), &Theme::changed, this, qOverload<>(&QWidget::update));
}

void ShareBar::setShare(double share)
{
    m_share = share;
    update();
}

void ShareBar::paintEvent(QPaintEvent* /*event*/)
{
    if (m_share > 0) {
        QPainter painter{this};
        const Theme& theme = Theme::shared();
        paintCapsule(painter, rect(), m_share, theme.colour(Theme::Colour::line),
                     theme.colour(Theme::Colour::accent));
    }
}

RecoveryLine::RecoveryLine(QString name, std::string icon, bool canBeViewed, QWidget* parent)
    : QWidget(parent), m_name(std::move(name)), m_icon(std::move(icon)), m_symbol(new QLabel),
      m_spinner(new Spinner(Theme::iconSize)), m_words(new QLabel), m_bar(new ShareBar), m_figure(new QLabel),
      m_action(new QPushButton), m_view(new QPushButton(QStringLiteral("Voir")))
{
    makeLayout(canBeViewed);
    connect(m_action, &QPushButton::clicked, this, &RecoveryLine::actionRequested);
    connect(m_view, &QPushButton::clicked, this, &RecoveryLine::viewRequested);
    connect(&Theme::shared(), &Theme::changed, this, &RecoveryLine::showSymbol);
    showSymbol();
}

void RecoveryLine::makeLayout(bool canBeViewed)
{
    auto* const name = new QLabel(m_name);
    Theme::style(name, Theme::Text::strong);
    Theme::style(m_words, Theme::Text::secondary);
    m_words->setWordWrap(true);
    Theme::style(m_figure, Theme::Text::strong);
    m_figure->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_figure->setText(widestSum);
    m_figure->ensurePolished();
    m_figure->setMinimumWidth(m_figure->sizeHint().width());
    Theme::style(m_action, Theme::Button::primary);
    m_action->setMinimumWidth(widestAction(*m_action));
    m_action->hide();
    Theme::style(m_view, Theme::Button::plain);
    m_view->setAccessibleName(m_name + QStringLiteral(" : voir dans l’outil"));
    QSizePolicy keepsRoom = m_view->sizePolicy();
    keepsRoom.setRetainSizeWhenHidden(true);
    m_view->setSizePolicy(keepsRoom);
    m_view->setVisible(canBeViewed);
    m_symbol->setFixedWidth(Theme::iconSize);
    m_spinner->hide();
    auto* const texts = new QVBoxLayout;
    texts->setSpacing(Theme::gap / 4);
    texts->addWidget(name);
    texts->addWidget(m_words);
    auto* const row = makeRow(this, {0, Theme::gap, 0, Theme::gap}, Theme::cardGap);
    row->addWidget(m_symbol);
    row->addWidget(m_spinner);
    row->addLayout(texts, 3);
    row->addWidget(m_bar, 2);
    row->addWidget(m_figure);
    row->addWidget(m_action);
    row->addWidget(m_view);
}

void RecoveryLine::setContent(const Content& content)
{
    m_words->setText(content.words);
    m_figure->setText(content.figure);
    m_bar->setShare(content.share);
    m_symbol->setVisible(!content.isBusy);
    m_spinner->setVisible(content.isBusy);
    m_action->setText(content.action);
    m_action->setAccessibleName(m_name + QStringLiteral(" : ") + content.action);
    if (content.action.isEmpty() && m_action->hasFocus()) {
        m_view->setFocus(); // the toolkit would choose any part of the window
    }
    m_action->setVisible(!content.action.isEmpty());
    QSizePolicy keepsRoom = m_action->sizePolicy();
    keepsRoom.setRetainSizeWhenHidden(!content.figure.isEmpty()); // below those of other lines
    m_action->setSizePolicy(keepsRoom);
    m_figure->setVisible(!content.figure.isEmpty()); // the words take the room where there is none
    showBar();
    m_isLast = content.isLast;
    const QString figure = content.figure.isEmpty() ? QString{} : QStringLiteral(", ") + content.figure;
    setAccessibleName(m_name + figure + QStringLiteral(", ") + content.words);
    update();
}

void RecoveryLine::paintEvent(QPaintEvent* /*event*/)
{
    if (!m_isLast) {
        QPainter painter{this};
        painter.fillRect(0, height() - 1, width(), 1, Theme::shared().colour(Theme::Colour::line));
    }
}

void RecoveryLine::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    showBar();
}

void RecoveryLine::showBar()
{
    m_bar->setVisible(width() >= leastWidthWithBar && !m_figure->text().isEmpty());
}

void RecoveryLine::showSymbol()
{
    m_symbol->setPixmap(SymbolIcon::pixmap(m_icon, Theme::shared().colour(Theme::Colour::accent),
                                           Theme::iconSize, devicePixelRatioF()));
}

} // namespace tallyroom
