#include "Controls/SelectionBar.h"

#include "Text/NumberText.h"
#include "Text/SizeText.h"
#include "Theme/SymbolIcon.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>

#include <algorithm>

namespace tallyroom {

namespace {

const QString hint = QStringLiteral("Cochez les éléments à supprimer");

} // namespace

SelectionBar::SelectionBar(QWidget* parent)
    : QWidget(parent), m_symbol(new QLabel{this}), m_count(new QLabel{this}), m_size(new QLabel{this}),
      m_selectAll(new QPushButton{QStringLiteral("Tout sélectionner"), this}),
      m_clear(new QPushButton{QStringLiteral("Tout désélectionner"), this}),
      m_delete(new QPushButton{QStringLiteral("Supprimer…"), this})
{
    Theme::dress(this, Theme::Surface::bar);
    Theme::dress(m_size, Theme::Text::secondary);
    setUpButtons();
    auto* const summary = new QHBoxLayout;
    summary->addWidget(m_symbol);
    summary->addWidget(m_count);
    summary->addWidget(m_size);
    summary->addStretch(1);
    auto* const buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(m_selectAll);
    buttons->addWidget(m_clear);
    buttons->addWidget(m_delete);
    for (QHBoxLayout* const line : {summary, buttons}) {
        line->setSpacing(Theme::gap);
    }
    m_lines = new QBoxLayout{QBoxLayout::LeftToRight, this};
    m_lines->setContentsMargins(Theme::margin, Theme::gap, Theme::margin, Theme::gap);
    m_lines->setSpacing(Theme::gap);
    m_lines->addLayout(summary, 1);
    m_lines->addLayout(buttons);
    setMinimumHeight(Theme::selectionBarHeight);
    connect(&Theme::shared(), &Theme::changed, this, &SelectionBar::showSymbol);
    setSelection(0, 0);
}

void SelectionBar::setUpButtons()
{
    Theme::dress(m_selectAll, Theme::Button::plain);
    Theme::dress(m_clear, Theme::Button::plain);
    Theme::dress(m_delete, Theme::Button::danger);
    m_delete->setIcon(SymbolIcon::icon("trash", Theme::Colour::danger));
    connect(m_selectAll, &QPushButton::clicked, this, [this] { Q_EMIT selectAllRequested(); });
    connect(m_clear, &QPushButton::clicked, this, [this] { Q_EMIT clearRequested(); });
    connect(m_delete, &QPushButton::clicked, this, [this] { Q_EMIT deleteRequested(); });
}

void SelectionBar::setSelection(std::int64_t count, std::int64_t bytes)
{
    m_isEmpty = count == 0;
    m_size->setVisible(!m_isEmpty);
    if (m_isEmpty) {
        m_count->setText(hint);
        m_size->clear();
    } else {
        m_count->setText(NumberText::plural(count, QStringLiteral("sélectionné")));
        m_size->setText(QStringLiteral("· %1").arg(sizeText(bytes)));
    }
    Theme::dress(m_count, m_isEmpty ? Theme::Text::secondary : Theme::Text::strong);
    m_delete->setEnabled(count >= 1);
    showSymbol();
    fold();
}

QSize SelectionBar::minimumSizeHint() const
{
    // The buttons in one line are what the bar cannot do without.
    const int buttons = m_selectAll->sizeHint().width() + m_clear->sizeHint().width() +
                        m_delete->sizeHint().width() + 2 * Theme::gap;
    return {buttons + 2 * Theme::margin, m_lines->minimumSize().height()};
}

void SelectionBar::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    fold();
}

void SelectionBar::fold()
{
    // The hint counts while something is checked too: the first check must not move the rows above.
    const int hintWidth = QFontMetrics{Theme::shared().body()}.horizontalAdvance(hint);
    const int sum = m_count->sizeHint().width() + m_size->sizeHint().width();
    const int text = m_isEmpty ? hintWidth : std::max(hintWidth, sum);
    const int summary = m_symbol->sizeHint().width() + text + 3 * Theme::gap;
    const bool isNarrow = width() < minimumSizeHint().width() + summary;
    m_lines->setDirection(isNarrow ? QBoxLayout::TopToBottom : QBoxLayout::LeftToRight);
}

void SelectionBar::showSymbol()
{
    const Theme& theme = Theme::shared();
    const auto role = m_isEmpty ? Theme::Colour::secondary : Theme::Colour::accent;
    m_symbol->setPixmap(SymbolIcon::pixmap(m_isEmpty ? "checklist" : "checkmark.circle.fill",
                                           theme.colour(role), Theme::iconSize, devicePixelRatioF()));
}

} // namespace tallyroom
