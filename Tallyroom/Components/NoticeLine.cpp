#include "Components/NoticeLine.h"

#include "Components/SymbolIcon.h"
#include "Components/Theme.h"

#include <QHBoxLayout>
#include <QLabel>

namespace tallyroom {

NoticeLine::NoticeLine(QWidget* parent) : QWidget(parent), m_symbol(new QLabel), m_text(new QLabel)
{
    m_text->setTextFormat(Qt::PlainText);
    m_text->setWordWrap(true);
    auto* const row = new QHBoxLayout(this);
    row->setContentsMargins({});
    row->setSpacing(Theme::gap);
    row->addWidget(m_symbol, 0, Qt::AlignTop);
    row->addWidget(m_text, 1);
    connect(&Theme::shared(), &Theme::changed, this, &NoticeLine::showColours);
    showColours();
    setText({});
}

void NoticeLine::setText(const QString& text)
{
    m_text->setText(text);
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
