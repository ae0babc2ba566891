#include "FileSystem/TreeWalk.h"

#include <algorithm>
#include <deque>
#include <mutex>
#include <ranges>
#include <sys/resource.h>

namespace tallyroom {

namespace {

/// How many entries may pass between two looks at the stop.
constexpr std::size_t entriesBetweenStops = 256;

/// How many folders of one walk stay open for their children's sake. Beyond that, children are opened by
/// their path from the root, which is slower and always works.
int openFolderLimit()
{
    rlimit limit = {};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) {
        return 1024;
    }
    return static_cast<int>(std::clamp<rlim_t>(limit.rlim_cur / 8, 32, 1024));
}

} // namespace

FileUrl TreeWalk::Folder::url() const
{
    return url({});
}

FileUrl TreeWalk::Folder::url(std::string_view child) const
{
    // From the leaf up: lengths first, then the names from the end of the text.
    std::size_t length = child.empty() ? 0 : child.size() + 1;
    const Folder* root = this;
    for (; root->m_parent != nullptr; root = root->m_parent) {
        length += root->m_name.size() + 1;
    }
    const std::string_view base = root->m_name == "/" ? std::string_view{} : root->m_name;
    if (base.empty() && length == 0) {
        return FileUrl{"/"};
    }
    std::string path(base.size() + length, '/');
    std::ranges::copy(base, path.begin());
    auto end = path.size();
    const auto place = [&path, &end](std::string_view name) {
        end -= name.size();
        std::ranges::copy(name, path.begin() + static_cast<std::ptrdiff_t>(end));
        --end; // the slash before it
    };
    if (!child.empty()) {
        place(child);
    }
    for (const Folder* folder = this; folder->m_parent != nullptr; folder = folder->m_parent) {
        place(folder->m_name);
    }
    return FileUrl{std::move(path)};
}

const ScanRoot& TreeWalk::Folder::scanRoot() const
{
    const Folder* root = this;
    while (root->m_parent != nullptr) {
        root = root->m_parent;
    }
    const ScanRoot* known = root->m_scanRoot.load();
    if (known == nullptr) {
        known = &ScanRoots::add(FileUrl{root->m_name}, root->m_descriptor.get());
        root->m_scanRoot = known; // two workers find the same row
    }
    return *known;
}

class TreeWalk::Run final : public WorkerPool::Job {
public:
    Run(WorkerPool& pool, std::unique_ptr<Visitor> visitor, std::stop_token stop)
        : m_pool(pool), m_visitor(std::move(visitor)), m_stop(std::move(stop)), m_queues(pool.width()),
          m_desks(pool.capacity())
    {}

    /// Queues the roots; false when there are none.
    bool begin(std::vector<Root> roots)
    {
        m_rootsPending = roots.size();
        Queue& queue = m_queues.front();
        for (Root& root : std::views::reverse(roots)) {
            root.folder->m_name = root.url.path();
            root.folder->m_rootAccess =
                root.link == RootLink::followed ? FolderAccess::listing : FolderAccess::listingNoLink;
            queue.items.push_back({root.folder.release(), nullptr, 0});
        }
        m_queued = roots.size();
        return !roots.empty();
    }

    void finish(bool stopped) { m_visitor->finish(stopped); }

    bool work(unsigned worker) override
    {
        Item item;
        if (m_queued.load() == 0 || !take(worker, item)) {
            return false;
        }
        Desk& desk = deskOf(worker);
        if (item.names != nullptr) {
            m_waitingBuffers.fetch_sub(1, std::memory_order_relaxed);
        }
        if (isStopped()) {
            item.names.reset();
        } else if (item.names != nullptr) {
            visit(worker, desk, *item.folder, *item.names, item.firstIndex);
        } else {
            enter(worker, desk, *item.folder);
        }
        releaseDescriptor(*item.folder);
        release(item.folder);
        return true;
    }

    void abandon() noexcept override { m_abandoned = true; }

private:
    /// A folder to list, or a buffer of its names to visit.
    struct Item {
        Folder* folder = nullptr;
        std::unique_ptr<NameBuffer> names;
        std::size_t firstIndex = 0;
    };

    struct Queue {
        std::mutex mutex;
        std::deque<Item> items; // guarded by mutex
    };

    /// What one worker reuses from folder to folder.
    struct Desk {
        std::unique_ptr<NameBuffer> current = std::make_unique<NameBuffer>();
        std::unique_ptr<NameBuffer> next = std::make_unique<NameBuffer>();
        std::vector<ListedName> names;
        std::vector<FileAttributes> attributes;
        std::vector<Child> children;
        std::vector<Item> found;
        // The folder listed last when it may not stay open for its children: the one visited next is most
        // often its child, and is opened from here.
        std::uint64_t lastSerial = 0;
        FileDescriptor lastDescriptor;
    };

    bool isStopped() const { return m_stop.stop_requested() || m_abandoned.load(); }

    Desk& deskOf(unsigned worker)
    {
        auto& desk = m_desks[worker];
        if (desk == nullptr) {
            desk = std::make_unique<Desk>();
        }
        return *desk;
    }

    /// Workers that take the place of held up ones share their queues.
    Queue& queueOf(std::size_t worker) { return m_queues[worker % m_queues.size()]; }

    /// The newest item of one's own, else the oldest of somebody else's: the largest subtree left.
    bool take(unsigned worker, Item& item)
    {
        for (std::size_t step = 0; step < m_queues.size(); ++step) {
            Queue& queue = queueOf(worker + step);
            const std::scoped_lock lock{queue.mutex};
            if (queue.items.empty()) {
                continue;
            }
            if (step == 0) {
                item = std::move(queue.items.back());
                queue.items.pop_back();
            } else {
                item = std::move(queue.items.front());
                queue.items.pop_front();
            }
            m_queued.fetch_sub(1);
            return true;
        }
        return false;
    }

    void put(unsigned worker, std::vector<Item>& items)
    {
        const std::size_t count = items.size();
        if (count == 0) {
            return;
        }
        {
            Queue& queue = queueOf(worker);
            const std::scoped_lock lock{queue.mutex};
            std::ranges::move(items, std::back_inserter(queue.items));
            m_queued.fetch_add(count);
        }
        items.clear();
        m_pool.announce(count);
    }

    SystemResult<FileDescriptor> open(Desk& desk, Folder& folder)
    {
        SystemResult<FileDescriptor> opened;
        if (folder.isRoot()) {
            opened = openFolder(FileUrl{folder.m_name}, folder.m_rootAccess);
        } else if (folder.m_parent->m_keepsOpen) {
            opened = openChildFolder(folder.m_parent->m_descriptor.get(), folder.m_name.c_str());
            releaseDescriptor(*folder.m_parent);
        } else if (folder.m_parent->m_serial != 0 && desk.lastSerial == folder.m_parent->m_serial) {
            opened = openChildFolder(desk.lastDescriptor.get(), folder.m_name.c_str());
        } else {
            opened = openFromRoot(folder);
        }
        return opened;
    }

    static SystemResult<FileDescriptor> openFromRoot(const Folder& folder)
    {
        const Folder* root = &folder;
        while (!root->isRoot()) {
            root = root->m_parent;
        }
        const std::string path = folder.url().path();
        std::string_view below = std::string_view{path}.substr(root->m_name.size());
        below.remove_prefix(std::min(below.find_first_not_of('/'), below.size()));
        return openDescendantFolder(root->m_descriptor.get(), below);
    }

    void enter(unsigned worker, Desk& desk, Folder& folder)
    {
        SystemResult<FileDescriptor> opened = open(desk, folder);
        if (!opened) {
            m_visitor->unreadable(folder, opened.error());
            if (m_visitor->wish(folder).countFirst) {
                m_visitor->counted(folder, 0);
            }
            return;
        }
        folder.m_descriptor = std::move(*opened);
        // A root stays open for the sake of all that is opened by its path; others while there is room.
        folder.m_keepsOpen = folder.isRoot() || m_openFolders.fetch_add(1) < openLimit();
        if (m_visitor->wish(folder).countFirst) {
            enterCounted(worker, folder);
            return;
        }
        std::size_t index = 0;
        bool some = desk.current->read(folder.m_descriptor.get());
        while (some) {
            const bool more = desk.next->read(folder.m_descriptor.get());
            if (more && !isStopped() && hasRoomForBuffers()) {
                index += share(worker, desk, folder, index);
            } else {
                visit(worker, desk, folder, *desk.current, index);
                index += desk.names.size();
            }
            std::swap(desk.current, desk.next);
            some = more && !isStopped();
        }
    }

    /// Hands a full buffer of names to whoever is free. Returns how many names it held.
    std::size_t share(unsigned worker, Desk& desk, Folder& folder, std::size_t firstIndex)
    {
        const std::size_t count = desk.current->count();
        desk.found.push_back(
            pieceOf(folder, std::exchange(desk.current, std::make_unique<NameBuffer>()), firstIndex));
        put(worker, desk.found);
        return count;
    }

    void enterCounted(unsigned worker, Folder& folder)
    {
        std::vector<Item> pieces;
        std::size_t names = 0;
        auto buffer = std::make_unique<NameBuffer>();
        while (!isStopped() && buffer->read(folder.m_descriptor.get())) {
            const std::size_t count = buffer->count();
            buffer->shrink();
            pieces.push_back(pieceOf(folder, std::exchange(buffer, std::make_unique<NameBuffer>()), names));
            names += count;
        }
        m_visitor->counted(folder, names);
        put(worker, pieces);
    }

    /// Names are read faster than files are looked at: beyond this, whoever reads them visits them as well,
    /// so that a folder of millions does not end up in memory whole.
    bool hasRoomForBuffers() const
    {
        return m_waitingBuffers.load(std::memory_order_relaxed) < 2 * std::size_t{m_pool.width()};
    }

    Item pieceOf(Folder& folder, std::unique_ptr<NameBuffer> names, std::size_t firstIndex)
    {
        m_waitingBuffers.fetch_add(1, std::memory_order_relaxed);
        folder.m_pending.fetch_add(1);
        folder.m_uses.fetch_add(1);
        return {&folder, std::move(names), firstIndex};
    }

    void visit(unsigned worker, Desk& desk, Folder& folder, const NameBuffer& buffer, std::size_t firstIndex)
    {
        desk.names.clear();
        buffer.parse(desk.names);
        desk.children.clear();
        desk.attributes.resize(desk.names.size());
        const Attributes wanted = m_visitor->wish(folder).attributes;
        for (std::size_t i = 0; i < desk.names.size(); ++i) {
            if (i % entriesBetweenStops == entriesBetweenStops - 1 && isStopped()) {
                return;
            }
            const ListedName& name = desk.names[i];
            Child child{name.view(), name.type, nullptr, firstIndex + i};
            if (needsAttributes(wanted, name.type)) {
                if (const auto read = fileAttributes(folder.m_descriptor.get(), name.name)) {
                    desk.attributes[i] = *read;
                    child.attributes = &desk.attributes[i];
                    child.type = read->type;
                }
            }
            desk.children.push_back(child);
        }
        m_visitor->visit(folder, desk.children);
        descend(worker, desk, folder);
    }

    static bool needsAttributes(Attributes wanted, EntryType type)
    {
        switch (type) {
        case EntryType::unknown:
            return true;
        case EntryType::folder:
            return wanted == Attributes::everything;
        case EntryType::link:
            return wanted == Attributes::everything || wanted == Attributes::filesAndLinks;
        case EntryType::file:
            return wanted != Attributes::none;
        }
        return true;
    }

    void descend(unsigned worker, Desk& desk, Folder& folder)
    {
        for (const Child& child : std::views::reverse(desk.children)) {
            if (child.descend && child.isFolder()) {
                auto record = m_visitor->descendInto(folder, child);
                record->m_parent = &folder;
                record->m_name = child.name;
                desk.found.push_back({record.release(), nullptr, 0});
            }
        }
        const auto count = static_cast<std::uint32_t>(desk.found.size());
        folder.m_pending.fetch_add(count);
        if (folder.m_keepsOpen) {
            folder.m_uses.fetch_add(count);
        } else if (count > 0) {
            folder.m_serial = desk.lastSerial = m_serials.fetch_add(1) + 1;
            desk.lastDescriptor = FileDescriptor{::dup(folder.m_descriptor.get())};
        }
        put(worker, desk.found);
    }

    /// One user of the folder's descriptor less; the last one closes it, but for a root's.
    void releaseDescriptor(Folder& folder)
    {
        if (folder.m_uses.fetch_sub(1) == 1 && folder.m_descriptor.isOpen() && !folder.isRoot()) {
            folder.m_descriptor.reset();
            m_openFolders.fetch_sub(1);
        }
    }

    /// One thing less that `folder` waits for; whoever takes the last one leaves it, and so on upwards.
    void release(Folder* folder)
    {
        while (folder != nullptr && folder->m_pending.fetch_sub(1) == 1) {
            // Whoever gave something up below saw the stop before, and so does this look.
            m_visitor->leave(*folder, !isStopped());
            Folder* const parent = folder->m_parent;
            delete folder; // NOLINT(cppcoreguidelines-owning-memory): queues and children hold plain pointers
            folder = parent;
            if (parent == nullptr && m_rootsPending.fetch_sub(1) == 1) {
                finish(isStopped());
                m_pool.remove(*this);
            }
        }
    }

    static int openLimit()
    {
        static const int limit = openFolderLimit();
        return limit;
    }

    WorkerPool& m_pool;
    std::unique_ptr<Visitor> m_visitor;
    std::stop_token m_stop;
    std::atomic<bool> m_abandoned = false;
    std::vector<Queue> m_queues;
    std::vector<std::unique_ptr<Desk>> m_desks;
    std::atomic<std::size_t> m_queued = 0;
    std::atomic<std::size_t> m_rootsPending = 0;
    std::atomic<std::size_t> m_waitingBuffers = 0;
    std::atomic<int> m_openFolders = 0;
    std::atomic<std::uint64_t> m_serials = 0;
};

void TreeWalk::start(WorkerPool& pool, std::vector<Root> roots, std::unique_ptr<Visitor> visitor,
                     std::stop_token stop)
{
    auto run = std::make_shared<Run>(pool, std::move(visitor), std::move(stop));
    if (run->begin(std::move(roots))) {
        pool.add(std::move(run));
    } else {
        run->finish(false);
    }
}

} // namespace tallyroom
