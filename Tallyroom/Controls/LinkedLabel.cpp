#include "Controls/LinkedLabel.h"

#include "Theme/Theme.h"

#include <QFocusEvent>

namespace tallyroom {

LinkedLabel::LinkedLabel(QWidget* parent) : QLabel(parent)
{
    connect(this, &QLabel::linkActivated, this, &LinkedLabel::linkRequested);
    connect(&Theme::shared(), &Theme::changed, this, &LinkedLabel::showContent);
}

void LinkedLabel::setContent(const QString& text, const QString& link)
{
    if (text != m_text || link != m_link) {
        m_text = text;
        m_link = link;
        showContent();
    }
}

/// The keyboard comes to the link, not to the text around it.
void LinkedLabel::focusInEvent(QFocusEvent* event)
{
    QLabel::focusInEvent(event);
    if (event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason) {
        focusNextPrevChild(event->reason() == Qt::TabFocusReason);
    }
}

void LinkedLabel::showContent()
{
    const QString between = m_text.isEmpty() || m_link.isEmpty() ? QString{} : QStringLiteral(" · ");
    setAccessibleName(m_text + between + m_link);
    if (m_link.isEmpty()) {
        setTextInteractionFlags(Qt::NoTextInteraction);
        setTextFormat(Qt::PlainText);
        setText(m_text);
        return;
    }
    setTextFormat(Qt::RichText);
    setTextInteractionFlags(Qt::LinksAccessibleByMouse | Qt::LinksAccessibleByKeyboard);
    setText(QStringLiteral("%1<a href=\"#\" style=\"color: %2\">%3</a>")
                .arg((m_text + between).toHtmlEscaped(), Theme::shared().colour(Theme::Colour::accent).name(),
                     m_link.toHtmlEscaped()));
}

} // namespace tallyroom
