#include "Welcome/MessagePage.h"

#include "Layout/Boxes.h"
#include "Theme/SymbolIcon.h"
#include "Theme/Theme.h"

#include <QLabel>
#include <QPushButton>

namespace tallyroom {

namespace {

constexpr int symbolSize = 2 * Theme::iconSize;

} // namespace

MessagePage::MessagePage(std::string symbol, QWidget* parent)
    : QWidget(parent), m_symbolName(std::move(symbol)), m_symbol(new QLabel), m_title(new QLabel),
      m_message(new QLabel), m_actions(new QHBoxLayout)
{
    Theme::style(m_title, Theme::Text::title);
    Theme::style(m_message, Theme::Text::secondary);
    m_message->setWordWrap(true);
    m_actions->setSpacing(Theme::gap);
    auto* const column = makeColumn(this, pageMargins);
    column->addStretch();
    for (QLabel* const label : {m_symbol, m_title, m_message}) {
        label->setAlignment(Qt::AlignCenter);
        column->addWidget(label);
    }
    column->addSpacing(Theme::gap);
    column->addLayout(m_actions);
    m_actions->addStretch();
    m_actions->addStretch();
    column->addStretch();
    connect(&Theme::shared(), &Theme::changed, this, &MessagePage::showSymbol);
    showSymbol();
}

void MessagePage::setText(const QString& title, const QString& message)
{
    m_title->setText(title);
    m_title->setVisible(!title.isEmpty());
    m_message->setText(message);
    const QString name = title.isEmpty() ? message : title + QStringLiteral(". ") + message;
    if (name != accessibleName()) { // each setting is told to screen readers
        setAccessibleName(name);
    }
}

QPushButton* MessagePage::addAction(const QString& text)
{
    auto* const button = new QPushButton(text);
    const bool isFirst = m_actions->count() == 2;
    Theme::style(button, isFirst ? Theme::Button::primary : Theme::Button::plain);
    m_actions->insertWidget(m_actions->count() - 1, button);
    return button;
}

void MessagePage::showSymbol()
{
    m_symbol->setPixmap(SymbolIcon::pixmap(m_symbolName, Theme::shared().colour(Theme::Colour::secondary),
                                           symbolSize, devicePixelRatioF()));
}

} // namespace tallyroom
