#include "Text/PlainText.h"

#include <QTextDocument>

namespace tallyroom {

QString plainToolTip(const QString& text)
{
    // Only where it is needed: what is taken as plain text must not be escaped.
    return Qt::mightBeRichText(text) ? QStringLiteral("<span style='white-space:pre-wrap'>") +
                                           text.toHtmlEscaped() + QStringLiteral("</span>")
                                     : text;
}

} // namespace tallyroom
