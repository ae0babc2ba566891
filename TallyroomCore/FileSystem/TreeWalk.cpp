#include "FileSystem/TreeWalk.h"

#include "FileSystem/LookTime.h"
#include "FileSystem/OpenFolders.h"
#include "FileSystem/RealPath.h"
#include "FileSystem/ScanScope.h"
#include "FileSystem/WalkAgenda.h"
#include "FileSystem/WalkMounts.h"

#include <algorithm>
#include <cerrno>
#include <ranges>

namespace tallyroom {

namespace {

/// How many entries may pass between two looks at the stop.
constexpr std::size_t entriesBetweenStops = 256;

/// How many files may be looked at between two looks at the clock.
constexpr std::size_t looksBetweenTimes = 4;

} // namespace

class TreeWalk::Run final : public WorkerPool::Job {
public:
    Run(WorkerPool& pool, std::unique_ptr<Visitor> visitor, std::stop_token stop, const DiskSense& sense)
        : m_pool(pool), m_visitor(std::move(visitor)), m_stop(std::move(stop)), m_sense(sense),
          m_agenda(pool, sense), m_mounts(m_stop),
          m_scope(m_visitor->seesExcluded() ? nullptr : ScanScope::current()), m_desks(pool.capacity())
    {}

    /// Queues the roots; false when there are none.
    bool begin(std::vector<Root> roots)
    {
        m_rootsPending = roots.size();
        std::vector<Item> items;
        for (Root& root : std::views::reverse(roots)) {
            root.folder->m_name = root.url.path();
            root.folder->m_rootAccess =
                root.link == RootLink::followed ? FolderAccess::listing : FolderAccess::listingNoLink;
            items.push_back({root.folder.release(), {}});
        }
        m_agenda.put(0, items);
        return !roots.empty();
    }

    void finish(bool stopped) { m_visitor->finish(stopped); }

    bool work(unsigned worker) override
    {
        Item item;
        if (!m_agenda.take(worker, item)) {
            return false;
        }
        if (waitsItsTurn(worker, item)) {
            return true;
        }
        const LookTime time;
        bool goesOn = true;
        while (goesOn) {
            Folder* const folder = item.folder;
            workOn(worker, item);
            goesOn = m_agenda.goOn(item, time.isOver());
            release(folder);
        }
        return true;
    }

    void abandon() noexcept override { m_abandoned = true; }

private:
    /// Storage that one worker reuses from folder to folder.
    struct Desk {
        std::shared_ptr<ParsedNames> current = std::make_shared<ParsedNames>();
        std::shared_ptr<ParsedNames> next = std::make_shared<ParsedNames>();
        std::vector<FileAttributes> attributes;
        std::vector<Child> children;
        std::vector<Item> found;
        OpenFolders::Last last;
        bool isShared = false; ///< others visit some of the names that were just visited
        DiskAccount account{};
    };

    void workOn(unsigned worker, Item& item)
    {
        Desk& desk = deskOf(worker);
        desk.account.begin(*item.folder, m_sense);
        if (item.piece.names != nullptr) {
            m_waitingPieces.fetch_sub(1, std::memory_order_relaxed);
        }
        if (isStopped()) {
            item.piece.names.reset();
        } else if (item.piece.names != nullptr) {
            visit(worker, desk, *item.folder, item.piece);
        } else {
            enter(worker, desk, *item.folder);
        }
        desk.account.tell();
        desk.account.end();
        m_openFolders.release(*item.folder);
    }

    bool isStopped() const { return m_stop.stop_requested() || m_abandoned.load(); }

    Desk& deskOf(unsigned worker)
    {
        auto& desk = m_desks[worker];
        if (desk == nullptr) {
            desk = std::make_unique<Desk>();
        }
        return *desk;
    }

    /// Leaves a root that has to be read in order to whoever comes to it.
    bool waitsItsTurn(unsigned worker, Item& item)
    {
        Folder& folder = *item.folder;
        if (folder.isRoot() && folder.m_position.mount() == nullptr) {
            place(folder, folder.m_name);
            if (Agenda::isOrdered(folder)) {
                std::vector<Item> again{std::move(item)};
                m_agenda.put(worker, again);
                return true;
            }
        }
        return false;
    }

    void place(Folder& root, std::string_view path)
    {
        root.m_position = m_mounts.find(path);
        root.m_spindles = m_agenda.spindlesOf(root.m_position.mount());
    }

    SystemResult<FileDescriptor> open(Desk& desk, Folder& folder)
    {
        if (folder.m_exclusion != 0) {
            return std::unexpected(SystemError{folder.m_exclusion});
        }
        // Below its top a mount has answered, but a root may lie anywhere.
        const auto& position = folder.m_position;
        const Mount* const mount = folder.isRoot() ? position.mount() : position.mountPoint();
        if (mount != nullptr && !m_mounts.isAnswering(*mount)) {
            return std::unexpected(SystemError{ETIMEDOUT});
        }
        auto opened = m_openFolders.open(folder, desk.last);
        if (opened && folder.isRoot()) {
            if (const auto path = realPathOf(opened->get())) {
                place(folder, *path);
            }
        }
        return opened;
    }

    void enter(unsigned worker, Desk& desk, Folder& folder)
    {
        SystemResult<FileDescriptor> opened = open(desk, folder);
        if (!opened) {
            tellUnreadable(folder, opened.error().code);
            if (m_visitor->wish(folder).countFirst) {
                m_visitor->counted(folder, 0);
            }
            return;
        }
        folder.m_descriptor = std::move(*opened);
        m_openFolders.add(folder);
        if (m_visitor->wish(folder).countFirst) {
            enterCounted(worker, desk, folder);
            return;
        }
        std::size_t index = 0;
        bool some = desk.current->read(folder.m_descriptor.get());
        int failure = desk.current->failure;
        while (some) {
            const bool more = desk.next->read(folder.m_descriptor.get());
            failure = desk.next->failure;
            const std::size_t count = more ? desk.current->buffer.count() : 0;
            desk.isShared = more && !isStopped() && hasRoomForPieces() && !Agenda::isOrdered(folder);
            if (desk.isShared) {
                desk.found.push_back(itemOf(folder, {desk.current, index}));
                m_agenda.put(worker, desk.found);
            } else {
                visit(worker, desk, folder, {desk.current, index});
            }
            index += count;
            if (desk.isShared) {
                desk.current = std::make_shared<ParsedNames>();
            }
            std::swap(desk.current, desk.next);
            some = more && !isStopped();
        }
        tellUnreadable(folder, failure);
    }

    void tellUnreadable(Folder& folder, int failure)
    {
        if (failure != 0 && (folder.isRoot() || !SystemError{failure}.isGone())) {
            m_visitor->unreadable(folder, {failure});
        }
    }

    void enterCounted(unsigned worker, Desk& desk, Folder& folder)
    {
        std::vector<Piece> pieces;
        std::size_t count = 0;
        auto names = std::make_shared<ParsedNames>();
        while (!isStopped() && names->read(folder.m_descriptor.get())) {
            const std::size_t more = names->buffer.count();
            names->buffer.shrink();
            pieces.push_back({std::exchange(names, std::make_shared<ParsedNames>()), count});
            count += more;
        }
        tellUnreadable(folder, names->failure);
        m_visitor->counted(folder, count);
        auto next = pieces.begin();
        for (; next != pieces.end() && Agenda::isOrdered(folder) && !isStopped(); ++next) {
            visit(worker, desk, folder, std::move(*next));
        }
        std::vector<Item> items;
        std::transform(next, pieces.end(), std::back_inserter(items),
                       [&](Piece& piece) { return itemOf(folder, std::move(piece)); });
        m_agenda.put(worker, items);
    }

    /// Names are read faster than files are looked at: beyond this, whoever reads them visits them as well,
    /// so that a folder of millions does not end up in memory whole.
    bool hasRoomForPieces() const
    {
        return m_waitingPieces.load(std::memory_order_relaxed) < 2 * std::size_t{m_pool.width()};
    }

    Item itemOf(Folder& folder, Piece piece)
    {
        m_waitingPieces.fetch_add(1, std::memory_order_relaxed);
        folder.m_pending.fetch_add(1);
        folder.m_uses.fetch_add(1);
        return {&folder, std::move(piece)};
    }

    /// Visits names in batches that take no longer than a moment each. When files are slow to look at and
    /// nothing else waits for a worker, free workers get a share of those that are left.
    void visit(unsigned worker, Desk& desk, Folder& folder, Piece piece)
    {
        piece.names->parse(Agenda::isOrdered(folder));
        piece.end = std::min(piece.end, piece.names->parsed.size());
        do {
            piece.begin = look(worker, desk, folder, piece);
            if (isStopped()) {
                return;
            }
            m_visitor->visit(folder, desk.children);
            descend(worker, desk, folder);
            if (piece.begin < piece.end) {
                desk.account.tell();
            }
            if (piece.begin < piece.end && m_agenda.isEmpty() && !Agenda::isOrdered(folder)) {
                share(worker, desk, folder, piece);
                return;
            }
        } while (piece.begin < piece.end);
    }

    void share(unsigned worker, Desk& desk, Folder& folder, const Piece& piece)
    {
        for (Piece& part : piece.parts(2 * std::size_t{m_pool.width()})) {
            desk.found.push_back(itemOf(folder, std::move(part)));
        }
        std::ranges::reverse(desk.found); // the newest is taken first
        m_agenda.put(worker, desk.found);
        desk.isShared = true;
    }

    /// Leaves a mount that may keep this worker waiting to another piece of work; false for other names.
    bool setAside(unsigned worker, Desk& desk, Folder& folder, const Piece& piece, std::size_t index)
    {
        const Mount* const mount = WalkMounts::at(folder.m_position, piece.names->parsed[index].view());
        if (mount == nullptr || piece.end - piece.begin == 1 || !m_mounts.isUncertain(*mount)) {
            return false;
        }
        std::vector<Item> alone;
        alone.push_back(itemOf(folder, {piece.names, piece.firstIndex, index, index + 1}));
        m_agenda.put(worker, alone);
        desk.isShared = true;
        return true;
    }

    /// Makes children of names, until the piece or the time is over. Returns where it got to.
    std::size_t look(unsigned worker, Desk& desk, Folder& folder, const Piece& piece)
    {
        const Wish wish = m_visitor->wish(folder);
        const FileDetail detail = wish.identities ? FileDetail::identity : FileDetail::sizes;
        const LookTime time;
        std::size_t looks = 0;
        desk.children.clear();
        desk.attributes.resize(std::max(desk.attributes.size(), piece.end - piece.begin));
        for (std::size_t i = piece.begin; i < piece.end; ++i) {
            const std::size_t count = desk.children.size();
            if (count % entriesBetweenStops == entriesBetweenStops - 1 && isStopped()) {
                return i;
            }
            const ListedName& name = piece.names->parsed[i];
            const bool isWanted = wish.asksFor(name.type);
            if (isWanted && setAside(worker, desk, folder, piece, i)) {
                continue;
            }
            Child& child = desk.children.emplace_back(name.view(), name.type, nullptr, 0,
                                                      piece.firstIndex + name.index, name.inode);
            if (isWanted) {
                readAttributes(folder, name, child, desk.attributes[count], detail);
            }
            if (child.isFolder() && m_scope != nullptr) {
                child.exclusion = m_scope->exclusion(folder, child.name);
            }
            if (isWanted && ++looks % looksBetweenTimes == 0 && time.isOver()) {
                return i + 1;
            }
        }
        return piece.end;
    }

    void readAttributes(Folder& folder, const ListedName& name, Child& child, FileAttributes& storage,
                        FileDetail detail)
    {
        const Mount* const mount = WalkMounts::at(folder.m_position, name.view());
        if (mount != nullptr && !m_mounts.isAnswering(*mount)) {
            child.type = EntryType::folder;
            child.failure = ETIMEDOUT;
            return;
        }
        const SystemError error{readFileAttributes(folder.m_descriptor.get(), name.name, detail, storage)};
        if (error.code == 0) {
            child.attributes = &storage;
            child.type = storage.type;
        } else if (!error.isGone()) {
            child.failure = error.code;
        }
    }

    void descend(unsigned worker, Desk& desk, Folder& folder)
    {
        for (const Child& child : std::views::reverse(desk.children)) {
            if (child.descend && child.isFolder()) {
                auto record = m_visitor->descendInto(folder, child);
                record->standBelow(folder, child);
                if (record->m_position.mount() != folder.m_position.mount()) {
                    record->m_spindles = m_agenda.spindlesOf(record->m_position.mount());
                }
                desk.found.push_back({record.release(), {}});
            }
        }
        const auto count = static_cast<std::uint32_t>(desk.found.size());
        folder.m_pending.fetch_add(count);
        OpenFolders::expect(folder, count, desk.last);
        m_agenda.put(worker, desk.found);
    }

    /// `folder` waits for one thing less. The worker that takes the last one leaves it, and so on upwards.
    void release(Folder* folder)
    {
        while (folder != nullptr && folder->m_pending.fetch_sub(1) == 1) {
            // A worker that gave something up below saw the stop, so it is seen here too.
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

    WorkerPool& m_pool;
    std::unique_ptr<Visitor> m_visitor;
    std::stop_token m_stop;
    std::atomic<bool> m_abandoned = false;
    const DiskSense& m_sense;
    Agenda m_agenda;
    WalkMounts m_mounts;
    std::shared_ptr<const ScanScope> m_scope; // none for a visitor that sees everything
    OpenFolders m_openFolders;
    std::vector<std::unique_ptr<Desk>> m_desks;
    std::atomic<std::size_t> m_rootsPending = 0;
    std::atomic<std::size_t> m_waitingPieces = 0;
};

void TreeWalk::start(WorkerPool& pool, std::vector<Root> roots, std::unique_ptr<Visitor> visitor,
                     std::stop_token stop, const DiskSense& sense)
{
    auto run = std::make_shared<Run>(pool, std::move(visitor), std::move(stop), sense);
    if (run->begin(std::move(roots))) {
        pool.add(std::move(run));
    } else {
        run->finish(false);
    }
}

} // namespace tallyroom
