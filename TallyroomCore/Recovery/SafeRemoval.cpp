#include "Recovery/SafeRemoval.h"

#include "Caches/CacheProof.h"
#include "Caches/FindInspectors.h"
#include "Caches/OpenFiles.h"
#include "Caches/RecentWrites.h"
#include "FileSystem/FolderReader.h"
#include "FileSystem/RealPath.h"
#include "Model/Ecosystem.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <optional>
#include <string_view>

namespace tallyroom::SafeRemoval {

namespace {

constexpr std::string_view nodeModulesName = "node_modules";

/// What the programs of this machine count on, or hold at the moment, or what could not be read.
bool isReserved(const Entry& entry)
{
    return entry.needsOwnCheck() || entry.has(EntryMark::inUse) || entry.has(EntryMark::unreadable) ||
           entry.unread > 0;
}

/// Whether one of the folders above the item is called like a cache: a removal of caches may take it along.
bool isBelowCacheName(std::string_view path)
{
    for (std::size_t start = 1; start < path.size();) {
        const std::size_t end = path.find('/', start);
        if (end == std::string_view::npos) {
            return false; // the item itself
        }
        if (Ecosystem::first(path.substr(start, end - start))) {
            return true;
        }
        start = end + 1;
    }
    return false;
}

bool isShaky(const FileUrl& url)
{
    return isBelowCacheName(url.path()) || FindInspectors::isOfInstalledProgram(url);
}

/// A copy that stays whatever else is proposed; nothing where the person chose a folder whose copies stay.
std::optional<std::size_t> firstSound(const DuplicateGroup& group, const KeepPolicy& policy)
{
    for (std::size_t copy = 0; copy < group.entries.size(); ++copy) {
        if (policy.rule != KeepRule::inFolder && !group.inTrash[copy] && !isShaky(group.entries[copy].url)) {
            return copy;
        }
    }
    return std::nullopt;
}

} // namespace

NodeProject projectOf(const FileUrl& nodeModules)
{
    const FileUrl folder = nodeModules.parent();
    const auto opened = openFolder(folder, FolderAccess::throughOnly);
    return {RecentWrites::newestOwnFile(folder),
            opened && proveCache(opened->get(), nodeModules.lastPathComponent()).isProven};
}

bool isSafeCache(const Entry& cache)
{
    static constexpr std::array<std::string_view, 5> keptNames{nodeModulesName, ".venv", "dist", "build",
                                                               "vendor"};
    return std::ranges::find(keptNames, cache.name) == keptNames.end() && !isReserved(cache);
}

std::function<bool(const Entry&)> oldNodeModules(AgeThreshold threshold)
{
    return [threshold, now = Timestamp{std::chrono::system_clock::now()}](const Entry& nodeModules) {
        return !nodeModules.needsOwnCheck() && threshold.isOld(nodeModules.modifiedAt, now);
    };
}

std::function<bool(const Entry&, const NodeProject&)> safeNodeModules(AgeThreshold threshold)
{
    return [threshold, isOld = oldNodeModules(threshold), now = Timestamp{std::chrono::system_clock::now()}](
               const Entry& nodeModules, const NodeProject& project) {
        return !isReserved(nodeModules) && project.isProven && isOld(nodeModules) &&
               (!project.changedAt || threshold.isOld(project.changedAt, now));
    };
}

FileRemover::Screening refuseInUse()
{
    using Clock = std::chrono::steady_clock;

    struct Look {
        OpenFiles open;
        Clock::time_point end;
    };

    return [look = std::optional<Look>{}](const Entry& entry, const std::stop_token& /*stop*/) mutable {
        if (!look || Clock::now() >= look->end) {
            look = Look{OpenFiles::look(), Clock::now() + std::chrono::seconds{1}};
        }
        // A program that works in a project may load any of its modules at any time.
        const bool isOfProject = entry.name == nodeModulesName;
        const auto folder =
            openFolder(isOfProject ? entry.url.parent() : entry.url, FolderAccess::throughOnly);
        const auto place = folder ? realPathOf(folder->get()) : std::unexpected(folder.error());
        FileRemover::Screened answer;
        if (place && look->open.isAnyIn(FileUrl{*place})) {
            answer.refusal = "un programme s'en sert maintenant";
        }
        return answer;
    };
}

std::vector<bool> safeCopies(const DuplicateGroup& group, const KeepPolicy& policy)
{
    std::vector<bool> safe = policy.redundant(group);
    std::optional<std::size_t> kept = policy.keptCopy(group);
    if (kept && isShaky(group.entries[*kept].url)) {
        kept = firstSound(group, policy);
        safe = kept ? policy.redundantBeside(group, *kept) : std::vector<bool>(safe.size());
    }
    for (std::size_t copy = 0; copy < safe.size(); ++copy) {
        safe[copy] = safe[copy] && !isShaky(group.entries[copy].url);
    }
    return safe;
}

} // namespace tallyroom::SafeRemoval
