#include "Caches/FindInspectors.h"

#include "Caches/CacheProof.h"
#include "Caches/OpenFiles.h"
#include "Caches/RecentWrites.h"
#include "FileSystem/FolderReader.h"
#include "FileSystem/HomeFolder.h"
#include "FileSystem/RealPath.h"
#include "Git/TrackedFiles.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <optional>
#include <string>
#include <vector>

namespace tallyroom::FindInspectors {

namespace {

/// So long a cache that was written to is taken to be in use.
constexpr std::chrono::minutes recently{10};

/// Where the finds lie without links, in their order; none where that cannot be known.
std::vector<FileUrl> realPlaces(const FileUrl& root, std::span<const Entry> finds)
{
    const auto folder = openFolder(root, FolderAccess::throughOnly);
    const auto real = folder ? realPathOf(folder->get()) : std::unexpected(folder.error());
    std::vector<FileUrl> places;
    if (!real) {
        return places;
    }
    const std::string base = *real == "/" ? std::string{} : *real;
    const std::size_t rootLength = root.path() == "/" ? 0 : root.path().size();
    places.reserve(finds.size());
    for (const Entry& find : finds) {
        places.emplace_back(base + find.url.path().substr(rootLength));
    }
    return places;
}

/// Marks those that other programs use now, as the files tell that they hold open in the folder that counts
/// for each.
template <class Place>
void markOpen(std::span<Entry> finds, std::span<const FileUrl> places, const Place& place)
{
    if (places.empty()) {
        return;
    }
    const OpenFiles open = OpenFiles::look();
    for (std::size_t number = 0; number < places.size(); ++number) {
        if (open.isAnyIn(place(places[number]))) {
            finds[number].set(EntryMark::inUse, true);
        }
    }
}

/// What Git tracks is somebody's work and no cache; nor is anything proven where its index cannot be read.
void markTracked(std::span<Entry> finds, std::span<const FileUrl> places)
{
    if (places.empty()) {
        for (Entry& find : finds) {
            find.set(EntryMark::toVerify, true);
        }
        return;
    }
    std::vector<std::size_t> order(places.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::ranges::sort(order, {}, [places](std::size_t number) -> const FileUrl& { return places[number]; });
    TrackedFiles tracked;
    for (const std::size_t number : order) {
        if (tracked.isAnyIn(places[number]) != std::optional{false}) {
            finds[number].set(EntryMark::toVerify, true);
        }
    }
}

class CacheInspector final : public FindInspector {
public:
    void inspect(int parent, Entry& find) const override
    {
        const CacheProof proof = proveCache(parent, find.name);
        find.ecosystem = Ecosystem::stored(proof.ecosystem);
        if (!proof.isProven) {
            find.set(EntryMark::toVerify, true);
        }
        if (isOfInstalledProgram(find.url)) {
            find.set(EntryMark::application, true);
        }
        if (RecentWrites::isAnyBetween(parent, find.name.c_str(), m_start - recently, m_start + recently)) {
            find.set(EntryMark::inUse, true);
        }
    }

    void conclude(const FileUrl& root, std::span<Entry> finds) const override
    {
        const auto places = realPlaces(root, finds);
        markOpen(finds, places, [](const FileUrl& cache) { return cache; });
        markTracked(finds, places);
    }

private:
    const Timestamp m_start = std::chrono::system_clock::now();
};

class ProgramInspector final : public FindInspector {
public:
    void inspect(int /*parent*/, Entry& find) const override
    {
        if (isOfInstalledProgram(find.url)) {
            find.set(EntryMark::application, true);
        }
    }

    /// A program that works in a project may load any of its modules at any time.
    void conclude(const FileUrl& root, std::span<Entry> finds) const override
    {
        const auto places = realPlaces(root, finds);
        markOpen(finds, places, [](const FileUrl& nodeModules) { return nodeModules.parent(); });
        markTracked(finds, places);
    }
};

/// Whether the first step of `path` below `home` is hidden, or a folder for programs.
bool isProgramPlace(std::string_view path, std::string_view home)
{
    const std::string_view below = path.substr(std::min(path.size(), home.size() + 1));
    return below.starts_with('.') || below.starts_with("Applications/");
}

} // namespace

std::shared_ptr<const FindInspector> ofCaches()
{
    return std::make_shared<CacheInspector>();
}

std::shared_ptr<const FindInspector> ofNodeModules()
{
    return std::make_shared<ProgramInspector>();
}

bool isOfInstalledProgram(const FileUrl& url)
{
    static constexpr std::array<std::string_view, 6> places{"/usr", "/opt",     "/snap",
                                                            "/nix", "/var/lib", "/app"};
    const std::string_view path = url.path();
    if (std::ranges::any_of(places, [path](std::string_view place) { return isWithin(path, place); }) ||
        path.find("/resources/app/") != std::string_view::npos) {
        return true;
    }
    const auto homes = HomeFolder::all();
    const auto isOwnHome = [path](const FileUrl& home) {
        return home.path() != "/" && isWithin(path, home.path());
    };
    if (const auto home = std::ranges::find_if(homes, isOwnHome); home != homes.end()) {
        return isProgramPlace(path, home->path());
    }
    constexpr std::string_view others = "/home/";
    return path.starts_with(others) && isProgramPlace(path, path.substr(0, path.find('/', others.size())));
}

} // namespace tallyroom::FindInspectors
