#include "Duplicates/DuplicateRemovalCheck.h"

#include "Duplicates/DigestStage.h"
#include "Duplicates/StableFile.h"
#include "FileSystem/FileAttributes.h"
#include "FileSystem/FileContent.h"
#include "Removal/TrashFolders.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <linux/magic.h>
#include <optional>
#include <span>
#include <string>
#include <sys/vfs.h>
#include <unordered_map>
#include <utility>

namespace tallyroom::DuplicateRemovalCheck {

namespace {

using FileRemover::Screened;

constexpr const char* goneReason = "ce fichier n'existe plus";
constexpr const char* changedReason = "ce fichier a changé depuis l'analyse";
constexpr const char* unreadableReason = "ce fichier ne peut pas être vérifié";
constexpr const char* noCopyReason = "la copie à garder a changé ou n'existe plus";
constexpr const char* samePathReason =
    "c'est le même fichier qu'une copie gardée, atteint par un autre chemin";

/// How often files are compared of which one changes meanwhile: new rights leave the content as it is.
constexpr int mostComparisons = 4;

/// The result of comparing a victim with a kept copy.
enum class Proof : unsigned char {
    equal,
    victimChanged,
    unreadable, ///< the victim, or a stop came
    noCopy,     ///< the kept one is gone, changed or in a trash
    twin,       ///< both paths lead to one file
    image       ///< they may do so, through another file system
};

std::string reasonFor(SystemError error)
{
    switch (error.code) {
    case ENOENT:
    case ENOTDIR:
        return goneReason;
    case ESTALE:
    case ELOOP:
        return changedReason;
    default:
        return unreadableReason;
    }
}

/// True when two devices show what may be one file: a file system laid over another one (overlayfs, a network
/// folder of this machine) passes the times on, to the nanosecond, and a copy hardly ever has both of them.
bool mayBeOneFile(const FileIdentity& left, const FileIdentity& right)
{
    return left.device != right.device && left.changedAt && left.changedAt == right.changedAt &&
           left.modifiedAt == right.modifiedAt;
}

std::uint32_t fileSystemOf(const StableFile& file)
{
    struct statfs volume = {};
    return ::fstatfs(file.descriptor(), &volume) == 0 ? static_cast<std::uint32_t>(volume.f_type) : 0;
}

/// True where two paths may lead to one file though device, inode and times differ: the file system makes the
/// numbers up.
bool mayHideOneFile(const StableFile& file)
{
    constexpr std::uint32_t fuse = 0x65735546; // the others are in linux/magic.h
    constexpr std::uint32_t cifs = 0xFF534D42;
    constexpr std::uint32_t smb2 = 0xFE534D42;
    constexpr std::uint32_t ceph = 0x00C36400;
    constexpr std::uint32_t virtualBox = 0x786F4256;
    constexpr std::array<std::uint32_t, 13> kinds{0,
                                                  fuse,
                                                  cifs,
                                                  smb2,
                                                  ceph,
                                                  virtualBox,
                                                  NFS_SUPER_MAGIC,
                                                  V9FS_MAGIC,
                                                  SMB_SUPER_MAGIC,
                                                  AFS_FS_MAGIC,
                                                  AFS_SUPER_MAGIC,
                                                  NCP_SUPER_MAGIC,
                                                  CODA_SUPER_MAGIC};
    return std::ranges::find(kinds, fileSystemOf(file)) != kinds.end();
}

/// The same for two files, one of which may lie in a file system that is laid over the other's.
bool mayHideOneFile(const StableFile& left, const StableFile& right)
{
    const auto isLaidOver = [](const StableFile& file) {
        const std::uint32_t kind = fileSystemOf(file);
        return kind == OVERLAYFS_SUPER_MAGIC || kind == ECRYPTFS_SUPER_MAGIC;
    };
    return mayHideOneFile(left) || mayHideOneFile(right) ||
           (left.identity().device != right.identity().device && (isLaidOver(left) || isLaidOver(right)));
}

/// Screens the victims of one batch. The victims of a group come one after the other.
class Screener {
public:
    Screener(std::shared_ptr<const std::vector<DuplicateGroup>> groups, std::unordered_set<FileUrl> victims)
        : m_groups(std::move(groups)),
          m_victims(std::move(victims)), m_buffers{std::vector<std::byte>(bufferLength),
                                                   std::vector<std::byte>(bufferLength)}
    {}

    Screened screen(const Entry& entry, const std::stop_token& stop)
    {
        const auto found = find(entry.url);
        if (!found) {
            return {"ce fichier ne fait partie d'aucun groupe de doublons", {}};
        }
        enter((*m_groups)[found->group]);
        auto victim = open(found->copy);
        if (!victim) {
            return {reasonFor(victim.error()), {}};
        }
        return m_losesAll ? screenLast(*victim, stop) : screenCopy(found->copy, *victim, stop);
    }

private:
    static constexpr std::size_t bufferLength = 256UL * 1024;

    /// Where a victim stands.
    struct Place {
        std::size_t group = 0;
        std::size_t copy = 0;
    };

    std::optional<Place> find(const FileUrl& url)
    {
        if (m_places.empty()) { // not before the batch's own thread needs it
            for (std::size_t group = 0; group < m_groups->size(); ++group) {
                const std::vector<Entry>& copies = (*m_groups)[group].entries;
                for (std::size_t copy = 0; copy < copies.size(); ++copy) {
                    if (m_victims.contains(copies[copy].url)) {
                        m_places.emplace(copies[copy].url, Place{group, copy});
                    }
                }
            }
        }
        const auto place = m_places.find(url);
        return place == m_places.end() ? std::nullopt : std::optional{place->second};
    }

    void enter(const DuplicateGroup& group)
    {
        if (m_group == &group) {
            return;
        }
        m_group = &group;
        m_losesAll = losesAllCopies(group, m_victims);
        m_isAllTrashed = std::ranges::find(group.inTrash, false) == group.inTrash.end();
        m_kept.clear();
        for (std::size_t copy = 0; copy < group.entries.size(); ++copy) {
            if (isKept(copy)) {
                m_kept.push_back(copy);
            }
        }
    }

    [[nodiscard]] bool isKept(std::size_t copy) const
    {
        return !m_victims.contains(m_group->entries[copy].url) && (m_isAllTrashed || !m_group->inTrash[copy]);
    }

    [[nodiscard]] SystemResult<StableFile> open(std::size_t copy) const
    {
        const Entry& entry = m_group->entries[copy];
        return StableFile::open(entry.url, entry.sizeBytes, m_group->identities[copy].modifiedAt);
    }

    [[nodiscard]] bool isAsFound(const StableFile& file, const std::stop_token& stop) const
    {
        return DigestStages::contentId(file, stop) == m_group->id;
    }

    /// No copy stays, and the person said so: of this content.
    [[nodiscard]] Screened screenLast(const StableFile& victim, const std::stop_token& stop) const
    {
        return isAsFound(victim, stop) ? Screened{} : Screened{changedReason, {}};
    }

    Screened screenCopy(std::size_t copy, StableFile& victim, const std::stop_token& stop)
    {
        bool hasTwin = isReachedTwice(copy, victim);
        if (hasTwin) {
            return {samePathReason, {}};
        }
        bool hasImage = false;
        for (std::size_t next = 0; next < m_kept.size();) {
            const std::size_t kept = m_kept[next];
            switch (compare(copy, victim, kept, stop)) {
            case Proof::equal:
                return {std::nullopt, secondLook(kept, stop)};
            case Proof::victimChanged:
                return {changedReason, {}};
            case Proof::unreadable:
                return {unreadableReason, {}};
            case Proof::noCopy:
                m_kept.erase(m_kept.begin() + static_cast<std::ptrdiff_t>(next));
                continue;
            case Proof::twin:
                hasTwin = true;
                break;
            case Proof::image:
                hasImage = true;
                break;
            }
            ++next;
        }
        if (hasImage) {
            return {"c'est peut-être le même fichier que la copie gardée, vu à travers un autre système de "
                    "fichiers",
                    {}};
        }
        return {hasTwin ? "c'est le même fichier que la seule copie gardée (lien physique)" : noCopyReason,
                {}};
    }

    /// True when more paths of the group lead to the victim than it has links, a kept one among them: some
    /// are the same path twice, through a bind mount, and removing one removes the other.
    [[nodiscard]] bool isReachedTwice(std::size_t copy, const StableFile& victim) const
    {
        std::uint32_t paths = 1;
        bool hasKept = false;
        for (std::size_t other = 0; other < m_group->entries.size(); ++other) {
            if (other == copy || !m_group->identities[other].isSameFile(m_group->identities[copy])) {
                continue;
            }
            const auto now = fileAttributes(m_group->entries[other].url);
            if (now && FileIdentity::of(*now).isSameFile(victim.identity())) {
                ++paths;
                hasKept = hasKept || isKept(other);
            }
        }
        return hasKept && paths > victim.identity().links;
    }

    Proof compare(std::size_t copy, StableFile& victim, std::size_t keptCopy, const std::stop_token& stop)
    {
        for (int comparison = 0; comparison < mostComparisons; ++comparison) {
            const auto kept = open(keptCopy);
            if (!kept || (!m_isAllTrashed && m_trash.contains(m_group->entries[keptCopy].url))) {
                return Proof::noCopy;
            }
            if (kept->identity().isSameFile(victim.identity())) {
                return Proof::twin;
            }
            if (mayBeOneFile(kept->identity(), victim.identity())) {
                return Proof::image;
            }
            const bool isEqual = areEqual(victim, *kept, stop);
            if (stop.stop_requested()) {
                return Proof::unreadable;
            }
            if (!victim.isUnchanged()) {
                auto again = open(copy);
                if (!again) {
                    return Proof::victimChanged;
                }
                victim = std::move(*again);
            } else if (kept->isUnchanged()) {
                m_isDoubtful = mayHideOneFile(victim, *kept);
                return isEqual ? Proof::equal : proofOfDifference(victim, stop);
            }
        }
        return Proof::unreadable;
    }

    /// Finds out which of two files has changed.
    [[nodiscard]] Proof proofOfDifference(const StableFile& victim, const std::stop_token& stop) const
    {
        const auto id = DigestStages::contentId(victim, stop);
        if (!id) {
            return Proof::unreadable;
        }
        return *id == m_group->id ? Proof::noCopy : Proof::victimChanged;
    }

    /// False also when one of them cannot be read, or `stop` came.
    bool areEqual(const StableFile& left, const StableFile& right, const std::stop_token& stop)
    {
        constexpr auto step = static_cast<std::int64_t>(bufferLength);
        for (std::int64_t offset = 0; offset < left.size(); offset += step) {
            const auto length = static_cast<std::size_t>(std::min(left.size() - offset, step));
            const auto ours = std::span{m_buffers[0]}.first(length);
            const auto others = std::span{m_buffers[1]}.first(length);
            if (stop.stop_requested() || !readFully(left.descriptor(), ours, offset) ||
                !readFully(right.descriptor(), others, offset) ||
                std::memcmp(ours.data(), others.data(), length) != 0) {
                return false;
            }
        }
        return true;
    }

    /// The victim is away: is the copy still there?
    [[nodiscard]] FileRemover::SecondLook secondLook(std::size_t kept, const std::stop_token& stop) const
    {
        if (!m_isDoubtful) {
            return {};
        }
        return [groups = m_groups, group = m_group, kept, stop]() -> std::optional<std::string> {
            const Entry& entry = group->entries[kept];
            const auto left =
                StableFile::open(entry.url, entry.sizeBytes, group->identities[kept].modifiedAt);
            if (!left) {
                return left.error().code == ENOENT ? samePathReason : noCopyReason;
            }
            return DigestStages::contentId(*left, stop) == group->id ? std::nullopt
                                                                     : std::optional{noCopyReason};
        };
    }

    const std::shared_ptr<const std::vector<DuplicateGroup>> m_groups;
    const std::unordered_set<FileUrl> m_victims;
    std::unordered_map<FileUrl, Place> m_places; // of the victims
    TrashFolders::Lookup m_trash;
    std::array<std::vector<std::byte>, 2> m_buffers;

    const DuplicateGroup* m_group = nullptr; // what follows is about it
    bool m_losesAll = false;
    bool m_isAllTrashed = false;
    bool m_isDoubtful = false;       // whether the two files compared last may be one
    std::vector<std::size_t> m_kept; // copies to compare with, without those that proved to differ
};

} // namespace

bool losesAllCopies(const DuplicateGroup& group, const std::unordered_set<FileUrl>& victims)
{
    bool hasVictimOutside = false;
    bool hasKept = false;
    bool hasKeptOutside = false;
    for (std::size_t i = 0; i < group.entries.size(); ++i) {
        const bool isVictim = victims.contains(group.entries[i].url);
        hasVictimOutside = hasVictimOutside || (isVictim && !group.inTrash[i]);
        hasKept = hasKept || !isVictim;
        hasKeptOutside = hasKeptOutside || (!isVictim && !group.inTrash[i]);
    }
    return !hasKept || (hasVictimOutside && !hasKeptOutside);
}

FileRemover::Screening forGroups(std::shared_ptr<const std::vector<DuplicateGroup>> groups,
                                 std::unordered_set<FileUrl> victims)
{
    auto screener = std::make_shared<Screener>(std::move(groups), std::move(victims));
    return [screener = std::move(screener)](const Entry& entry, const std::stop_token& stop) {
        return screener->screen(entry, stop);
    };
}

} // namespace tallyroom::DuplicateRemovalCheck
