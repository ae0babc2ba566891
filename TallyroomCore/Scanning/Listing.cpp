#include "Model/CheckedArithmetic.h"
#include "Scanning/FileScanner.h"
#include "Scanning/ListedEntry.h"
#include "Scanning/ScanCache.h"
#include "Scanning/Sizing.h"
#include "Scanning/StreamedEntries.h"

#include <algorithm>
#include <map>
#include <mutex>

namespace tallyroom {

namespace {

/// Lists one folder: its children are measured by the walk below it, and each is delivered when it is done.
class ListingVisitor : public SizingVisitor {
public:
    /// A direct child that is a folder, with what its entry needs once it is measured.
    struct ListedFolder : SizedFolder {
        std::optional<Timestamp> modifiedAt;
        ItemIdentity identity;
        std::size_t index = 0;
        RunningFolders::Folder* running = nullptr;
    };

    explicit ListingVisitor(FileUrl url)
        : SizingVisitor(SizeCache::shared()), m_url(std::move(url)), m_epoch(ScanCache::shared().epoch())
    {
        if (const auto known = cache().find(m_url)) {
            m_knownAgain = known->countedAgain;
        }
    }

    /// Filled while the listing goes on.
    [[nodiscard]] const SharedFolderContents& contents() const { return m_contents; }

    [[nodiscard]] TreeWalk::Wish wish(const TreeWalk::Folder& folder) const final
    {
        return folder.isRoot() ? TreeWalk::Wish{TreeWalk::Attributes::everything, true}
                               : SizingVisitor::wish(folder);
    }

    void unreadable(TreeWalk::Folder& folder, const SystemError& error) override
    {
        SizingVisitor::unreadable(folder, error);
        if (folder.isRoot()) {
            m_unread = error;
        }
    }

    void visit(TreeWalk::Folder& folder, std::span<TreeWalk::Child> children) final
    {
        if (!folder.isRoot()) {
            SizingVisitor::visit(folder, children);
            return;
        }
        auto& root = static_cast<SizedFolder&>(folder);
        std::vector<IndexedEntry> done;
        done.reserve(children.size());
        const ScanRoot& scanRoot = folder.scanRoot();
        const auto finished = [&](const TreeWalk::Child& child, const FolderSize& size) {
            done.push_back({child.index, listedEntry(m_url, child, size, scanRoot)});
        };
        for (const TreeWalk::Child& child : children) {
            if (!child.isFolder()) {
                finished(child, sizeOfItem(child));
            }
        }
        const FolderSize items = sizeOfItems(children);
        root.addItems(items);
        m_contents->count(items.bytes);
        countShared(root, children);
        lookUpFolders(root, children, [&](const TreeWalk::Child& child, const FolderSize& size) {
            root.add(size);
            countAgain(child.name, size.countedAgain);
            m_contents->of(std::string{child.name}).add(size);
            finished(child, size);
        });
        keepUnread(root, children);
        deliver(std::move(done));
    }

    std::unique_ptr<TreeWalk::Folder> descendInto(TreeWalk::Folder& parent,
                                                  const TreeWalk::Child& child) final
    {
        if (!parent.isRoot()) {
            return SizingVisitor::descendInto(parent, child);
        }
        auto folder = std::make_unique<ListedFolder>();
        folder->place = {static_cast<SizedFolder&>(parent).place.epoch,
                         static_cast<std::uint32_t>(child.mark)};
        Entry entry = listedEntry(m_url, child, {}, parent.scanRoot());
        folder->modifiedAt = entry.modifiedAt;
        folder->identity = entry.identity;
        folder->index = child.index;
        folder->running = running() != nullptr ? running()->add(std::move(entry)) : nullptr;
        folder->soFar = folder->running != nullptr ? &folder->running->bytes : nullptr;
        folder->contentSoFar = &m_contents->of(std::string{child.name});
        return folder;
    }

    void leave(TreeWalk::Folder& folder, bool whole) final
    {
        if (folder.isRoot()) {
            auto& again = static_cast<SizedFolder&>(folder).countedAgain;
            again = std::max(again.load(), m_knownAgain);
        }
        SizingVisitor::leave(folder, whole);
    }

protected:
    /// Children that are done, in the order of the listing within one call. Any worker.
    virtual void deliver(std::vector<IndexedEntry> entries) = 0;

    void measured(SizedFolder& folder, const FolderSize& size) final
    {
        if (folder.parent() == nullptr || !folder.parent()->isRoot()) {
            return;
        }
        const auto& listed = static_cast<ListedFolder&>(folder);
        Entry entry{.url = m_url.appending(listed.name()),
                    .name = listed.name(),
                    .isDirectory = true,
                    .modifiedAt = listed.modifiedAt,
                    .identity = listed.identity};
        size.applyTo(entry);
        countAgain(listed.name(), size.countedAgain);
        m_contents->set(listed.name(), size);
        std::vector<IndexedEntry> done;
        done.push_back({listed.index, std::move(entry), listed.running});
        deliver(std::move(done));
    }

    /// Where folders are on show that are still being measured; may be null.
    [[nodiscard]] virtual RunningFolders* running() const { return nullptr; }

    /// What could not be read, when all children are done.
    [[nodiscard]] SharedUnreadPlaces unreadPlaces() const
    {
        UnreadPlaces places = cache().unreadPlaces(m_url);
        // The store may not have heard of the folder itself.
        if (m_unread && std::ranges::find(places.places, m_url, &UnreadPlace::url) == places.places.end()) {
            places.add({1, false, {{m_url, *m_unread}}});
        }
        return places.count > 0 ? std::make_shared<const UnreadPlaces>(std::move(places)) : nullptr;
    }

    /// What is counted more than once, when all children are done.
    [[nodiscard]] SharedCountedAgain countedAgain() const
    {
        const std::scoped_lock lock{m_mutex};
        if (m_again.empty() && m_knownAgain == 0) {
            return nullptr;
        }
        auto all = std::make_shared<CountedAgain>();
        for (const auto& [child, bytes] : m_again) {
            all->bytes = checkedSum(all->bytes, bytes);
            all->children[m_url.appending(child)] = bytes;
        }
        all->bytes = std::max(all->bytes, m_knownAgain);
        return all;
    }

    [[nodiscard]] std::string_view childWith(const SizedFolder& folder,
                                             const TreeWalk::Child& file) const final
    {
        if (folder.isRoot()) {
            return file.name;
        }
        const TreeWalk::Folder* above = &folder;
        while (!above->parent()->isRoot()) {
            above = above->parent();
        }
        return above->name();
    }

    void sharedWith(std::string_view child, std::int64_t bytes) final { countAgain(child, bytes); }

    void keep(Listing listing) const
    {
        listing.contents = m_contents;
        ScanCache::shared().store(m_url, listing, m_epoch);
    }

private:
    void countAgain(std::string_view child, std::int64_t bytes)
    {
        if (bytes > 0) {
            const std::scoped_lock lock{m_mutex};
            std::int64_t& sum = m_again[std::string{child}];
            sum = checkedSum(sum, bytes);
        }
    }

    const FileUrl m_url;
    const std::uint64_t m_epoch;
    const SharedFolderContents m_contents = std::make_shared<FolderContents>();
    std::optional<SystemError> m_unread;
    std::int64_t m_knownAgain = 0; ///< from a walk that did not take children from the store
    mutable std::mutex m_mutex;
    std::map<std::string, std::int64_t> m_again; ///< by child; guarded by m_mutex
};

/// Sends a record after every child.
class StreamedListing final : public ListingVisitor {
public:
    StreamedListing(const FileUrl& url, ProgressSender<ScanProgress> sender,
                    std::shared_ptr<RunningFolders> running)
        : ListingVisitor(url), m_entries(std::move(sender)), m_running(std::move(running))
    {
        m_entries.setRemarks([this](ScanProgress& last) {
            last.unreadPlaces = unreadPlaces();
            last.countedAgain = countedAgain();
        });
    }

    void unreadable(TreeWalk::Folder& folder, const SystemError& error) override
    {
        ListingVisitor::unreadable(folder, error);
        if (folder.isRoot()) {
            m_entries.unreadable(error);
        }
    }

    void counted(TreeWalk::Folder& /*folder*/, std::size_t names) override
    {
        m_isEmpty = names == 0;
        m_entries.expect(names);
    }

    void finish(bool stopped) override
    {
        if (!stopped && !m_isEmpty) {
            keep(m_entries.listing());
        }
        m_entries.end();
    }

protected:
    void deliver(std::vector<IndexedEntry> entries) override { m_entries.append(std::move(entries)); }

    [[nodiscard]] RunningFolders* running() const override { return m_running.get(); }

private:
    StreamedEntries m_entries;
    const std::shared_ptr<RunningFolders> m_running;
    bool m_isEmpty = true;
};

/// Gives the whole list at the end, equal sizes in the order of the listing.
class WholeListing final : public ListingVisitor {
public:
    WholeListing(const FileUrl& url, std::promise<EntryList> result)
        : ListingVisitor(url), m_result(std::move(result))
    {}

    void counted(TreeWalk::Folder& /*folder*/, std::size_t names) override { m_slots.resize(names); }

    void finish(bool /*stopped*/) override
    {
        EntryList::Builder builder;
        for (Entry& entry : m_slots) {
            builder.append(std::move(entry));
        }
        const EntryList entries = builder.snapshot();
        keep({entries, unreadPlaces(), countedAgain()});
        m_result.set_value(entries);
    }

protected:
    void deliver(std::vector<IndexedEntry> entries) override
    {
        for (IndexedEntry& done : entries) {
            m_slots[done.index] = std::move(done.entry);
        }
    }

private:
    std::promise<EntryList> m_result;
    std::vector<Entry> m_slots; ///< one a child, so that no lock is needed
};

void startListing(const FileUrl& url, std::unique_ptr<ListingVisitor> visitor, std::stop_token stop)
{
    auto root = std::make_unique<SizingVisitor::SizedFolder>();
    root->place = SizeCache::shared().place(url);
    TreeWalk::start({url, std::move(root)}, std::move(visitor), std::move(stop));
}

} // namespace

std::future<EntryList> FileScanner::directEntries(const FileUrl& url, bool useCache)
{
    std::promise<EntryList> promise;
    auto result = promise.get_future();
    if (auto known = useCache ? ScanCache::shared().find(url) : std::nullopt) {
        promise.set_value(std::move(known->entries));
        return result;
    }
    startListing(url, std::make_unique<WholeListing>(url, std::move(promise)), {});
    return result;
}

FileScanner::ScanStream FileScanner::directEntriesStream(const FileUrl& url, bool useCache)
{
    auto [sender, stream] = makeProgressStream<ScanProgress>();
    if (auto known = useCache ? ScanCache::shared().find(url) : std::nullopt) {
        const auto length = static_cast<std::int64_t>(known->entries.size());
        const SharedFolderContents contents = known->contents;
        sender.send({std::move(known->entries),
                     length,
                     length,
                     false,
                     {},
                     std::move(known->unreadPlaces),
                     std::move(known->countedAgain)});
        return {std::move(stream), {}, contents};
    }
    std::stop_token stop = sender.stopToken();
    auto running = std::make_shared<RunningFolders>();
    auto visitor = std::make_unique<StreamedListing>(url, std::move(sender), running);
    const SharedFolderContents contents = visitor->contents();
    startListing(url, std::move(visitor), std::move(stop));
    return {std::move(stream), std::move(running), contents};
}

void FileScanner::invalidateCache(const FileUrl& url)
{
    ScanCache::shared().remove(url);
    SizeCache::shared().clear();
}

void FileScanner::invalidateAround(const FileUrl& url)
{
    ScanCache::shared().removeAround(url);
    SizeCache::shared().clear();
}

void FileScanner::clearCache()
{
    ScanCache::shared().clear();
    SizeCache::shared().clear();
}

} // namespace tallyroom
