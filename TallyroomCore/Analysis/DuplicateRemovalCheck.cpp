#include "Analysis/DuplicateRemovalCheck.h"

#include "Analysis/DigestStage.h"
#include "FileSystem/FileAttributes.h"
#include "Removal/TrashFolders.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>

namespace tallyroom::DuplicateRemovalCheck {

namespace {

/// What has become of a file since it was digested.
enum class Fate : unsigned char { same, changed, missing, unreadable };

/// One entry of a group, seen again.
struct Seen {
    const Entry* entry = nullptr;
    FileIdentity identity; ///< as it was digested; `links` and `changedAt` as they are now
    bool isVictim = false;
    bool isTrashed = false; ///< no copy to count on: it goes when the trash is emptied
    Fate fate = Fate::same;

    [[nodiscard]] bool isKept() const { return !isVictim && !isTrashed && fate == Fate::same; }
};

/// Renaming a file or removing a hard link of it moves its change time, and so does writing into it, after
/// which the modification time can be put back: then only its content tells whether it is the same still.
Fate fateOfContent(const DuplicateGroup& group, const Entry& entry, const FileAttributes& now,
                   const std::stop_token& stop)
{
    const auto id = DigestStages::contentId(entry.url, FileIdentity::of(now), entry.sizeBytes, stop);
    if (!id) {
        return Fate::unreadable;
    }
    return *id == group.id ? Fate::same : Fate::changed;
}

Seen lookAgain(const DuplicateGroup& group, std::size_t index, const std::vector<Seen>& before,
               const std::stop_token& stop)
{
    const Entry& entry = group.entries[index];
    const FileIdentity& known = group.identities[index];
    Seen seen{&entry, known};
    const auto now = fileAttributes(entry.url);
    if (!now) {
        const int code = now.error().code;
        seen.fate = code == ENOENT || code == ENOTDIR ? Fate::missing : Fate::unreadable;
    } else if (!now->isRegular || !FileIdentity::of(*now).isSameFile(known) ||
               now->logicalBytes != entry.sizeBytes || now->modifiedAt != known.modifiedAt) {
        seen.fate = Fate::changed;
    } else {
        seen.identity.links = now->links;
        seen.identity.changedAt = now->changedAt;
        if (now->changedAt != known.changedAt) {
            const auto twin = std::ranges::find_if(before, [&known](const Seen& other) {
                return other.identity.isSameFile(known) && other.fate != Fate::missing;
            });
            seen.fate = twin != before.end() ? twin->fate : fateOfContent(group, entry, *now, stop);
        }
    }
    return seen;
}

/// True when more paths of the group lead to this file than it has links: some are the same path twice,
/// through a bind mount, and removing one removes the other.
bool isReachedTwice(const std::vector<Seen>& group, const Seen& victim)
{
    const auto paths = std::ranges::count_if(group, [&victim](const Seen& other) {
        return other.fate == Fate::same && other.identity.isSameFile(victim.identity);
    });
    return paths > static_cast<std::ptrdiff_t>(victim.identity.links);
}

/// True when two devices show what may be one file: a file system laid over another one (overlayfs, a network
/// folder of this machine) passes the times on, to the nanosecond, and a copy hardly ever has both of them.
bool mayBeOneFile(const FileIdentity& left, const FileIdentity& right)
{
    return left.device != right.device && left.changedAt && left.changedAt == right.changedAt &&
           left.modifiedAt == right.modifiedAt;
}

/// Why a victim must stay; empty when it may go.
std::string reasonToRefuse(const std::vector<Seen>& group, const Seen& victim, bool losesAll)
{
    switch (victim.fate) {
    case Fate::missing:
        return "ce fichier n'existe plus";
    case Fate::unreadable:
        return "ce fichier ne peut pas être vérifié";
    case Fate::changed:
        return "ce fichier a changé depuis l'analyse";
    case Fate::same:
        break;
    }
    if (losesAll) {
        return {};
    }
    const auto isKeptTwin = [&victim](const Seen& other) {
        return other.isKept() && other.identity.isSameFile(victim.identity);
    };
    const auto isKeptImage = [&victim](const Seen& other) {
        return other.isKept() && mayBeOneFile(other.identity, victim.identity);
    };
    const auto isOtherCopy = [&](const Seen& other) {
        return other.isKept() && !other.identity.isSameFile(victim.identity) && !isKeptImage(other);
    };
    const bool hasKeptTwin = std::ranges::any_of(group, isKeptTwin);
    if (hasKeptTwin && isReachedTwice(group, victim)) {
        return "c'est le même fichier qu'une copie gardée, atteint par un autre chemin";
    }
    if (std::ranges::any_of(group, isOtherCopy)) {
        return {};
    }
    if (std::ranges::any_of(group, isKeptImage)) {
        return "c'est peut-être le même fichier que la copie gardée, vu à travers un autre système de "
               "fichiers";
    }
    return hasKeptTwin ? "c'est le même fichier que la seule copie gardée (lien physique)"
                       : "la copie à garder a changé ou n'existe plus";
}

void checkGroup(const DuplicateGroup& group, const std::unordered_set<FileUrl>& victims,
                const std::stop_token& stop, Verdict& verdict)
{
    std::vector<Seen> seen;
    seen.reserve(group.entries.size());
    TrashFolders::Lookup trash;
    const auto isInTrash = [&trash](const Entry& entry) { return trash.contains(entry.url); };
    const bool isAllTrashed = std::ranges::all_of(group.entries, isInTrash);
    for (std::size_t i = 0; i < group.entries.size(); ++i) {
        const Entry& entry = group.entries[i];
        seen.push_back(lookAgain(group, i, seen, stop));
        seen.back().isVictim = victims.contains(entry.url);
        seen.back().isTrashed = !isAllTrashed && isInTrash(entry);
    }
    const bool losesAll = losesAllCopies(group, victims);
    verdict.groupsLosingAllCopies += losesAll ? 1U : 0U;
    for (const Seen& victim : seen) {
        if (!victim.isVictim) {
            continue;
        }
        std::string reason = reasonToRefuse(seen, victim, losesAll);
        if (reason.empty()) {
            verdict.fine.push_back(victim.entry->url);
        } else {
            verdict.refused.push_back({victim.entry->url, std::move(reason)});
        }
    }
}

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

Verdict check(std::span<const DuplicateGroup> groups, const std::unordered_set<FileUrl>& victims,
              const std::stop_token& stop)
{
    Verdict verdict;
    std::unordered_set<FileUrl> unknown = victims;
    for (const DuplicateGroup& group : groups) {
        const auto isVictim = [&victims](const Entry& entry) { return victims.contains(entry.url); };
        if (std::ranges::any_of(group.entries, isVictim)) {
            checkGroup(group, victims, stop, verdict);
            std::ranges::for_each(group.entries,
                                  [&unknown](const Entry& entry) { unknown.erase(entry.url); });
        }
    }
    std::vector<FileUrl> strangers(unknown.begin(), unknown.end());
    std::ranges::sort(strangers);
    for (FileUrl& url : strangers) {
        verdict.refused.push_back({std::move(url), "ce fichier ne fait partie d'aucun groupe de doublons"});
    }
    return verdict;
}

} // namespace tallyroom::DuplicateRemovalCheck
