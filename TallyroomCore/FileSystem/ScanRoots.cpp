#include "FileSystem/ScanRoots.h"

#include "FileSystem/FileContent.h"
#include "FileSystem/FileDescriptor.h"
#include "FileSystem/RealPath.h"

#include <algorithm>
#include <array>
#include <deque>
#include <fcntl.h>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace tallyroom {

namespace {

/// File systems that give out an inode number when an item is looked up, and another one the next time; and
/// servers that may do so.
bool keepsInodeNumbers(std::string_view type)
{
    constexpr std::array inventing = {"vfat", "msdos", "exfat", "fuseblk", "cifs",
                                      "smb3", "9p",    "afs",   "ncpfs"};
    return std::ranges::find(inventing, type) == inventing.end() && type != "fuse" &&
           !type.starts_with("fuse.");
}

/// The number that the kernel gives to a disk when it appears, and never again (diskseq, sysfs); empty for
/// what is no disk, and for old kernels.
std::string diskSequence(std::uint64_t device)
{
    const std::string folder =
        "/sys/dev/block/" + std::to_string(device >> 32U) + ":" + std::to_string(device & 0xffff'ffffU);
    for (const char* const place : {"/diskseq", "/../diskseq"}) { // the disk, or a part of one
        const FileDescriptor file{::open((folder + place).c_str(), O_RDONLY | O_CLOEXEC)};
        if (auto text = file.isOpen() ? contentOf(file.get()) : std::unexpected(SystemError{})) {
            return std::move(*text);
        }
    }
    return {};
}

std::uint32_t folded(std::uint64_t hash)
{
    return static_cast<std::uint32_t>(hash ^ (hash >> 32U));
}

} // namespace

VolumeMarks::VolumeMarks(std::span<const Mount> mounts)
{
    for (const Mount& mount : mounts) {
        if (std::ranges::find(m_marks, mount.device, &Mark::device) == m_marks.end()) {
            const bool isDisk = (mount.device >> 32U) != 0;
            const std::string words =
                mount.type + '\n' + mount.source + '\n' + (isDisk ? diskSequence(mount.device) : "");
            m_marks.push_back(
                {mount.device, folded(std::hash<std::string>{}(words)), keepsInodeNumbers(mount.type)});
        }
    }
    std::ranges::sort(m_marks, {}, &Mark::device);
}

ItemIdentity VolumeMarks::identify(const FileAttributes& attributes) const
{
    const auto mark = std::ranges::lower_bound(m_marks, attributes.device, {}, &Mark::device);
    if (mark == m_marks.end() || mark->device != attributes.device) {
        return {attributes.inode, attributes.stamp(), 0};
    }
    ItemIdentity identity{attributes.inode, attributes.stamp() ^ mark->value, 0};
    if (!mark->keepsInodes) {
        // A folder stays the same when its content changes.
        const bool isFolder = attributes.type == EntryType::folder;
        const auto moment = attributes.modifiedAt.value_or(Timestamp{}).time_since_epoch().count();
        identity.inode = isFolder ? 1
                                  : mixed(static_cast<std::uint64_t>(attributes.logicalBytes),
                                          static_cast<std::uint64_t>(moment)) |
                                        1U;
    }
    return identity;
}

ItemIdentity ScanRoot::identify(const FileAttributes& attributes) const
{
    if (key == 0) {
        return {};
    }
    ItemIdentity item = volumes->identify(attributes);
    item.root = key;
    return item;
}

namespace {

class Roots {
public:
    static Roots& shared()
    {
        static Roots& roots = *new Roots; // NOLINT(cppcoreguidelines-owning-memory): workers outlive main()
        return roots;
    }

    const ScanRoot& add(const FileUrl& url, const FileUrl& place, const FileAttributes& folder)
    {
        auto volumes = std::make_shared<const VolumeMarks>(MountTable::read());
        const std::scoped_lock lock{m_mutex};
        if (m_volumes == nullptr || *m_volumes != *volumes) {
            m_volumes = std::move(volumes);
        }
        const ItemIdentity identity = m_volumes->identify(folder);
        const auto [first, last] = m_keys.equal_range(url.path());
        const auto known = std::find_if(first, last, [&](const auto& row) {
            const ScanRoot& root = m_rows[row.second];
            return root.volumes == m_volumes && root.place == place && root.identity.isSameItem(identity);
        });
        if (known != last) {
            return m_rows[known->second];
        }
        const auto key = static_cast<std::uint32_t>(m_rows.size());
        m_keys.emplace(url.path(), key);
        return m_rows.emplace_back(ScanRoot{key, url, place, identity, m_volumes});
    }

    const ScanRoot& find(std::uint32_t key)
    {
        const std::scoped_lock lock{m_mutex};
        return m_rows[key < m_rows.size() ? key : 0];
    }

private:
    std::mutex m_mutex;
    std::deque<ScanRoot> m_rows = std::deque<ScanRoot>(1);      // guarded by m_mutex; rows never move
    std::unordered_multimap<std::string, std::uint32_t> m_keys; // guarded by m_mutex; by path
    std::shared_ptr<const VolumeMarks> m_volumes;               // guarded by m_mutex; the last ones
};

} // namespace

const ScanRoot& ScanRoots::add(const FileUrl& url, int folder)
{
    const auto attributes = fileAttributes(folder);
    const auto place = realPathOf(folder);
    return attributes ? Roots::shared().add(url, place ? FileUrl{*place} : url, *attributes) : find(0);
}

const ScanRoot& ScanRoots::find(std::uint32_t key)
{
    return Roots::shared().find(key);
}

} // namespace tallyroom
