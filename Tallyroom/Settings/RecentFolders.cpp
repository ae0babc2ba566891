#include "Settings/RecentFolders.h"

#include "Bridge/Observable.h"
#include "Settings/Settings.h"
#include "Text/Utf8.h"

#include <algorithm>

namespace tallyroom {

namespace {

const QString escapedPrefix = QStringLiteral("file://");

/// The path as it is; one that is not UTF-8 as a file: URL, the only other thing that a text can stand for.
QString storedText(const FileUrl& url)
{
    return QString::fromStdString(Utf8::isValid(url.path()) ? url.path() : url.percentEncoded());
}

FileUrl fromStoredText(const QString& text)
{
    return text.startsWith(escapedPrefix)
               ? FileUrl{percentDecodedPath(text.sliced(escapedPrefix.size()).toStdString())}
               : FileUrl{text.toStdString()};
}

} // namespace

RecentFolders& RecentFolders::shared()
{
    // Never destroyed: it may be asked for until the very end of the program.
    static auto* const folders = new RecentFolders;
    return *folders;
}

RecentFolders::RecentFolders(QString key) : m_key(std::move(key))
{
    const QStringList texts = Settings::textList(m_key).value_or(QStringList{});
    std::ranges::transform(texts, std::back_inserter(m_urls), fromStoredText);
    std::erase_if(m_urls, [](const FileUrl& url) { return !url.path().starts_with('/'); });
}

void RecentFolders::add(const FileUrl& url)
{
    const FileUrl folder = url.standardized();
    std::vector<FileUrl> urls = m_urls;
    std::erase(urls, folder);
    urls.insert(urls.begin(), folder);
    urls.resize(std::min(urls.size(), maxCount));
    if (!assignIfChanged(m_urls, std::move(urls))) {
        return;
    }
    QStringList texts;
    std::ranges::transform(m_urls, std::back_inserter(texts), storedText);
    Settings::write(m_key, texts);
    Q_EMIT urlsChanged();
}

} // namespace tallyroom
