#include "Duplicates/KeepPolicy.h"

#include <algorithm>
#include <string_view>

namespace tallyroom {

namespace {

/// Folders that tools fill and count on, by the names of their last steps.
constexpr std::array<std::string_view, 19> managedPlaces{"/node_modules/",
                                                         "/.venv/",
                                                         "/venv/",
                                                         "/site-packages/",
                                                         "/.git/",
                                                         "/.hg/",
                                                         "/.svn/",
                                                         "/.pnpm-store/",
                                                         "/pnpm/store/",
                                                         "/_cacache/",
                                                         "/.yarn/cache/",
                                                         "/.cargo/registry/",
                                                         "/.m2/repository/",
                                                         "/.gradle/caches/",
                                                         "/go/pkg/mod/",
                                                         "/.nuget/packages/",
                                                         "/.rustup/toolchains/",
                                                         "/flatpak/",
                                                         "/snap/"};

/// Whether `left` is to be kept rather than `right`; the one with the smaller path where neither is.
bool isPreferred(KeepRule rule, const DuplicateGroup& group, std::size_t left, std::size_t right)
{
    const auto& dates = group.identities;
    switch (rule) {
    case KeepRule::oldest:
        return dates[left].modifiedAt < dates[right].modifiedAt;
    case KeepRule::newest:
        return dates[left].modifiedAt > dates[right].modifiedAt;
    case KeepRule::shortestPath:
        return group.entries[left].url.path().size() < group.entries[right].url.path().size();
    case KeepRule::firstByPath:
    case KeepRule::inFolder:
        break;
    }
    return false; // the entries are in the order of their paths
}

bool needsDates(KeepRule rule)
{
    return rule == KeepRule::oldest || rule == KeepRule::newest;
}

} // namespace

bool KeepPolicy::isManaged(const FileUrl& url) noexcept
{
    return std::ranges::any_of(managedPlaces, [&path = url.path()](std::string_view place) {
        return path.find(place) != std::string::npos;
    });
}

bool KeepPolicy::isManaged(const DuplicateGroup& group) noexcept
{
    return std::ranges::all_of(group.entries, [](const Entry& entry) { return isManaged(entry.url); });
}

bool KeepPolicy::isProtected(const FileUrl& url) const
{
    return std::ranges::any_of(protectedFolders, [&url](const FileUrl& protectedFolder) {
        return isWithin(url.path(), protectedFolder.path());
    });
}

bool KeepPolicy::isInFolder(const FileUrl& url) const
{
    return !folder.isEmpty() && isWithin(url.path(), folder.path());
}

std::optional<std::size_t> KeepPolicy::keptCopy(const DuplicateGroup& group) const
{
    // Without a date nobody knows which is the oldest.
    if (needsDates(rule) && !std::ranges::all_of(group.identities, [](const FileIdentity& identity) {
            return identity.modifiedAt.has_value();
        })) {
        return std::nullopt;
    }
    const bool isAllTrashed = std::ranges::find(group.inTrash, false) == group.inTrash.end();
    std::optional<std::size_t> kept;
    for (std::size_t copy = 0; copy < group.entries.size(); ++copy) {
        const FileUrl& url = group.entries[copy].url;
        const bool isCandidate = (isAllTrashed || !group.inTrash[copy]) && !isManaged(url) &&
                                 (rule != KeepRule::inFolder || isInFolder(url));
        if (isCandidate && (!kept || isPreferred(rule, group, copy, *kept))) {
            kept = copy;
        }
    }
    return kept;
}

std::vector<bool> KeepPolicy::redundant(const DuplicateGroup& group) const
{
    const std::optional<std::size_t> kept = keptCopy(group);
    std::vector<bool> redundant =
        kept ? redundantBeside(group, *kept) : std::vector<bool>(group.entries.size());
    for (std::size_t copy = 0; rule == KeepRule::inFolder && copy < redundant.size(); ++copy) {
        redundant[copy] = redundant[copy] && !isInFolder(group.entries[copy].url);
    }
    return redundant;
}

std::vector<bool> KeepPolicy::redundantBeside(const DuplicateGroup& group, std::size_t kept) const
{
    std::vector<bool> redundant = group.redundantBeside(kept);
    for (std::size_t copy = 0; copy < redundant.size(); ++copy) {
        redundant[copy] = redundant[copy] && !isReserved(group.entries[copy].url);
    }
    return redundant;
}

} // namespace tallyroom
