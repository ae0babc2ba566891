#include "Removal/ReclaimEstimate.h"

#include "FileSystem/FolderReader.h"
#include "FileSystem/TreeWalk.h"
#include "Model/CheckedArithmetic.h"
#include "Model/OutermostUrls.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <fcntl.h>
#include <future>
#include <limits>
#include <linux/fiemap.h>
#include <linux/fs.h>
#include <linux/magic.h>
#include <map>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <sys/ioctl.h>
#include <sys/vfs.h>
#include <unordered_map>

namespace tallyroom {

namespace {

/// Whether a file system may give less back than a file occupies.
enum class Sharing : unsigned char {
    none,
    told,   ///< each extent says whether it is shared
    untold, ///< snapshots may hold anything
};

Sharing sharingOf(int descriptor)
{
    constexpr std::uint32_t xfs = 0x58465342; // these three are not in linux/magic.h everywhere
    constexpr std::uint32_t bcachefs = 0xCA451A4E;
    constexpr std::uint32_t zfs = 0x2FC12FC1;
    struct statfs volume = {};
    if (::fstatfs(descriptor, &volume) != 0) {
        return Sharing::untold;
    }
    switch (static_cast<std::uint32_t>(volume.f_type)) {
    case BTRFS_SUPER_MAGIC:
    case xfs:
    case bcachefs:
        return Sharing::told;
    case zfs:
        return Sharing::untold;
    default:
        return Sharing::none;
    }
}

/// A `fiemap` of ioctl_fiemap(2) with room for its extents, which C++ cannot derive from the C declaration.
struct ExtentRequest {
    std::uint64_t start = 0;
    std::uint64_t length = 0;
    std::uint32_t flags = 0;
    std::uint32_t mapped = 0;
    std::uint32_t room = 0;
    std::uint32_t reserved = 0;
    std::array<fiemap_extent, 64> extents{};
};

static_assert(offsetof(ExtentRequest, extents) == sizeof(fiemap));

/// How many bytes of an open file lie in extents that others may use too; nothing where it is not told.
std::optional<std::int64_t> sharedBytes(int file)
{
    std::int64_t shared = 0;
    for (std::uint64_t start = 0;;) {
        ExtentRequest request;
        request.start = start;
        request.length = FIEMAP_MAX_OFFSET - start;
        request.room = static_cast<std::uint32_t>(request.extents.size());
        if (::ioctl(file, FS_IOC_FIEMAP, &request) != 0) {
            return std::nullopt;
        }
        if (request.mapped == 0) {
            return shared;
        }
        const auto told = std::span{request.extents}.first(std::min(request.mapped, request.room));
        for (const fiemap_extent& extent : told) {
            if ((extent.fe_flags & FIEMAP_EXTENT_SHARED) != 0) {
                shared = saturatedSum(shared, std::bit_cast<std::int64_t>(extent.fe_length));
            }
        }
        const std::uint64_t end = told.back().fe_logical + told.back().fe_length;
        if ((told.back().fe_flags & FIEMAP_EXTENT_LAST) != 0 || end <= start) {
            return shared;
        }
        start = end;
    }
}

/// What one file gives back with its last name.
struct Bytes {
    std::int64_t all = 0;
    std::int64_t shared = 0;
};

/// The sums of the walk, which its workers share.
class Account {
public:
    /// How the file system of an open folder shares blocks; asked once a device.
    Sharing sharing(std::uint64_t device, int folder)
    {
        const std::scoped_lock lock{m_mutex};
        const auto known = m_sharing.find(device);
        return known != m_sharing.end() ? known->second
                                        : m_sharing.emplace(device, sharingOf(folder)).first->second;
    }

    void add(const Bytes& bytes)
    {
        const std::scoped_lock lock{m_mutex};
        count(bytes);
    }

    /// Counts one name of a file that has several.
    void addName(const FileAttributes& file, const Bytes& bytes)
    {
        const std::scoped_lock lock{m_mutex};
        const auto [entry, isNew] = m_linked.try_emplace(file.id(), Linked{bytes, file.links});
        if (--entry->second.namesLeft == 0) {
            count(bytes);
            m_linked.erase(entry);
        }
    }

    void addUnread(bool isFolder)
    {
        const std::scoped_lock lock{m_mutex};
        m_sum.hasUnreadItems |= !isFolder;
        m_sum.unread += m_sum.unread < std::numeric_limits<std::uint32_t>::max() ? 1 : 0;
    }

    Reclaim sum()
    {
        const std::scoped_lock lock{m_mutex};
        for (const auto& [file, linked] : m_linked) {
            m_sum.linkedElsewhere = saturatedSum(m_sum.linkedElsewhere, linked.bytes.all);
        }
        m_linked.clear();
        return m_sum;
    }

private:
    struct Linked {
        Bytes bytes;
        std::uint32_t namesLeft = 0;
    };

    void count(const Bytes& bytes)
    {
        m_sum.atMost = saturatedSum(m_sum.atMost, bytes.all);
        m_sum.atLeast = saturatedSum(m_sum.atLeast, bytes.all - bytes.shared);
    }

    std::mutex m_mutex;
    Reclaim m_sum;                                        // guarded by m_mutex
    std::map<FileId, Linked> m_linked;                    // those with names left; guarded by m_mutex
    std::unordered_map<std::uint64_t, Sharing> m_sharing; // by device; guarded by m_mutex
};

/// Counts files of one open folder, and tells the account when it goes.
class FolderCount {
public:
    FolderCount(Account& account, int folder) : m_account(account), m_folder(folder) {}

    FolderCount(const FolderCount&) = delete;
    FolderCount& operator=(const FolderCount&) = delete;

    ~FolderCount() { m_account.add(m_single); }

    void count(const char* name, const FileAttributes& file)
    {
        const Bytes bytes{file.allocatedBytes, file.isRegular ? sharedBytesOf(name, file) : 0};
        if (file.links > 1) {
            m_account.addName(file, bytes);
        } else {
            m_single.all = saturatedSum(m_single.all, bytes.all);
            m_single.shared = saturatedSum(m_single.shared, bytes.shared);
        }
    }

private:
    std::int64_t sharedBytesOf(const char* name, const FileAttributes& file)
    {
        if (!m_sharing) {
            m_sharing = m_account.sharing(file.device, m_folder); // a folder's files are on its device
        }
        if (*m_sharing == Sharing::none || file.allocatedBytes == 0) {
            return 0;
        }
        if (*m_sharing == Sharing::told) {
            const FileDescriptor open{
                ::openat(m_folder, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC)};
            if (const auto shared = open.isOpen() ? sharedBytes(open.get()) : std::nullopt) {
                return std::min(*shared, file.allocatedBytes);
            }
        }
        return file.allocatedBytes; // nobody knows
    }

    Account& m_account;
    const int m_folder;
    std::optional<Sharing> m_sharing;
    Bytes m_single;
};

class ReclaimVisitor final : public TreeWalk::Visitor {
public:
    ReclaimVisitor(std::unique_ptr<Account> account, std::promise<Reclaim> result)
        : m_account(std::move(account)), m_result(std::move(result))
    {}

    /// What is removed goes whole.
    [[nodiscard]] bool seesExcluded() const override { return true; }

    [[nodiscard]] TreeWalk::Wish wish(const TreeWalk::Folder& /*folder*/) const override
    {
        return {TreeWalk::Attributes::filesAndLinks};
    }

    void unreadable(TreeWalk::Folder& /*folder*/, const SystemError& /*error*/) override
    {
        m_account->addUnread(true);
    }

    void visit(TreeWalk::Folder& folder, std::span<TreeWalk::Child> children) override
    {
        FolderCount counted{*m_account, folder.descriptor()};
        for (TreeWalk::Child& child : children) {
            child.descend = child.isFolder();
            if (!child.isFolder() && child.attributes != nullptr) {
                counted.count(child.name.data(), *child.attributes);
            } else if (!child.isFolder() && child.failure != 0) {
                m_account->addUnread(false);
            }
        }
    }

    void finish(bool /*stopped*/) override { m_result.set_value(m_account->sum()); }

private:
    const std::unique_ptr<Account> m_account;
    std::promise<Reclaim> m_result;
};

} // namespace

Reclaim measureReclaim(const std::vector<Entry>& entries, const std::stop_token& stop)
{
    UrlSet folders;
    UrlSet files;
    for (const Entry& entry : entries) {
        (entry.isDirectory ? folders : files).insert(entry.url);
    }
    auto account = std::make_unique<Account>();
    std::vector<TreeWalk::Root> roots;
    for (const FileUrl& url : folders) {
        if (!isBelowAny(url, folders)) {
            roots.push_back({url, std::make_unique<TreeWalk::Folder>(), TreeWalk::RootLink::refused});
        }
    }
    for (const FileUrl& url : files) {
        if (stop.stop_requested() || isBelowAny(url, folders)) {
            continue;
        }
        const std::string name{url.lastPathComponent()};
        const auto folder = openFolder(url.parent(), FolderAccess::throughOnly);
        if (const auto file =
                folder ? fileAttributes(folder->get(), name.c_str()) : std::unexpected(folder.error())) {
            FolderCount{*account, folder->get()}.count(name.c_str(), *file);
        } else if (!file.error().isGone()) {
            account->addUnread(false);
        }
    }
    std::promise<Reclaim> promise;
    auto result = promise.get_future();
    TreeWalk::start(WorkerPool::shared(), std::move(roots),
                    std::make_unique<ReclaimVisitor>(std::move(account), std::move(promise)), stop);
    return result.get();
}

} // namespace tallyroom
