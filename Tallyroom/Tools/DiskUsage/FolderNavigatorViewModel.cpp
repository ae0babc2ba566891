#include "Tools/DiskUsage/FolderNavigatorViewModel.h"

#include "Bridge/AskApart.h"
#include "Text/SizeText.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace tallyroom {

FolderNavigatorViewModel::FolderNavigatorViewModel(DeletionRunner& deletions, FolderServices services)
    : ListToolViewModel(deletions, {}, Ages::unused, FilterSubject::name, ScanBeginning::measuring),
      m_services(std::move(services)), m_outline(m_services.outline)
{
    connect(this, &FolderNavigatorViewModel::stateChanged, &m_outline,
            [this] { m_outline.setMeasuring(isScanning()); });
}

std::vector<BreadcrumbItem> FolderNavigatorViewModel::breadcrumb() const
{
    if (!rootURL() || !m_currentURL) {
        return {};
    }
    std::vector<BreadcrumbItem> items{{std::string{rootURL()->lastPathComponent()}, *rootURL()}};
    const std::size_t rootDepth = rootURL()->pathComponents().size();
    const std::vector<std::string> components = m_currentURL->pathComponents();
    FileUrl url = rootURL()->standardized();
    for (std::size_t depth = rootDepth; depth < components.size(); ++depth) {
        url = url.appending(components[depth]);
        items.push_back({components[depth], url});
    }
    return items;
}

std::vector<BreadcrumbItem> FolderNavigatorViewModel::wayToRoot() const
{
    std::vector<BreadcrumbItem> items;
    const FileUrl root = rootURL() ? rootURL()->standardized() : FileUrl{"/"};
    for (FileUrl url = root; url.parent() != url;) {
        url = url.parent();
        items.push_back({std::string{url.lastPathComponent()}, url});
    }
    std::ranges::reverse(items);
    return items;
}

void FolderNavigatorViewModel::goTo(const FileUrl& step)
{
    if (rootURL() && step != *rootURL() && rootURL()->isInside(step)) {
        open(step);
    } else {
        navigateViaBreadcrumb(step);
    }
}

void FolderNavigatorViewModel::activate(const Entry& entry)
{
    if (!entry.isDirectory) {
        m_services.reveal(entry.url);
        return;
    }
    std::vector<FileUrl> history = m_history;
    if (m_currentURL) {
        history.push_back(*m_currentURL);
    }
    navigate(entry.url, Caching::use, std::move(history));
}

void FolderNavigatorViewModel::goBack()
{
    if (m_history.empty()) {
        return;
    }
    std::vector<FileUrl> history = m_history;
    const FileUrl last = std::move(history.back());
    history.pop_back();
    navigate(last, Caching::use, std::move(history));
}

void FolderNavigatorViewModel::goUp()
{
    // One step up the breadcrumb: its last item is the folder on screen.
    const std::vector<BreadcrumbItem> items = breadcrumb();
    if (items.size() >= 2) {
        navigateViaBreadcrumb(items[items.size() - 2].url);
    }
}

void FolderNavigatorViewModel::goToRoot()
{
    if (rootURL()) {
        navigateViaBreadcrumb(*rootURL());
    }
}

void FolderNavigatorViewModel::navigateViaBreadcrumb(const FileUrl& url)
{
    if (!m_currentURL || url == *m_currentURL) {
        return;
    }
    std::vector<FileUrl> history = m_history;
    const auto last = std::find(history.rbegin(), history.rend(), url);
    if (last != history.rend()) {
        history.erase(std::prev(last.base()), history.end());
    } else {
        history.push_back(*m_currentURL);
    }
    navigate(url, Caching::use, std::move(history));
}

void FolderNavigatorViewModel::refreshCurrent()
{
    if (!m_currentURL) {
        return;
    }
    m_services.invalidate(*m_currentURL);
    navigate(*m_currentURL, Caching::ignore, m_history);
}

void FolderNavigatorViewModel::scanAgain()
{
    navigate(*m_currentURL, Caching::use, m_history);
}

FileScanner::ScanStream FolderNavigatorViewModel::startStream()
{
    FileScanner::ScanStream stream = m_services.list(*m_currentURL, m_caching == Caching::use);
    m_contents->set(stream.contents);
    m_usedBytes.reset();
    using Used = std::optional<std::int64_t>;
    m_askingVolume = std::make_unique<StreamPump<Used>>(
        askApart<Used>([ask = m_services.usedBytes, folder = *m_currentURL] { return ask(folder); }),
        [this](const Used& used) {
            m_usedBytes = used;
            if (used) {
                Q_EMIT progressChanged();
            }
        },
        [] {});
    return stream;
}

ScanLine FolderNavigatorViewModel::scanLine() const
{
    ScanLine line = ListToolViewModel::scanLine();
    const SharedFolderContents found = m_contents->get();
    if (!m_usedBytes || found == nullptr || !isScanning()) {
        return line;
    }
    const std::int64_t counted = found->countedBytes();
    if (counted > *m_usedBytes) { // files of several names count with each, and nothing tells how many
        line.fraction.reset();
        line.text += QStringLiteral(" · ") + sizeText(counted);
        return line;
    }
    constexpr double most = 0.99; // the end comes with the last folder only
    line.fraction = std::min(static_cast<double>(counted) / static_cast<double>(*m_usedBytes), most);
    line.text += QStringLiteral(" · %1 sur %2").arg(sizeText(counted), sizeText(*m_usedBytes));
    return line;
}

void FolderNavigatorViewModel::noteMeasured(const Entry& folder, const FolderSize& size)
{
    if (const SharedFolderContents shown = m_contents->get()) {
        shown->set(folder.name, size);
    }
}

void FolderNavigatorViewModel::rootChosen(PropertyUpdate& update)
{
    placeAt(update, *rootURL(), Caching::use, {});
}

void FolderNavigatorViewModel::takeOut(PropertyUpdate& update, const std::vector<Entry>& gone)
{
    ListToolViewModel::takeOut(update, gone);
    m_outline.takeOut(gone);
    Q_EMIT itemsGone(gone);
}

/// What was deleted further down, on the map, comes back there.
void FolderNavigatorViewModel::putBack(PropertyUpdate& update, const std::vector<Entry>& back, bool isOwn)
{
    std::vector<Entry> listed;
    std::ranges::copy_if(back, std::back_inserter(listed), [this](const Entry& entry) {
        const FileUrl folder = entry.url.parent();
        return !m_currentURL || folder == *m_currentURL || !folder.isInside(*m_currentURL);
    });
    ListToolViewModel::putBack(update, listed, isOwn);
}

void FolderNavigatorViewModel::measureAgain(const UrlSet& folders)
{
    ListToolViewModel::measureAgain(folders);
    if (!isScanning()) {
        m_outline.update();
    }
}

/// The one place where a listing starts, but for the first of a root.
void FolderNavigatorViewModel::navigate(const FileUrl& url, Caching caching, std::vector<FileUrl> history)
{
    PropertyUpdate update{this};
    placeAt(update, url, caching, std::move(history));
    beginScan(update);
}

void FolderNavigatorViewModel::placeAt(PropertyUpdate& update, const FileUrl& url, Caching caching,
                                       std::vector<FileUrl> history)
{
    const bool couldGoBack = canGoBack();
    m_history = std::move(history);
    m_caching = caching;
    if (canGoBack() != couldGoBack) {
        update.announce(&FolderNavigatorViewModel::canGoBackChanged);
    }
    m_outline.open(url);
    update.assign(m_currentURL, std::optional{url}, &FolderNavigatorViewModel::currentURLChanged);
}

} // namespace tallyroom
