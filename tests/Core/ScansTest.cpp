#include "Duplicates/DuplicateFinder.h"
#include "Kinds/FolderAnalyzer.h"
#include "Scanning/FileScanner.h"
#include "Support/AllRecords.h"
#include "Support/ListWords.h"

#include <cerrno>
#include <climits>
#include <functional>
#include <gmock/gmock.h>
#include <map>
#include <memory>
#include <set>

namespace tallyroom {

namespace {

using DuplicateFinder::DuplicateProgress;
using testing::ElementsAre;
using testing::IsEmpty;

using Lines = std::vector<std::string>;

/// A tree whose every file is known: folders "m" are what searches look for, extensions are "png" or none,
/// and files of one size are of one content.
struct Scene {
    TemporaryTree tree;
    std::map<std::string, std::int64_t> sizes; ///< by path

    void add(const std::string& path, std::int64_t size)
    {
        tree.add(file(path, size));
        sizes[path] = size;
    }
};

/// The bytes that a file of this size occupies here.
std::int64_t onDisk(std::int64_t size)
{
    static std::map<std::int64_t, std::int64_t> known;
    if (!known.contains(size)) {
        const TemporaryTree probe{file("probe", size)};
        known[size] = allocated(probe.path("probe"));
    }
    return known[size];
}

/// "path size", larger first, equal sizes by path.
Lines ranked(const std::map<std::string, std::int64_t>& sizes)
{
    std::set<std::pair<std::int64_t, std::string>> order;
    for (const auto& [path, size] : sizes) {
        order.emplace(-size, path);
    }
    Lines lines;
    for (const auto& [size, path] : order) {
        lines.push_back(path + " " + std::to_string(-size));
    }
    return lines;
}

/// The folders that `folderOf` names for the files, with their sizes; an empty name counts nowhere.
Lines rankedFolders(const Scene& scene, const std::function<std::string(const std::string& path)>& folderOf)
{
    std::map<std::string, std::int64_t> sums;
    for (const auto& [path, size] : scene.sizes) {
        if (const std::string folderPath = folderOf(path); !folderPath.empty()) {
            sums[folderPath] += onDisk(size);
        }
    }
    return ranked(sums);
}

Lines expectedListing(const Scene& scene)
{
    return rankedFolders(scene, [](const std::string& path) { return path.substr(0, path.find('/')); });
}

Lines expectedMatches(const Scene& scene)
{
    return rankedFolders(scene, [](const std::string& path) {
        const std::size_t match = path.find("/m/");
        return match == std::string::npos ? std::string{} : path.substr(0, match + 2);
    });
}

constexpr std::size_t limit = 1000;

Lines expectedRanking(const Scene& scene)
{
    Lines lines = rankedFolders(scene, std::identity{});
    lines.resize(std::min(lines.size(), limit));
    return lines;
}

Lines expectedKinds(const Scene& scene)
{
    std::map<std::string, std::int64_t> bytes;
    std::map<std::string, std::int64_t> files;
    for (const auto& [path, size] : scene.sizes) {
        const std::string kind = path.ends_with(".png") ? "image" : "other";
        bytes[kind] += onDisk(size);
        ++files[kind];
    }
    Lines lines = ranked(bytes);
    for (std::string& line : lines) {
        line += " in " + std::to_string(files[line.substr(0, line.find(' '))]);
    }
    return lines;
}

Lines expectedDuplicates(const Scene& scene)
{
    std::map<std::int64_t, Lines> groups;
    for (const auto& [path, size] : scene.sizes) {
        groups[size].push_back(path);
    }
    std::map<std::string, std::int64_t> waste;
    for (const auto& [size, paths] : groups) {
        if (size > 0 && paths.size() > 1) {
            waste[testing::PrintToString(paths)] = size * static_cast<std::int64_t>(paths.size() - 1);
        }
    }
    return ranked(waste);
}

/// The result in a record; only the last one has it.
using Result = std::optional<Lines>;

Result resultOf(const ScanProgress& record, const TemporaryTree& tree)
{
    if (record.isDiscovering || record.completed < record.total) {
        return std::nullopt;
    }
    EXPECT_TRUE(std::ranges::is_sorted(record.entries, std::greater{}, &Entry::sizeBytes));
    std::map<std::string, std::int64_t> sizes; // of equal sizes streams tell first what was done first
    const Lines paths = below(tree, record.entries);
    for (std::size_t i = 0; i < paths.size(); ++i) {
        EXPECT_EQ(record.entries[i].name, record.entries[i].url.lastPathComponent());
        EXPECT_TRUE(sizes.emplace(paths[i], record.entries[i].sizeBytes).second) << paths[i];
    }
    return ranked(sizes);
}

Lines linesOf(const FolderSummary& summary)
{
    Lines lines;
    for (const CategorySize& category : summary.categories) {
        lines.push_back(std::string{category.kind.rawValue()} + " " + std::to_string(category.totalBytes) +
                        " in " + std::to_string(category.fileCount));
    }
    return lines;
}

Result resultOf(const FolderAnalyzer::Progress& record, const TemporaryTree& /*tree*/)
{
    EXPECT_EQ(record.summary.has_value(), record.phase == FolderAnalyzer::Progress::Phase::done);
    return record.summary ? Result{linesOf(*record.summary)} : std::nullopt;
}

Lines linesOf(const std::vector<DuplicateGroup>& groups, const TemporaryTree& tree)
{
    Lines lines;
    for (const DuplicateGroup& group : groups) {
        lines.push_back(testing::PrintToString(below(tree, group.entries)) + " " +
                        std::to_string(group.wastedBytes()));
    }
    return lines;
}

Result resultOf(const DuplicateProgress& record, const TemporaryTree& tree)
{
    const bool isDone = record.phase == DuplicateFinder::Phase::done;
    EXPECT_TRUE(isDone || record.groups.empty());
    EXPECT_FALSE(record.truncated);
    return isDone ? Result{linesOf(record.groups, tree)} : std::nullopt;
}

/// A scan that runs, whatever its records are.
struct RunningScan {
    std::function<std::optional<Result>()> next; ///< waits for a record; nothing at the end
    std::function<void()> cancel;
    std::shared_ptr<std::optional<SystemError>> unread; ///< what the last record says of the folder

    /// Waits for the end. Only the last record tells a result.
    [[nodiscard]] Result end() const
    {
        Result last;
        while (auto result = next()) {
            EXPECT_FALSE(last.has_value()) << "a record after the result";
            last = std::move(*result);
        }
        return last;
    }
};

struct Scan {
    const char* name;
    std::function<RunningScan(const TemporaryTree&, const FileUrl&)> start;
    std::function<Lines(const TemporaryTree&, const FileUrl&)> whole; ///< in one piece
    Lines (*expected)(const Scene&);
};

template <typename Start>
auto starting(Start start)
{
    return [start](const TemporaryTree& tree, const FileUrl& url) {
        const auto stream = std::make_shared<decltype(start(url))>(start(url));
        const auto unread = std::make_shared<std::optional<SystemError>>();
        const auto next = [&tree, stream, unread]() -> std::optional<Result> {
            const auto record = stream->next();
            *unread = record ? record->unread : *unread;
            return record ? std::optional<Result>{std::in_place, resultOf(*record, tree)} : std::nullopt;
        };
        return RunningScan{next, [stream] { stream->cancel(); }, unread};
    };
}

template <typename Find>
auto finding(Find find)
{
    return [find](const TemporaryTree& tree, const FileUrl& url) { return sized(tree, find(url).get()); };
}

const std::vector<Scan>& scans()
{
    static const std::vector<Scan> all{
        {"listing", starting([](const FileUrl& url) { return FileScanner::directEntriesStream(url, false); }),
         [](const TemporaryTree& tree, const FileUrl& url) { // equal sizes as the folder has them
             return *resultOf(ScanProgress{FileScanner::directEntries(url, false).get()}, tree);
         },
         expectedListing},
        {"largest files",
         starting([](const FileUrl& url) { return FileScanner::findLargestFilesStream(url, limit); }),
         finding([](const FileUrl& url) { return FileScanner::findLargestFiles(url, limit); }),
         expectedRanking},
        {"search",
         starting([](const FileUrl& url) { return FileScanner::findDirectoriesStream({"m"}, url); }),
         finding([](const FileUrl& url) { return FileScanner::findDirectories({"m"}, url); }),
         expectedMatches},
        {"kinds", starting([](const FileUrl& url) { return FolderAnalyzer::stream(url); }),
         [](const TemporaryTree&, const FileUrl& url) {
             return linesOf(FolderAnalyzer::summarize(url).get());
         },
         expectedKinds},
        {"duplicates", starting([](const FileUrl& url) { return DuplicateFinder::stream(url, 1); }),
         [](const TemporaryTree& tree, const FileUrl& url) {
             return linesOf(DuplicateFinder::find(url, 1).get(), tree);
         },
         expectedDuplicates}};
    return all;
}

void expectAllScansTell(const Scene& scene)
{
    for (const Scan& scan : scans()) {
        SCOPED_TRACE(scan.name);
        FileScanner::clearCache();
        const Lines expected = scan.expected(scene);
        EXPECT_EQ(scan.start(scene.tree, scene.tree.url()).end(), expected);
        FileScanner::clearCache();
        EXPECT_EQ(scan.whole(scene.tree, scene.tree.url()), expected);
    }
}

TEST(Scans, NamesThatAreNoTextAndPathsOfAnyLengthAreFound)
{
    Scene scene;
    const std::string longName(255, 'n');
    const std::string beyondPathMax = chain(longName, 40);
    const std::string levels = chain("d", 300);
    for (const std::string& name : {std::string{"line\nfeed"}, std::string{"\xff\xfe"}, std::string{"-rf"},
                                    longName, beyondPathMax, levels}) {
        scene.add(name + "/m/a.png", 8192);
        scene.add(name + "/m/more/\xff", 4096);
    }
    scene.add("-rf2", 4096);
    expectAllScansTell(scene);
    for (std::size_t length = PATH_MAX - 1; length <= PATH_MAX + 1; ++length) {
        TemporaryTree tree;
        std::string place = chain(longName, (length - tree.path().size()) / 256 - 1);
        const std::size_t rest = length - tree.path(place).size() - 2;
        place += "/" + std::string(rest / 2, 'a') + "/" + std::string(rest - rest / 2, 'b');
        ASSERT_EQ(tree.path(place).size(), length);
        tree.add(file(place + "/f", 4096));
        EXPECT_EQ(FileScanner::directorySize(tree.url(place)), onDisk(4096)) << length;
    }
}

TEST(Scans, AFolderOfThousandsLosesNothing)
{
    Scene scene;
    // Longer than a buffer of names, and more buffers than may wait at a time.
    constexpr int count = 9000;
    const std::string beginning = std::string(230, 'n');
    scene.tree.addEmptyFiles("wide/m", beginning, count);
    for (int number = 0; number < count; ++number) {
        scene.sizes["wide/m/" + beginning + std::to_string(number)] = 0;
    }
    scene.add("wide/m/one", 8192);
    scene.add("wide/m/two.png", 8192);
    scene.add("beside", 4096);
    expectAllScansTell(scene);
    EXPECT_EQ(allRecords(FileScanner::directEntriesStream(scene.tree.url("wide/m"), false)).size(),
              count + 2U);
}

TEST(Scans, WhatHoldsNothingGivesAnEmptyResultThatSaysWhatIsNotRead)
{
    const TemporaryTree tree{folder("empty/.git"), file("file", 10)};
    for (const Scan& scan : scans()) {
        for (const auto& [place, unread] :
             {std::pair{"empty/.git", 0}, {"file", ENOTDIR}, {"missing", ENOENT}}) {
            SCOPED_TRACE(std::string{scan.name} + " of " + place);
            const auto run = scan.start(tree, tree.url(place));
            EXPECT_THAT(run.end(), testing::Optional(IsEmpty()));
            EXPECT_EQ(run.unread->value_or(SystemError{0}), SystemError{unread});
            EXPECT_THAT(scan.whole(tree, tree.url(place)), IsEmpty());
        }
    }
}

/// Two hundred folders of folders.
std::unique_ptr<Scene> manyFolders()
{
    auto scene = std::make_unique<Scene>();
    for (int i = 0; i < 200; ++i) {
        scene->add("f" + std::to_string(i) + "/m/deep/er" + (i % 2 == 0 ? ".png" : ""), 4096 * (i % 10));
    }
    return scene;
}

TEST(Scans, ACancelledScanEndsAndLeavesNothingWrongBehind)
{
    const auto scene = manyFolders();
    for (const Scan& scan : scans()) {
        SCOPED_TRACE(scan.name);
        for (const int taken : {0, 1, 20, 199, 250}) {
            FileScanner::clearCache();
            const auto run = scan.start(scene->tree, scene->tree.url());
            bool hasEnded = false;
            for (int i = 0; i < taken && !hasEnded; ++i) {
                hasEnded = !run.next();
            }
            run.cancel();
            static_cast<void>(run.end()); // comes, and tells a result only if the scan was quicker
            // A listing cut short would be taken for the folder's, a total cut short for its size.
            const auto listed = FileScanner::directEntries(scene->tree.url(), true).get();
            EXPECT_EQ(*resultOf(ScanProgress{listed}, scene->tree), expectedListing(*scene)) << taken;
        }
    }
}

TEST(Scans, ScansAtOnceDoNotMix)
{
    const auto one = manyFolders();
    Scene two;
    for (int i = 0; i < 60; ++i) {
        two.add("g" + std::to_string(i % 7) + "/m/h" + std::to_string(i), 4096 * (i % 5));
    }
    for (int round = 0; round < 2; ++round) {
        FileScanner::clearCache();
        std::vector<std::pair<RunningScan, Lines>> runs;
        for (const Scan& scan : scans()) {
            for (const Scene* const scene : {one.get(), &two, one.get()}) {
                runs.emplace_back(scan.start(scene->tree, scene->tree.url()), scan.expected(*scene));
            }
        }
        for (const auto& [run, expected] : runs) {
            EXPECT_EQ(run.end(), expected);
        }
    }
}

} // namespace

} // namespace tallyroom
