#include "Scanning/FileScanner.h"
#include "Scanning/ScanCache.h"
#include "Scanning/Sizing.h"

#include <mutex>

namespace tallyroom {

namespace {

/// Lists one folder: its children are measured by the walk below it, and each is delivered when it is done.
class ListingVisitor : public SizingVisitor {
public:
    /// A direct child that is a folder, with what its entry needs once it is measured.
    struct ListedFolder : SizedFolder {
        std::optional<Timestamp> modifiedAt;
        std::size_t index = 0;
    };

    explicit ListingVisitor(FileUrl url)
        : SizingVisitor(SizeCache::shared()), m_url(std::move(url)), m_epoch(ScanCache::shared().epoch())
    {}

    [[nodiscard]] TreeWalk::Wish wish(const TreeWalk::Folder& folder) const final
    {
        return folder.isRoot() ? TreeWalk::Wish{TreeWalk::Attributes::everything, true}
                               : SizingVisitor::wish(folder);
    }

    void visit(TreeWalk::Folder& folder, std::span<TreeWalk::Child> children) final
    {
        if (!folder.isRoot()) {
            SizingVisitor::visit(folder, children);
            return;
        }
        auto& root = static_cast<SizedFolder&>(folder);
        std::vector<Indexed> done;
        done.reserve(children.size());
        std::int64_t total = 0;
        const auto finished = [&](const TreeWalk::Child& child, std::int64_t bytes) {
            total = checkedSum(total, bytes);
            done.push_back({child.index, entry(child, bytes)});
        };
        for (const TreeWalk::Child& child : children) {
            if (!child.isFolder()) {
                finished(child, child.attributes != nullptr ? child.attributes->allocatedBytes : 0);
            }
        }
        lookUpFolders(root, children, finished);
        addChecked(root.total, total);
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
        folder->modifiedAt = modifiedAt(child);
        folder->index = child.index;
        return folder;
    }

protected:
    struct Indexed {
        std::size_t index;
        Entry entry;
    };

    /// Children that are done, in the order of the listing within one call. Any worker.
    virtual void deliver(std::vector<Indexed> entries) = 0;

    void measured(SizedFolder& folder, std::int64_t total) final
    {
        if (folder.parent() == nullptr || !folder.parent()->isRoot()) {
            return;
        }
        const auto& listed = static_cast<ListedFolder&>(folder);
        std::vector<Indexed> done;
        done.push_back(
            {listed.index, {m_url.appending(listed.name()), listed.name(), total, true, listed.modifiedAt}});
        deliver(std::move(done));
    }

    void keep(const EntryList& entries) const { ScanCache::shared().store(m_url, entries, m_epoch); }

private:
    static std::optional<Timestamp> modifiedAt(const TreeWalk::Child& child)
    {
        return child.attributes != nullptr ? child.attributes->modifiedAt : std::nullopt;
    }

    [[nodiscard]] Entry entry(const TreeWalk::Child& child, std::int64_t bytes) const
    {
        return {m_url.appending(child.name), std::string{child.name}, bytes, child.isFolder(),
                modifiedAt(child)};
    }

    const FileUrl m_url;
    const std::uint64_t m_epoch;
};

/// Sends a record after every child.
class StreamedListing final : public ListingVisitor {
public:
    StreamedListing(const FileUrl& url, ProgressSender<ScanProgress> sender)
        : ListingVisitor(url), m_sender(std::move(sender))
    {}

    void counted(TreeWalk::Folder& /*folder*/, std::size_t names) override
    {
        m_total = static_cast<std::int64_t>(names);
        if (names == 0) {
            m_sender->send({});
        }
    }

    void finish(bool stopped) override
    {
        if (!stopped && m_total > 0) {
            keep(m_entries.snapshot());
        }
        m_sender.reset();
    }

protected:
    void deliver(std::vector<Indexed> entries) override
    {
        std::vector<ScanProgress> records;
        records.reserve(entries.size());
        StreamWake wake; // outlives the lock
        const std::scoped_lock lock{m_mutex};
        for (Indexed& done : entries) {
            m_entries.append(std::move(done.entry));
            const auto completed = static_cast<std::int64_t>(m_entries.size());
            records.push_back({m_entries.snapshot(), completed, m_total, false});
        }
        wake = m_sender->enqueue(std::move(records));
    }

private:
    std::optional<ProgressSender<ScanProgress>> m_sender;
    std::int64_t m_total = 0;
    std::mutex m_mutex;
    EntryList::Builder m_entries; // guarded by m_mutex until finish
};

/// Gives the whole list at the end, equal sizes in the order of the listing.
class WholeListing final : public ListingVisitor {
public:
    WholeListing(const FileUrl& url, std::promise<EntryList> result)
        : ListingVisitor(url), m_result(std::move(result))
    {}

    void counted(TreeWalk::Folder& /*folder*/, std::size_t names) override { m_entries.resize(names); }

    void finish(bool /*stopped*/) override
    {
        EntryList::Builder builder;
        for (Entry& entry : m_entries) {
            builder.append(std::move(entry));
        }
        keep(builder.snapshot());
        m_result.set_value(builder.snapshot());
    }

protected:
    /// Every child has a slot of its own.
    void deliver(std::vector<Indexed> entries) override
    {
        for (Indexed& done : entries) {
            m_entries[done.index] = std::move(done.entry);
        }
    }

private:
    std::promise<EntryList> m_result;
    std::vector<Entry> m_entries;
};

void startListing(const FileUrl& url, std::unique_ptr<ListingVisitor> visitor, std::stop_token stop)
{
    auto root = std::make_unique<SizingVisitor::SizedFolder>();
    root->place = SizeCache::shared().place(url);
    std::vector<TreeWalk::Root> roots;
    roots.push_back({url, std::move(root)});
    TreeWalk::start(WorkerPool::shared(), std::move(roots), std::move(visitor), std::move(stop));
}

} // namespace

std::future<EntryList> FileScanner::directEntries(const FileUrl& url, bool useCache)
{
    std::promise<EntryList> promise;
    auto result = promise.get_future();
    if (auto known = useCache ? ScanCache::shared().find(url) : std::nullopt) {
        promise.set_value(std::move(*known));
        return result;
    }
    startListing(url, std::make_unique<WholeListing>(url, std::move(promise)), {});
    return result;
}

FileScanner::ScanStream FileScanner::directEntriesStream(const FileUrl& url, bool useCache)
{
    auto [sender, stream] = makeProgressStream<ScanProgress>();
    if (auto known = useCache ? ScanCache::shared().find(url) : std::nullopt) {
        const auto length = static_cast<std::int64_t>(known->size());
        sender.send({std::move(*known), length, length, false});
        return std::move(stream);
    }
    std::stop_token stop = sender.stopToken();
    startListing(url, std::make_unique<StreamedListing>(url, std::move(sender)), std::move(stop));
    return std::move(stream);
}

void FileScanner::invalidateCache(const FileUrl& url)
{
    ScanCache::shared().remove(url);
    SizeCache::shared().clear();
}

void FileScanner::clearCache()
{
    ScanCache::shared().clear();
    SizeCache::shared().clear();
}

} // namespace tallyroom
