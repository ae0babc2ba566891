#include "App/NavigatorScene.h"

#include "Settings/Settings.h"

#include <algorithm>

namespace tallyroom {

NavigatorScene::NavigatorScene()
{
    Settings::store().clear(); // before a view reads them
    const auto remove = [this](std::span<const Entry> entries, bool permanently,
                               const FileRemover::BatchOptions& options) {
        FileRemover::RemovalResult result;
        for (const Entry& entry : entries) {
            if (options.stop.stop_requested()) {
                break;
            }
            awaitGate();
            if (undeletable.contains(entry.url)) {
                result.failures.push_back({entry.url, "refused"});
                continue;
            }
            result.removed.push_back(entry.url);
            if (!permanently) {
                result.trashed.push_back({entry.url, FileUrl{"/trash"}.appending(entry.name)});
            }
        }
        return result;
    };
    const auto restore = [this](std::span<const FileRemover::TrashedItem> items,
                                const FileRemover::BatchOptions& /*options*/) {
        awaitGate();
        FileRemover::RemovalResult result;
        std::ranges::transform(items, std::back_inserter(result.removed),
                               &FileRemover::TrashedItem::original);
        return result;
    };
    deletions = std::make_unique<DeletionRunner>(RemovalOperations{remove, restore});
    const auto list = [this](const FileUrl& /*folder*/, bool useCache) {
        auto [sender, stream] = makeProgressStream<ScanProgress>();
        auto running = std::make_shared<RunningFolders>();
        listings.push_back(std::make_unique<HandFedListing>(
            useCache, std::make_unique<ProgressSender<ScanProgress>>(std::move(sender)), running));
        return FileScanner::ScanStream{std::move(stream), std::move(running), listing().contents};
    };
    navigator = std::make_unique<FolderNavigatorViewModel>(
        *deletions, FolderServices{list, [this](const FileUrl& url) { invalidated.push_back(url); },
                                   [this](const FileUrl& url) { revealed.push_back(url); }, TreeOutline::read,
                                   [used = usedBytes](const FileUrl&) { return used->get(); }});
}

void NavigatorScene::openLoaded(const std::string& folder, std::vector<Entry> entries)
{
    navigator->open(FileUrl{folder});
    finishListing(std::move(entries));
}

void NavigatorScene::receive(std::vector<Entry> entries)
{
    const auto count = static_cast<std::int64_t>(entries.size());
    listing().send(std::move(entries), count, count + 1);
    ASSERT_TRUE(waitUntil(navigator.get(), &ListToolViewModel::progressChanged,
                          [&] { return std::ssize(navigator->entries()) == count; }));
}

void NavigatorScene::finishListing(std::vector<Entry> entries, const std::optional<SystemError>& unread)
{
    const auto count = static_cast<std::int64_t>(entries.size());
    listing().send(std::move(entries), count, count, unread);
    listing().end();
    ASSERT_TRUE(waitUntil(navigator.get(), &ListToolViewModel::stateChanged,
                          [this] { return navigator->state() == ToolState::loaded(); }));
}

void NavigatorScene::letRemove()
{
    gate.set_value();
    ASSERT_TRUE(waitForRemoval());
    mayRemove = {};
}

void NavigatorScene::deleteNow(const UrlSet& urls, bool permanently)
{
    navigator->deleteSelected(urls, permanently);
    ASSERT_TRUE(waitForRemoval());
}

bool NavigatorScene::waitForRemoval()
{
    return waitUntil(deletions.get(), &DeletionRunner::isRunningChanged,
                     [this] { return !deletions->isRunning(); });
}

std::vector<std::string> NavigatorScene::listedNames() const
{
    std::vector<std::string> names;
    std::ranges::transform(navigator->entries(), std::back_inserter(names), &Entry::name);
    return names;
}

Entry fileEntry(const std::string& path, std::int64_t size)
{
    const FileUrl url{path};
    return {url, std::string{url.lastPathComponent()}, size, false};
}

Entry folderEntry(const std::string& path, std::int64_t size)
{
    Entry entry = fileEntry(path, size);
    entry.isDirectory = true;
    return entry;
}

} // namespace tallyroom
