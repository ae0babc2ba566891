#include "Settings/StoredUrl.h"

#include "Text/Utf8.h"

namespace tallyroom::StoredUrl {

namespace {

const QString escapedPrefix = QStringLiteral("file://");

} // namespace

QString text(const FileUrl& url)
{
    return QString::fromStdString(Utf8::isValid(url.path()) ? url.path() : url.percentEncoded());
}

FileUrl read(const QString& text)
{
    return text.startsWith(escapedPrefix)
               ? FileUrl{percentDecodedPath(text.sliced(escapedPrefix.size()).toStdString())}
               : FileUrl{text.toStdString()};
}

} // namespace tallyroom::StoredUrl
