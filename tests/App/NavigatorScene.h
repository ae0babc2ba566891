#pragma once

#include "App/EventWait.h"
#include "Concurrency/Locked.h"
#include "Tools/DiskUsage/FolderNavigatorViewModel.h"

#include <future>
#include <memory>
#include <string>
#include <vector>

namespace tallyroom {

/// A listing that the test feeds by hand.
struct HandFedListing {
    bool useCache = false;
    std::unique_ptr<ProgressSender<ScanProgress>> sender;
    std::shared_ptr<RunningFolders> running;
    SharedFolderContents contents = std::make_shared<FolderContents>();

    void send(std::vector<Entry> entries, std::int64_t completed, std::int64_t total,
              const std::optional<SystemError>& unread = {}) const
    {
        sender->send({EntryList{std::move(entries)}, completed, total, false, unread});
    }

    void end() { sender.reset(); }

    [[nodiscard]] bool isCancelled() const { return sender->stopToken().stop_requested(); }
};

/// Stands in for the disk: lists nothing by itself, and removes what it is told, each item when the test lets
/// it.
class NavigatorScene {
public:
    NavigatorScene();

    [[nodiscard]] HandFedListing& listing() { return *listings.back(); }

    /// Opens `folder` and lets its listing end with `entries`.
    void openLoaded(const std::string& folder, std::vector<Entry> entries);

    /// Feeds the newest listing a record and waits until it is on screen.
    void receive(std::vector<Entry> entries);

    /// Feeds the newest listing a last record and waits for its end.
    void finishListing(std::vector<Entry> entries, const std::optional<SystemError>& unread = {});

    /// Removals wait from here on until `letRemove`.
    void holdRemovals() { gate = std::promise<void>{}, mayRemove = gate.get_future().share(); }

    /// Lets the removal go on and waits until the view model has heard of its end.
    void letRemove();

    /// Deletes and waits until the view model has heard of the end.
    void deleteNow(const UrlSet& urls, bool permanently = false);

    [[nodiscard]] bool waitForRemoval();

    void awaitGate() const
    {
        if (mayRemove.valid()) {
            mayRemove.wait();
        }
    }

    [[nodiscard]] std::vector<std::string> listedNames() const;

    std::vector<std::unique_ptr<HandFedListing>> listings;
    std::vector<FileUrl> invalidated;
    std::vector<FileUrl> revealed;
    UrlSet undeletable;
    /// Of a volume whose top is listed. Asked for on a thread that may outlive the scene.
    std::shared_ptr<Locked<std::optional<std::int64_t>>> usedBytes =
        std::make_shared<Locked<std::optional<std::int64_t>>>();
    std::promise<void> gate;
    std::shared_future<void> mayRemove;
    std::unique_ptr<DeletionRunner> deletions;
    std::unique_ptr<FolderNavigatorViewModel> navigator;
};

[[nodiscard]] Entry fileEntry(const std::string& path, std::int64_t size);
[[nodiscard]] Entry folderEntry(const std::string& path, std::int64_t size);

} // namespace tallyroom
