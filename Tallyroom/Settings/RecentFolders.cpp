#include "Settings/RecentFolders.h"

#include "Bridge/Observable.h"
#include "Settings/Settings.h"
#include "Settings/StoredUrl.h"

#include <algorithm>

namespace tallyroom {

RecentFolders& RecentFolders::shared()
{
    // Never destroyed: it may be asked for until the very end of the program.
    static auto* const folders = new RecentFolders;
    return *folders;
}

RecentFolders::RecentFolders(QString key) : m_key(std::move(key))
{
    const QStringList texts = Settings::textList(m_key).value_or(QStringList{});
    std::ranges::transform(texts, std::back_inserter(m_urls), StoredUrl::read);
    std::erase_if(m_urls, [](const FileUrl& url) { return !url.path().starts_with('/'); });
}

void RecentFolders::add(const FileUrl& url)
{
    const FileUrl folder = url.standardized();
    std::vector<FileUrl> urls = m_urls;
    std::erase(urls, folder);
    urls.insert(urls.begin(), folder);
    urls.resize(std::min(urls.size(), maxCount));
    const bool isOpened = assignIfChanged(m_openedLast, folder);
    const bool isNew = assignIfChanged(m_urls, std::move(urls));
    if (isNew) {
        QStringList texts;
        std::ranges::transform(m_urls, std::back_inserter(texts), StoredUrl::text);
        Settings::write(m_key, texts);
    }
    if (isNew || isOpened) {
        Q_EMIT urlsChanged();
    }
}

} // namespace tallyroom
