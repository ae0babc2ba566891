#include "Text/PlainText.h"

#include <QTextDocument>

namespace tallyroom {

QString toText(std::string_view words)
{
    return QString::fromUtf8(words.data(), static_cast<qsizetype>(words.size()));
}

QString toSentence(std::string_view reason)
{
    QString text = toText(reason).replace(QLatin1Char{'\''}, QStringLiteral("’"));
    if (!text.isEmpty()) {
        text[0] = text.at(0).toUpper();
    }
    return text.endsWith(QLatin1Char{'.'}) ? text : text + QLatin1Char{'.'};
}

QString plainToolTip(const QString& text)
{
    // Only where needed: the toolkit shows plain text as it is, entities included.
    return Qt::mightBeRichText(text) ? QStringLiteral("<span style='white-space:pre-wrap'>") +
                                           text.toHtmlEscaped() + QStringLiteral("</span>")
                                     : text;
}

} // namespace tallyroom
