#include "FileSystem/MountTable.h"

#include <algorithm>
#include <libmount/libmount.h>
#include <memory>
#include <sys/sysmacros.h>
#include <unordered_map>
#include <unordered_set>

namespace tallyroom::MountTable {

namespace {

struct Unreference {
    void operator()(libmnt_table* table) const { mnt_unref_table(table); }

    void operator()(libmnt_iter* position) const { mnt_free_iter(position); }
};

using Table = std::unique_ptr<libmnt_table, Unreference>;
using Iterator = std::unique_ptr<libmnt_iter, Unreference>;

std::string text(const char* bytes)
{
    return bytes == nullptr ? std::string{} : std::string{bytes};
}

Mount mountOf(libmnt_fs& mount)
{
    const dev_t device = mnt_fs_get_devno(&mount);
    Mount result{mnt_fs_get_id(&mount),
                 mnt_fs_get_parent_id(&mount),
                 (std::uint64_t{major(device)} << 32U) | minor(device),
                 text(mnt_fs_get_root(&mount)),
                 text(mnt_fs_get_target(&mount)),
                 text(mnt_fs_get_fstype(&mount)),
                 text(mnt_fs_get_source(&mount)),
                 {}};
    char* value = nullptr;
    std::size_t length = 0;
    if (result.type == "btrfs" && mnt_fs_get_option(&mount, "subvol", &value, &length) == 0 &&
        value != nullptr) {
        result.subvolume.assign(value, length);
    }
    return result;
}

/// Which mount lies on which.
class MountTree {
public:
    explicit MountTree(const std::vector<Mount>& mounts)
    {
        std::unordered_set<int> ids;
        std::ranges::for_each(mounts, [&](const Mount& mount) { ids.insert(mount.id); });
        std::vector<const Mount*> waiting;
        for (const Mount& mount : mounts) {
            // This process does not see the parent of the first mount (pivot_root(2), chroot(2)).
            if (mount.parentId == mount.id || !ids.contains(mount.parentId)) {
                waiting.push_back(&mount);
            } else {
                Children& children = m_childrenOf[mount.parentId];
                children.mounts.push_back(&mount);
                children.places.insert(mount.mountPoint);
            }
        }
        while (!waiting.empty()) {
            const Mount* const mount = waiting.back();
            waiting.pop_back();
            if (m_entered.insert(mount).second) {
                enterChildren(*mount, waiting);
            }
        }
    }

    /// A path gets into it, and does not go on at once into another mount on the same folder.
    [[nodiscard]] bool isReachable(const Mount& mount) const
    {
        const auto children = m_childrenOf.find(mount.id);
        return m_entered.contains(&mount) &&
               (children == m_childrenOf.end() || !children->second.places.contains(mount.mountPoint));
    }

private:
    struct Children {
        std::vector<const Mount*> mounts;
        std::unordered_set<std::string> places;
    };

    /// Children below another child's place are covered: a path turns off before it gets there.
    void enterChildren(const Mount& mount, std::vector<const Mount*>& waiting) const
    {
        const auto children = m_childrenOf.find(mount.id);
        if (children == m_childrenOf.end()) {
            return;
        }
        std::ranges::copy_if(children->second.mounts, std::back_inserter(waiting), [&](const Mount* child) {
            for (std::string above = child->mountPoint; above.size() > 1;) {
                above.resize(std::max<std::size_t>(above.rfind('/'), 1));
                if (children->second.places.contains(above)) {
                    return false;
                }
            }
            return true;
        });
    }

    std::unordered_map<int, Children> m_childrenOf;
    std::unordered_set<const Mount*> m_entered;
};

} // namespace

std::vector<Mount> read(const std::string& path)
{
    std::vector<Mount> mounts;
    const Table table{mnt_new_table()};
    const Iterator position{mnt_new_iter(MNT_ITER_FORWARD)};
    if (table == nullptr || position == nullptr) {
        return mounts;
    }
    mnt_table_set_parser_errcb(table.get(), [](libmnt_table*, const char*, int) { return 1; }); // go on
    if (mnt_table_parse_file(table.get(), path.c_str()) != 0) {
        return mounts;
    }
    libmnt_fs* mount = nullptr; // the table's own
    while (mnt_table_next_fs(table.get(), position.get(), &mount) == 0) {
        // Without an id it is a line of another form of table.
        if (Mount found = mountOf(*mount); found.id != 0 && found.mountPoint.starts_with('/')) {
            mounts.push_back(std::move(found));
        }
    }
    return mounts;
}

std::vector<Mount> reachable(const std::vector<Mount>& mounts)
{
    const MountTree tree{mounts};
    std::vector<Mount> result;
    std::ranges::copy_if(mounts, std::back_inserter(result),
                         [&tree](const Mount& mount) { return tree.isReachable(mount); });
    return result;
}

std::optional<Mount> holding(const FileUrl& url, std::span<const Mount> mounts)
{
    const std::string path = url.standardized().path();
    const Mount* deepest = nullptr;
    for (const Mount& mount : mounts) {
        if (isWithin(path, mount.mountPoint) &&
            (deepest == nullptr || mount.mountPoint.size() >= deepest->mountPoint.size())) {
            deepest = &mount;
        }
    }
    return deepest == nullptr ? std::nullopt : std::optional{*deepest};
}

} // namespace tallyroom::MountTable
