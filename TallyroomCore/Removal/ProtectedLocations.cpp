#include "Removal/ProtectedLocations.h"

#include "Concurrency/Answers.h"
#include "Concurrency/Locked.h"
#include "Concurrency/PatientCalls.h"
#include "FileSystem/FileAttributes.h"
#include "FileSystem/HomeFolder.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <fcntl.h>
#include <iterator>
#include <memory>
#include <utility>

namespace tallyroom {

namespace {

/// Where the folder that a mount shows lies in other mounts of the same file system: removing it there would
/// empty the mount.
std::vector<std::string> otherPlaces(const Mount& mount, std::span<const Mount> mounts)
{
    std::vector<std::string> places;
    for (const Mount& other : mounts) {
        if (other.device == mount.device && other.root != mount.root && isWithin(mount.root, other.root)) {
            const std::string below =
                mount.root.substr(other.root.ends_with('/') ? other.root.size() : other.root.size() + 1);
            places.push_back(other.mountPoint + (other.mountPoint.ends_with('/') ? "" : "/") + below);
        }
    }
    return places;
}

struct ChosenFolder {
    FileUrl folder;
    std::optional<FileUrl> place; ///< as it was when it was found last
};

/// Never destroyed: workers may outlive main().
Locked<std::vector<ChosenFolder>>& chosenFolders()
{
    static auto& folders = *new Locked<std::vector<ChosenFolder>>;
    return folders;
}

using Places = Answers<FileUrl>;

/// Where the folders lie, in their order; nothing for those that do not answer in time.
std::vector<std::optional<FileUrl>> placesOf(const std::vector<ChosenFolder>& chosen)
{
    constexpr std::chrono::seconds patience{5}; // a disk may have to start
    constexpr unsigned threads = 32;
    static auto& calls = *new PatientCalls{threads, patience};
    const auto answers = std::make_shared<Places>(chosen.size());
    for (std::size_t number = 0; number < chosen.size(); ++number) {
        const FileUrl& folder = chosen[number].folder;
        const auto question = [number, folder, asker = std::weak_ptr{answers}] {
            const FileUrl place = realPlaceOf(folder);
            if (const auto waiting = asker.lock()) {
                waiting->put(number, place);
            }
        };
        if (!calls.ask(folder.path(), question)) {
            answers->refuse();
        }
    }
    return answers->waitUntil(0, std::chrono::steady_clock::now() + patience).answers;
}

} // namespace

void ProtectedLocations::protect(std::vector<FileUrl> folders)
{
    std::vector<ChosenFolder> chosen;
    std::ranges::transform(folders, std::back_inserter(chosen), [](FileUrl& folder) {
        return ChosenFolder{std::move(folder), std::nullopt};
    });
    chosenFolders().set(std::move(chosen));
}

/// A folder on a dead mount holds up no removal elsewhere: it stays protected where it was found last, or
/// else where its path says.
void ProtectedLocations::readChosen()
{
    std::vector<ChosenFolder> chosen = chosenFolders().get();
    if (chosen.empty()) {
        return;
    }
    const auto places = placesOf(chosen);
    for (std::size_t number = 0; number < chosen.size(); ++number) {
        ChosenFolder& one = chosen[number];
        m_chosen.push_back(places[number].value_or(one.place.value_or(one.folder.standardized())).path());
        if (places[number]) {
            one.place = places[number];
        }
    }
    chosenFolders().with([&chosen](std::vector<ChosenFolder>& now) {
        if (std::ranges::equal(now, chosen, {}, &ChosenFolder::folder, &ChosenFolder::folder)) {
            now = std::move(chosen);
        }
    });
}

std::optional<std::string> ProtectedLocations::refusalByChoice(const std::string& path) const
{
    for (const std::string& chosen : m_chosen) {
        if (chosen == path) {
            return "Ce dossier est protégé dans les préférences.";
        }
        if (isWithin(chosen, path)) {
            return "Un dossier protégé dans les préférences s'y trouve.";
        }
        if (isWithin(path, chosen)) {
            return "Cet élément est dans un dossier protégé dans les préférences.";
        }
    }
    return std::nullopt;
}

SystemResult<ProtectedLocations> ProtectedLocations::read(std::span<const Mount> mounts)
{
    if (mounts.empty()) {
        return std::unexpected(SystemError{ENOENT}); // it is unknown what must stay
    }
    ProtectedLocations locations;
    for (const Mount& mount : mounts) {
        locations.m_mountPoints.push_back(mount.mountPoint);
        std::ranges::move(otherPlaces(mount, mounts), std::back_inserter(locations.m_shownElsewhere));
    }
    locations.readChosen();
    for (const FileUrl& home : HomeFolder::all()) {
        locations.guard(home.path());
        locations.guardOtherPlaces(home.path(), mounts);
    }
    return locations;
}

/// The home folder may be reached through a mount that shows a folder of a file system that is mounted
/// elsewhere.
void ProtectedLocations::guardOtherPlaces(const std::string& home, std::span<const Mount> mounts)
{
    const FileDescriptor folder{::open(home.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)};
    const auto path = folder.isOpen() ? realPathOf(folder.get()) : std::unexpected(SystemError::last());
    if (!path) {
        return;
    }
    const auto holding = MountTable::holding(FileUrl{*path}, mounts);
    if (holding) {
        for (const std::string& place : otherPlaces(*holding, mounts)) {
            guard(place + path->substr(holding->mountPoint.size() - (holding->mountPoint == "/" ? 1 : 0)));
        }
    }
}

void ProtectedLocations::guard(const std::string& home)
{
    bool isHome = true;
    // Links that the home's path leads through: without them it would not be found any more.
    for (FileUrl step{home}; step.path().size() > 1; step = step.parent()) {
        const auto attributes = fileAttributes(step);
        if (attributes && attributes->type == EntryType::link) {
            m_homeAndAbove.push_back({attributes->id(), isHome});
        }
        isHome = false;
    }
    isHome = true;
    std::uint64_t below = 0;
    std::uint64_t mountBelow = 0;
    FileDescriptor step{::open(home.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)};
    while (step.isOpen()) {
        const auto attributes = fileAttributes(step.get());
        const auto mount = mountOf(step.get(), "");
        if (!attributes || !mount || (attributes->inode == below && *mount == mountBelow)) {
            return; // the root is its own parent
        }
        below = attributes->inode;
        mountBelow = *mount;
        if (find(*attributes) == nullptr) { // another way may have led here, and from here elsewhere
            m_homeAndAbove.push_back({attributes->id(), isHome});
        }
        isHome = false;
        step = FileDescriptor{::openat(step.get(), "..", O_PATH | O_DIRECTORY | O_CLOEXEC)};
    }
}

const ProtectedLocations::Guarded* ProtectedLocations::find(const FileAttributes& attributes) const
{
    const auto found = std::ranges::find(m_homeAndAbove, attributes.id(), &Guarded::id);
    return found == m_homeAndAbove.end() ? nullptr : &*found;
}

std::optional<std::string> ProtectedLocations::refusal(const ItemPlace& place) const
{
    const auto attributes = fileAttributes(place.parent.get(), place.name.c_str());
    if (!attributes) {
        return std::nullopt; // the removal itself reports a missing or unreachable item
    }
    if (const Guarded* const guarded = find(*attributes)) {
        return guarded->isHome ? "Le dossier personnel ne peut pas être supprimé."
                               : "Ce dossier contient le dossier personnel.";
    }
    const auto path = place.realPath();
    if (!path) {
        // Beyond PATH_MAX the mount table cannot name it either, and the removal enters no mount.
        return path.error().code == ENAMETOOLONG ? std::nullopt : std::optional{path.error().message()};
    }
    if (auto refused = refusalByChoice(*path)) {
        return refused;
    }
    const auto mount = std::ranges::find_if(
        m_mountPoints, [&path](const std::string& point) { return isWithin(point, *path); });
    if (mount == m_mountPoints.end()) {
        const bool isShown = std::ranges::any_of(
            m_shownElsewhere, [&path](const std::string& shown) { return isWithin(shown, *path); });
        return isShown ? std::optional{"Ce dossier, ou un dossier qu'il contient, est monté ailleurs."}
                       : std::nullopt;
    }
    return *mount == *path ? "Un volume est monté à cet emplacement."
                           : "Un volume est monté dans ce dossier.";
}

} // namespace tallyroom
