#include "Removal/FileRemover.h"
#include "Scanning/FileScanner.h"
#include "Soak/Soak.h"
#include "Support/Interception.h"
#include "Support/Isolation.h"
#include "Support/TemporaryTree.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <limits>
#include <mutex>
#include <random>
#include <set>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

// Moves what scans found to the trash, restores it and deletes it, while calls fail at random and somebody
// swaps folders, items and the content of the trash. Every file has its own text: afterwards every text is
// still somewhere, but for those in items that were to be deleted for good.

namespace tallyroom {

namespace {

namespace fs = std::filesystem;

class Round {
public:
    Round(TemporaryTree& tree, std::string volume, std::mt19937_64& source)
        : m_tree(tree), m_volume(std::move(volume)), m_source(source)
    {}

    void run()
    {
        build();
        const std::vector<Entry> chosen = choose();
        const bool permanently = oneIn(2);
        if (permanently) {
            std::ranges::for_each(chosen,
                                  [this](const Entry& entry) { m_chosen.insert(inodeOf(entry.url.path())); });
            noteWhatMayGo();
        }
        const std::set<std::string> before = textsBelow(m_volume);
        const auto mount = TemporaryMount::bind(m_tree.path("mine/b"), placeToMount(chosen));
        if (oneIn(2)) {
            intrude(chosen);
        }
        const auto result = disturbed(chosen, [&] { return FileRemover::remove(chosen, permanently, {}); });
        checkAll(before, permanently ? "only what was asked for is deleted" : "the trash keeps everything");
        Soak::require(result.removed.size() + result.failures.size() == chosen.size(),
                      "every entry is told of");
        if (!result.trashed.empty()) {
            loseSomeRecords();
            restored +=
                disturbed(chosen, [&] { return FileRemover::restore(result.trashed); }).removed.size();
            checkAll(before, "an undo loses nothing");
        }
        removed += result.removed.size();
        refused += result.failures.size();
    }

    /// Of all rounds.
    inline static std::size_t removed = 0;
    inline static std::size_t refused = 0;
    inline static std::size_t restored = 0;

private:
    std::size_t below(std::size_t count)
    {
        return std::uniform_int_distribution<std::size_t>{0, count - 1}(m_source);
    }

    bool oneIn(std::size_t count) { return below(count) == 0; }

    /// The same names below "work", which is scanned, and below "mine", which nobody chooses.
    void build()
    {
        const std::size_t files = oneIn(200) ? 120 : 2;
        for (const std::string top : {"work/a", "work/b", "mine/a", "mine/b"}) {
            for (const std::string place : {"", "/doc", "/doc/inner", "/other"}) {
                for (std::size_t number = 0; number < files; ++number) {
                    m_tree.add(file(top + place + "/f" + std::to_string(number), text()));
                }
            }
            m_tree.add({link(top + "/doc/link", m_tree.path("mine")), folder("shelf")});
        }
    }

    std::string text() { return "text " + std::to_string(m_next++); }

    std::vector<Entry> choose()
    {
        FileScanner::clearCache();
        EntryList found;
        switch (below(4)) {
        case 0:
            found = FileScanner::directEntries(m_tree.url("work/a"), false).get();
            break;
        case 1:
            found = FileScanner::findDirectories({"doc", "other"}, m_tree.url("work")).get();
            break;
        case 2:
            found = FileScanner::findLargestFiles(m_tree.url("work"), 5).get();
            break;
        default:
            found = FileScanner::directEntries(m_tree.url("work"), false).get();
        }
        std::vector<Entry> chosen;
        std::ranges::copy_if(found, std::back_inserter(chosen), [this](const Entry&) { return oneIn(2); });
        return chosen;
    }

    /// A folder in what is chosen, now and then; else none, where nothing can be mounted.
    std::string placeToMount(const std::vector<Entry>& chosen)
    {
        if (chosen.empty() || !chosen.front().isDirectory || !oneIn(20)) {
            return m_tree.path("nowhere");
        }
        std::string place = chosen.front().url.path() + "/mounted";
        fs::create_directory(place);
        return place;
    }

    static void exchange(const std::string& one, const std::string& other)
    {
        ::renameat2(AT_FDCWD, one.c_str(), AT_FDCWD, other.c_str(), RENAME_EXCHANGE);
    }

    /// Lets a link to what nobody chose take an item's place; the item itself goes aside.
    void leadAway(const std::string& path)
    {
        if (::renameat(AT_FDCWD, path.c_str(), AT_FDCWD, m_tree.path("shelf/" + text()).c_str()) == 0) {
            std::error_code ignored;
            fs::create_symlink(m_tree.path("mine/a"), path, ignored);
        }
    }

    /// Somebody swaps an item, or a folder above it, or one in it.
    void intrude(const std::vector<Entry>& chosen)
    {
        if (chosen.empty()) {
            return;
        }
        const std::string item = chosen[below(chosen.size())].url.path();
        const std::array strangers{"mine/a/doc", "mine/a", "mine/b/f0", "mine/a/doc/link"};
        switch (below(6)) {
        case 0:
            exchange(item, m_tree.path(strangers[below(strangers.size())]));
            break;
        case 1:
            leadAway(item);
            break;
        case 2:
            exchange(m_tree.path("work/a"), m_tree.path("mine/a"));
            break;
        case 3:
            leadAway(m_tree.path("work/a"));
            break;
        case 4:
            exchange(m_tree.path("work"), m_tree.path("mine"));
            break;
        default:
            leadAway(item + "/inner");
        }
        noteWhatMayGo();
    }

    /// Swaps within the trash, and between it and what nobody chose.
    void intrudeIntoTrash()
    {
        std::vector<std::string> names = m_tree.names("data/Trash/files");
        if (!names.empty()) {
            const std::string item = m_tree.path("data/Trash/files/" + names[below(names.size())]);
            exchange(item, oneIn(2) ? m_tree.path("data/Trash/files/" + names[below(names.size())])
                                    : m_tree.path("mine/b/f1"));
        }
    }

    void loseSomeRecords()
    {
        for (const std::string& name : m_tree.names("data/Trash/info")) {
            if (oneIn(4)) {
                ::unlink(m_tree.path("data/Trash/info/" + name).c_str());
            }
        }
    }

    /// Runs `action` while calls fail and somebody intrudes.
    FileRemover::RemovalResult disturbed(const std::vector<Entry>& chosen,
                                         const std::function<FileRemover::RemovalResult()>& action)
    {
        std::mutex mutex;
        const bool fails = oneIn(2);
        std::size_t intrusions = oneIn(2) ? 1 + below(6) : 0;
        const Interception disturbance{[&](const InterceptedCall& call) {
            const std::scoped_lock lock{mutex};
            // Nobody can look at a file and remove it in one step: the instant between is not played.
            const bool isTooLate = call.kind == InterceptedCall::Kind::unlink &&
                                   std::ranges::any_of(chosen, [&call](const Entry& entry) {
                                       return !entry.isDirectory && entry.name == call.name;
                                   });
            if (intrusions > 0 && !isTooLate && oneIn(6)) {
                --intrusions;
                oneIn(4) ? intrudeIntoTrash() : intrude(chosen);
            }
            constexpr std::array errors{EIO, EACCES, EPERM, ENOSPC, ENOENT, ESTALE, EXDEV, EINVAL, EEXIST};
            return fails && oneIn(20) ? errors[below(errors.size())] : 0;
        }};
        return action();
    }

    /// The texts of all files at or below a place; no link is followed.
    static std::set<std::string> textsBelow(const std::string& path)
    {
        std::vector<fs::path> paths{path};
        if (fs::is_directory(fs::symlink_status(path))) {
            paths.assign(fs::recursive_directory_iterator{path}, {});
        }
        std::set<std::string> texts;
        for (const fs::path& one : paths) {
            std::string line;
            if (fs::is_regular_file(fs::symlink_status(one))) {
                std::ifstream content{one};
                std::getline(content, line);
            }
            if (line.starts_with("text ")) {
                texts.insert(line);
            }
        }
        return texts;
    }

    static ino_t inodeOf(const fs::path& path)
    {
        struct stat status = {};
        return ::lstat(path.c_str(), &status) == 0 ? status.st_ino : 0;
    }

    /// The content of a chosen item may go with it, wherever the item is now, and whatever was put into it.
    void noteWhatMayGo()
    {
        for (const auto& one : fs::recursive_directory_iterator{m_volume}) {
            if (!one.is_symlink() && m_chosen.contains(inodeOf(one.path()))) {
                m_mayGo.merge(textsBelow(one.path()));
            }
        }
    }

    void checkAll(const std::set<std::string>& before, const char* what) const
    {
        std::set<std::string> known = textsBelow(m_volume);
        known.insert(m_mayGo.begin(), m_mayGo.end());
        Soak::require(std::ranges::includes(known, before), what);
    }

    TemporaryTree& m_tree;
    const std::string m_volume; ///< that holds the tree, and a trash of its own
    std::mt19937_64& m_source;
    std::set<ino_t> m_chosen;      ///< to be deleted for good
    std::set<std::string> m_mayGo; ///< the texts in it
    inline static std::size_t m_next = 0;
};

} // namespace

} // namespace tallyroom

int main(int argc, char** argv)
{
    using namespace tallyroom;
    const Soak::Run run = Soak::begin(argc, argv);
    const std::size_t mostRounds =
        argc > 3 ? std::strtoull(argv[3], nullptr, 10) : std::numeric_limits<std::size_t>::max();
    std::mt19937_64 source{run.seed};
    std::size_t rounds = 0;
    const auto end = std::chrono::steady_clock::now() + run.duration;
    TemporaryTree host{folder("volume")};
    const auto volume = TemporaryMount::memory(host.path("volume"));
    const ScopedVariable place{"TMPDIR", host.path("volume")};
    while (rounds < mostRounds && volume.isMounted() && std::chrono::steady_clock::now() < end) {
        TemporaryTree tree{folder("home"), folder("data")};
        const ScopedVariable home{"HOME", tree.path("home")};
        const ScopedVariable dataHome{"XDG_DATA_HOME", tree.path("data")};
        Round{tree, host.path("volume"), source}.run();
        std::filesystem::remove_all(host.path("volume/.Trash-" + std::to_string(::getuid())));
        ++rounds;
    }
    std::printf("%zu rounds: %zu removed, %zu refused, %zu put back%s\n", rounds, Round::removed,
                Round::refused, Round::restored,
                volume.isMounted() ? "" : "; a volume of its own cannot be had here");
    return 0;
}
