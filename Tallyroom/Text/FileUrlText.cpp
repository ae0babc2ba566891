#include "Text/FileUrlText.h"

#include "FileSystem/HomeFolder.h"
#include "Text/Utf8.h"

#include <QFile>
#include <QStringDecoder>

#include <algorithm>

namespace tallyroom {

namespace {

QByteArrayView view(std::string_view text)
{
    return {text.data(), static_cast<qsizetype>(text.size())};
}

/// Of a character too that would be taken for a mark of the byte order at the start of a text.
QString decoded(std::string_view characters)
{
    QStringDecoder decoder{QStringDecoder::Utf8, QStringDecoder::Flag::ConvertInitialBom};
    return decoder.decode(view(characters));
}

bool isControl(char32_t code)
{
    return code < 0x20 || code == 0x7F;
}

QString visible(const QString& character)
{
    const char32_t code = character.toUcs4().value(0);
    if (isControl(code)) {
        return QString{QChar{static_cast<char16_t>(code == 0x7F ? 0x2421 : 0x2400 + code)}};
    }
    if (Utf8::isInvisibleOrBidiControl(code)) {
        return QStringLiteral("\\u") +
               QString::number(code, 16).toUpper().rightJustified(4, QLatin1Char{'0'});
    }
    return character;
}

bool isOrdinary(const QString& text)
{
    return std::ranges::none_of(
        text, [](QChar c) { return isControl(c.unicode()) || Utf8::isInvisibleOrBidiControl(c.unicode()); });
}

} // namespace

QString FileUrlText::display(std::string_view name)
{
    if (QString whole = decoded(name); Utf8::isValid(name) && isOrdinary(whole)) {
        return whole;
    }
    QString text;
    while (!name.empty()) {
        const std::size_t length = Utf8::characterLength(name);
        if (length == 0) {
            const auto byte = static_cast<unsigned char>(name.front());
            text += QStringLiteral("\\x") + QString::number(byte, 16).toUpper();
        } else {
            text += visible(decoded(name.substr(0, length)));
        }
        name.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return text;
}

QString FileUrlText::display(const FileUrl& url)
{
    return display(url.path());
}

QString FileUrlText::displayFromHome(const FileUrl& url)
{
    const FileUrl home = homeFolder();
    const std::string path = url.standardized().path();
    if (home.path() == "/" || !url.isInside(home)) {
        return display(path);
    }
    return QLatin1Char{'~'} + display(std::string_view{path}.substr(home.path().size()));
}

std::optional<FileUrl> FileUrlText::parse(std::string_view text, const FileUrl& base)
{
    static constexpr std::string_view scheme = "file:";
    if (text.empty()) {
        return std::nullopt;
    }
    if (text.starts_with(scheme)) {
        text.remove_prefix(scheme.size());
        if (text.starts_with("//")) {
            text.remove_prefix(2);
            const std::string_view host = text.substr(0, text.find('/'));
            if (!host.empty() && host != "localhost") {
                return std::nullopt;
            }
            text.remove_prefix(host.size());
        }
        return text.starts_with('/') ? std::optional{FileUrl{percentDecodedPath(text)}.standardized()}
                                     : std::nullopt;
    }
    if (text == "~" || text.starts_with("~/")) {
        return homeFolder().appending(text.substr(std::min<std::size_t>(2, text.size()))).standardized();
    }
    return (text.starts_with('/') ? FileUrl{std::string{text}} : base.appending(text)).standardized();
}

std::optional<FileUrl> FileUrlText::fromUrl(const QUrl& url)
{
    if (!url.isLocalFile()) {
        return std::nullopt;
    }
    const QByteArray path = url.path(QUrl::FullyEncoded).toLatin1();
    if (!path.startsWith('/')) {
        return std::nullopt;
    }
    return FileUrl{percentDecodedPath(path.toStdString())}.standardized();
}

QString FileUrlText::toFileName(const FileUrl& url)
{
    return QFile::decodeName(QByteArray::fromStdString(url.path()));
}

FileUrl FileUrlText::fromFileName(const QString& name)
{
    return FileUrl{QFile::encodeName(name).toStdString()}.standardized();
}

FileUrl FileUrlText::homeFolder()
{
    return HomeFolder::current().standardized();
}

} // namespace tallyroom
