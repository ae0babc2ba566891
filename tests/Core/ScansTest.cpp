#include "Duplicates/DuplicateFinder.h"
#include "Kinds/FolderAnalyzer.h"
#include "Scanning/FileScanner.h"
#include "Support/AllRecords.h"
#include "Support/ListWords.h"

#include <cerrno>
#include <climits>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <set>
#include <span>

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

/// What a file of this size occupies here.
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

/// What the folders weigh that `folderOf` names for each file; none for an empty name.
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

/// What a record tells: nothing before it is the last one.
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
class RunningScan {
public:
    virtual ~RunningScan() = default;

    /// Waits for a record; nothing at the end.
    virtual std::optional<Result> next() = 0;
    virtual void cancel() = 0;

    /// What the last record says of the folder.
    [[nodiscard]] std::optional<SystemError> unread() const { return m_unread; }

    /// Waits for the end. Only the last record tells a result.
    Result end()
    {
        Result last;
        while (auto result = next()) {
            EXPECT_FALSE(last.has_value()) << "a record after the result";
            last = std::move(*result);
        }
        return last;
    }

protected:
    std::optional<SystemError> m_unread;
};

template <typename Record>
class RunOf final : public RunningScan {
public:
    RunOf(const TemporaryTree& tree, ProgressStream<Record> stream)
        : m_tree(tree), m_stream(std::move(stream))
    {}

    std::optional<Result> next() override
    {
        const auto record = m_stream.next();
        m_unread = record ? record->unread : m_unread;
        return record ? std::optional<Result>{std::in_place, resultOf(*record, m_tree)} : std::nullopt;
    }

    void cancel() override { m_stream.cancel(); }

private:
    const TemporaryTree& m_tree;
    ProgressStream<Record> m_stream;
};

struct Scan {
    const char* name;
    std::function<std::unique_ptr<RunningScan>(const TemporaryTree&, const FileUrl&)> start;
    std::function<Lines(const TemporaryTree&, const FileUrl&)> whole; ///< in one piece
    Lines (*expected)(const Scene&);
};

template <typename Start>
auto starting(Start start)
{
    return [start](const TemporaryTree& tree, const FileUrl& url) -> std::unique_ptr<RunningScan> {
        auto stream = start(url);
        using Record = typename decltype(stream.next())::value_type;
        return std::make_unique<RunOf<Record>>(tree, std::move(stream));
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
        EXPECT_EQ(scan.start(scene.tree, scene.tree.url())->end(), expected);
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
    for (const std::size_t length : {PATH_MAX - 1, PATH_MAX, PATH_MAX + 1}) {
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
            EXPECT_THAT(run->end(), testing::Optional(IsEmpty()));
            EXPECT_EQ(run->unread().value_or(SystemError{0}), SystemError{unread});
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
                hasEnded = !run->next();
            }
            run->cancel();
            run->end(); // comes, and tells a result only if the scan was quicker
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
        std::vector<std::pair<std::unique_ptr<RunningScan>, Lines>> runs;
        for (const Scan& scan : scans()) {
            for (const Scene* const scene : {one.get(), &two, one.get()}) {
                runs.emplace_back(scan.start(scene->tree, scene->tree.url()), scan.expected(*scene));
            }
        }
        for (const auto& [run, expected] : runs) {
            EXPECT_EQ(run->end(), expected);
        }
    }
}

TEST(Scans, TheRecordsOfAListingAndOfASearchGrowByOne)
{
    const auto scene = manyFolders();
    const auto expectsToGrow = [](std::span<const ScanProgress> records) {
        for (std::size_t i = 0; i < records.size(); ++i) {
            EXPECT_EQ(records[i].entries.size(), i + 1);
            EXPECT_EQ(records[i].completed, static_cast<std::int64_t>(i) + 1);
            EXPECT_EQ(records[i].total, static_cast<std::int64_t>(records.size()));
            EXPECT_FALSE(records[i].isDiscovering);
            EXPECT_TRUE(std::ranges::is_sorted(records[i].entries, std::greater{}, &Entry::sizeBytes));
        }
    };
    const auto listing = allRecords(FileScanner::directEntriesStream(scene->tree.url(), false));
    ASSERT_EQ(listing.size(), 200U);
    expectsToGrow(listing);

    // Of several matches in one folder each is told too.
    scene->tree.add({folder("f0/n"), folder("f0/o"), folder("f1/n")});
    const auto search = allRecords(FileScanner::findDirectoriesStream({"m", "n", "o"}, scene->tree.url()));
    ASSERT_EQ(search.size(), 406U);
    for (std::int64_t i = 0; i < 203; ++i) {
        EXPECT_EQ(search[static_cast<std::size_t>(i)], (ScanProgress{{}, 0, i + 1, true}));
    }
    expectsToGrow(std::span{search}.subspan(203));
}

TEST(Scans, ARankingIsToldNowAndThenAndABreakdownEveryFourThousandFiles)
{
    TemporaryTree tree;
    tree.addEmptyFiles("wide", "w", 9000); // passes several multiples at once
    for (int i = 0; i < 100; ++i) {
        tree.addEmptyFiles("small" + std::to_string(i), "s", 10); // many pass one together
    }
    const auto start = std::chrono::steady_clock::now();
    const auto rankings = allRecords(FileScanner::findLargestFilesStream(tree.url(), 5));
    const auto intervals = (std::chrono::steady_clock::now() - start) / std::chrono::milliseconds{120};
    EXPECT_LE(static_cast<std::int64_t>(rankings.size()), intervals + 2) << "the first, the last";
    EXPECT_TRUE(std::ranges::is_sorted(rankings, {}, &ScanProgress::completed));
    EXPECT_EQ(rankings.back().total, 10'000);

    const auto breakdown = allRecords(FolderAnalyzer::stream(tree.url()));
    std::vector<std::int64_t> counts;
    std::ranges::transform(breakdown, std::back_inserter(counts), &FolderAnalyzer::Progress::scanned);
    EXPECT_THAT(counts, ElementsAre(4096, 8192, 10'000));
}

TEST(FolderAnalyzer, AStoppedAnalysisGivesWhatItHad)
{
    TemporaryTree tree;
    tree.addEmptyFiles("some", "file", 100);
    std::stop_source stop;
    EXPECT_EQ(FolderAnalyzer::summarize(tree.url(), stop.get_token()).get().totalFiles, 100);
    stop.request_stop();
    EXPECT_EQ(FolderAnalyzer::summarize(tree.url(), stop.get_token()).get(), FolderSummary{});
}

} // namespace

} // namespace tallyroom
