#include "Controls/SelectionBar.h"

#include "Layout/Boxes.h"
#include "Text/NumberText.h"
#include "Text/SizeText.h"
#include "Theme/SymbolIcon.h"

#include <QLabel>
#include <QPushButton>

#include <algorithm>
#include <utility>

namespace tallyroom {

namespace {

const QString hint = QStringLiteral("Cochez les éléments à supprimer");
const QString selectAllText = QStringLiteral("Tout sélectionner");
const QString clearText = QStringLiteral("Tout désélectionner");

} // namespace

SelectionBar::SelectionBar(QWidget* parent)
    : QWidget(parent), m_symbol(new QLabel{this}), m_count(new QLabel{this}), m_size(new QLabel{this}),
      m_selectAll(new QPushButton{this}), m_clear(new QPushButton{this}),
      m_delete(new QPushButton{QStringLiteral("Supprimer…"), this})
{
    Theme::style(this, Theme::Surface::bar);
    Theme::style(m_size, Theme::Text::secondary);
    setUpButtons();
    auto* const line = makeRow(this, {Theme::margin, Theme::gap, Theme::margin, Theme::gap});
    line->addWidget(m_symbol);
    line->addWidget(m_count);
    line->addWidget(m_size);
    line->addStretch(1);
    line->addWidget(m_selectAll);
    line->addWidget(m_clear);
    line->addWidget(m_delete);
    setMinimumHeight(Theme::selectionBarHeight);
    connect(&Theme::shared(), &Theme::changed, this, [this] {
        showSymbol();
        measure();
    });
    setSelection(0, 0);
    measure();
}

void SelectionBar::setUpButtons()
{
    m_selectAll->setAccessibleName(selectAllText);
    m_clear->setAccessibleName(clearText);
    Theme::style(m_delete, Theme::Button::danger);
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
    Theme::style(m_count, m_isEmpty ? Theme::Text::secondary : Theme::Text::strong);
    m_delete->setEnabled(count >= 1);
    showSymbol();
}

void SelectionBar::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    fold();
}

/// How wide the bar is with words on all buttons and as long a sum as is usual: no check changes the buttons.
void SelectionBar::measure()
{
    showWords(true);
    const QFontMetrics body{Theme::shared().body()};
    const int sum = QFontMetrics{Theme::shared().strong()}.horizontalAdvance(
                        QStringLiteral("000\u202f000 sélectionnés")) +
                    Theme::gap + body.horizontalAdvance(QStringLiteral("· 000,0 Go"));
    m_widthWithWords = 2 * Theme::margin + Theme::iconSize + std::max(body.horizontalAdvance(hint), sum) +
                       m_selectAll->sizeHint().width() + m_clear->sizeHint().width() +
                       m_delete->sizeHint().width() + 6 * Theme::gap;
    fold();
}

void SelectionBar::fold()
{
    showWords(width() >= m_widthWithWords);
}

void SelectionBar::showWords(bool areShown)
{
    if (m_clear->text().isEmpty() != areShown) {
        return;
    }
    for (const auto& [button, symbol] : {std::pair{m_selectAll, "checklist"}, std::pair{m_clear, "xmark"}}) {
        const QString words = button->accessibleName();
        button->setText(areShown ? words : QString{});
        button->setIcon(areShown ? QIcon{} : SymbolIcon::icon(symbol));
        button->setToolTip(areShown ? QString{} : words);
        Theme::style(button, areShown ? Theme::Button::plain : Theme::Button::icon);
    }
}

void SelectionBar::showSymbol()
{
    const Theme& theme = Theme::shared();
    const auto role = m_isEmpty ? Theme::Colour::secondary : Theme::Colour::accent;
    m_symbol->setPixmap(SymbolIcon::pixmap(m_isEmpty ? "checklist" : "checkmark.circle.fill",
                                           theme.colour(role), Theme::iconSize, devicePixelRatioF()));
}

} // namespace tallyroom
