#include "Controls/NoticeLine.h"

#include "Layout/Boxes.h"
#include "Theme/SymbolIcon.h"
#include "Theme/Theme.h"

#include <QLabel>
#include <QPushButton>

namespace tallyroom {

NoticeLine::NoticeLine(QWidget* parent)
    : QWidget(parent), m_symbol(new QLabel), m_text(new QLabel), m_action(new QPushButton)
{
    m_text->setTextFormat(Qt::PlainText);
    m_text->setWordWrap(true);
    auto* const row = makeRow(this);
    row->addWidget(m_symbol);
    row->addWidget(m_text, 1);
    row->addWidget(m_action);
    Theme::style(m_action, Theme::Button::plain);
    connect(m_action, &QPushButton::clicked, this, &NoticeLine::actionRequested);
    connect(&Theme::shared(), &Theme::changed, this, &NoticeLine::showColours);
    showColours();
    setText({});
}

void NoticeLine::setText(const QString& text, const QString& action)
{
    m_text->setText(text);
    m_action->setText(action);
    m_action->setVisible(!action.isEmpty());
    setAccessibleName(text);
    setVisible(!text.isEmpty());
}

void NoticeLine::showColours()
{
    const QColor colour = Theme::shared().colour(Theme::Colour::old);
    m_symbol->setPixmap(
        SymbolIcon::pixmap("exclamationmark.triangle", colour, Theme::smallIconSize, devicePixelRatioF()));
    QPalette palette = m_text->palette();
    palette.setColor(QPalette::WindowText, colour);
    m_text->setPalette(palette);
}

} // namespace tallyroom
