#include "Concurrency/LastRecord.h"
#include "Duplicates/DuplicateFinder.h"
#include "Kinds/FolderAnalyzer.h"
#include "Scanning/FileScanner.h"
#include "Scanning/TreeOutline.h"
#include "Support/AllRecords.h"
#include "Support/ListWords.h"

#include <cerrno>
#include <climits>
#include <functional>
#include <gmock/gmock.h>
#include <memory>
#include <set>

namespace tallyroom {

namespace {

using DuplicateFinder::DuplicateProgress;
using testing::ElementsAre;
using testing::IsEmpty;

using Lines = std::vector<std::string>;

constexpr std::size_t limit = 1000;

/// Equal sizes by path: streams tell first what was done first.
Lines ranked(const EntryList& entries, const TemporaryTree& tree)
{
    EXPECT_TRUE(std::ranges::is_sorted(entries, std::greater{}, &Entry::sizeBytes));
    const Lines paths = below(tree, entries);
    std::set<std::pair<std::int64_t, std::string>> order;
    for (std::size_t i = 0; i < paths.size(); ++i) {
        EXPECT_EQ(entries[i].name, entries[i].url.lastPathComponent());
        EXPECT_TRUE(order.emplace(-entries[i].sizeBytes, paths[i]).second) << paths[i];
    }
    Lines lines;
    for (const auto& [size, path] : order) {
        lines.push_back(path + " " + std::to_string(-size));
    }
    return lines;
}

/// The result in a record; only the last one has it.
using Result = std::optional<Lines>;

Result resultOf(const ScanProgress& record, const TemporaryTree& tree)
{
    if (record.isDiscovering || record.completed < record.total) {
        return std::nullopt;
    }
    return ranked(record.entries, tree);
}

Lines linesOf(const FolderSummary& summary)
{
    Lines lines;
    for (const CategorySize& category : summary.categories) {
        lines.push_back(std::to_string(category.fileCount) + " of " + std::string{category.kind.rawValue()} +
                        " " + std::to_string(category.totalBytes));
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

/// The files, which hold all bytes.
Result resultOf(const TreeOutline::Progress& record, const TemporaryTree& tree)
{
    std::vector<Entry> files;
    for (const Outline::Node& node : record.outline->nodes) {
        EXPECT_TRUE(node.restCount == 0 || !record.isComplete);
        if (!node.entry.isDirectory) {
            files.push_back(node.entry);
        }
    }
    std::ranges::sort(files, isLarger);
    return record.isComplete ? Result{ranked(rankedByPath(EntryList{files}), tree)} : std::nullopt;
}

TreeOutline::Stream wholeOutline(const FileUrl& url)
{
    return TreeOutline::read(url, {.leastShare = 0});
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
             return ranked(FileScanner::directEntries(url, false).get(), tree);
         }},
        {"largest files",
         starting([](const FileUrl& url) { return FileScanner::findLargestFilesStream(url, limit); }),
         finding([](const FileUrl& url) { return FileScanner::findLargestFiles(url, limit); })},
        {"search",
         starting([](const FileUrl& url) { return FileScanner::findDirectoriesStream({"m"}, url); }),
         finding([](const FileUrl& url) { return FileScanner::findDirectories({"m"}, url); })},
        {"kinds", starting([](const FileUrl& url) { return FolderAnalyzer::stream(url); }),
         [](const TemporaryTree&, const FileUrl& url) {
             return linesOf(FolderAnalyzer::summarize(url).get());
         }},
        {"duplicates", starting([](const FileUrl& url) { return DuplicateFinder::stream(url, 1); }),
         [](const TemporaryTree& tree, const FileUrl& url) {
             return linesOf(DuplicateFinder::find(url, 1).get(), tree);
         }},
        {"outline", starting(wholeOutline), [](const TemporaryTree& tree, const FileUrl& url) {
             return lastRecord(wholeOutline(url),
                               [&](const TreeOutline::Progress& last) {
                                   return resultOf(last, tree).value_or(Lines{});
                               })
                 .get();
         }}};
    return all;
}

/// How many lines a scan tells, and the sum of what they end with: sizes, or what duplicates waste.
using Tally = std::pair<std::size_t, std::int64_t>;

void expectAllScansTell(const TemporaryTree& tree, const std::vector<Tally>& tallies)
{
    for (std::size_t i = 0; i < scans().size(); ++i) {
        const Scan& scan = scans()[i];
        SCOPED_TRACE(scan.name);
        FileScanner::clearCache();
        const Lines told = scan.start(tree, tree.url()).end().value_or(Lines{});
        Tally tally{told.size(), 0};
        for (const std::string& line : told) {
            tally.second += std::stoll(line.substr(line.rfind(' ') + 1));
        }
        EXPECT_EQ(tally, tallies[i]);
        FileScanner::clearCache();
        EXPECT_EQ(scan.whole(tree, tree.url()), told);
    }
}

TEST(Scans, NamesThatAreNoTextAndPathsOfAnyLengthAreFound)
{
    TemporaryTree scene;
    const std::string longName(255, 'n');
    const std::string beyondPathMax = chain(longName, 40);
    const std::string levels = chain("d", 300);
    for (const std::string& name : {std::string{"line\nfeed"}, std::string{"\xff\xfe"}, std::string{"-rf"},
                                    longName, beyondPathMax, levels}) {
        scene.add({file(name + "/m/a.png", 8192), file(name + "/m/more/\xff", 4096)});
    }
    scene.add(file("-rf2", 4096));
    const std::int64_t large = allocated(scene.path("-rf/m/a.png"));
    const std::int64_t small = allocated(scene.path("-rf2"));
    const std::int64_t matches = 6 * (large + small);
    expectAllScansTell(scene, {{6, matches + small}, // the longest chain lies in the folder of its first name
                               {13, matches + small},
                               {6, matches},
                               {2, matches + small},
                               {2, 5 * 8192 + 6 * 4096},
                               {13, matches + small}});
    for (std::size_t length = PATH_MAX - 1; length <= PATH_MAX + 1; ++length) {
        TemporaryTree tree;
        std::string place = chain(longName, (length - tree.path().size()) / 256 - 1);
        const std::size_t rest = length - tree.path(place).size() - 2;
        place += "/" + std::string(rest / 2, 'a') + "/" + std::string(rest - rest / 2, 'b');
        ASSERT_EQ(tree.path(place).size(), length);
        tree.add(file(place + "/f", 4096));
        EXPECT_EQ(FileScanner::directorySize(tree.url(place)), small) << length;
    }
}

TEST(Scans, AFolderOfThousandsLosesNothing)
{
    // Longer than a buffer of names, and more buffers than may wait at a time.
    constexpr int count = 9000;
    TemporaryTree scene{file("wide/m/one", 8192), file("wide/m/two.png", 8192), file("beside", 4096)};
    scene.addEmptyFiles("wide/m", std::string(230, 'n'), count);
    const std::int64_t matches = 2 * allocated(scene.path("wide/m/one"));
    const std::int64_t all = matches + allocated(scene.path("beside"));
    expectAllScansTell(scene, {{2, all}, {limit, all}, {1, matches}, {2, all}, {1, 8192}, {count + 3, all}});
    const auto kinds = FolderAnalyzer::summarize(scene.url()).get();
    EXPECT_EQ(kinds.totalFiles, count + 3);
    EXPECT_EQ(allRecords(FileScanner::directEntriesStream(scene.url("wide/m"), false)).size(), count + 2U);
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

/// So many folders of folders.
void addFolders(TemporaryTree& tree, int count)
{
    for (int i = 0; i < count; ++i) {
        tree.add(file("f" + std::to_string(i) + "/m/deep/er" + (i % 2 == 0 ? ".png" : ""), 4096 * (i % 10)));
    }
}

TEST(Scans, ACancelledScanEndsAndLeavesNothingWrongBehind)
{
    TemporaryTree tree;
    addFolders(tree, 200);
    const Lines expected = scans().front().whole(tree, tree.url());
    for (const Scan& scan : scans()) {
        SCOPED_TRACE(scan.name);
        for (const int taken : {0, 1, 20, 199, 250}) {
            FileScanner::clearCache();
            const auto run = scan.start(tree, tree.url());
            bool hasEnded = false;
            for (int i = 0; i < taken && !hasEnded; ++i) {
                hasEnded = !run.next();
            }
            run.cancel();
            static_cast<void>(run.end()); // comes, and tells a result only if the scan was quicker
            // A listing cut short would be taken for the folder's, a total cut short for its size.
            EXPECT_EQ(ranked(FileScanner::directEntries(tree.url(), true).get(), tree), expected) << taken;
        }
    }
}

TEST(Scans, ScansAtOnceDoNotMix)
{
    TemporaryTree one;
    addFolders(one, 200);
    TemporaryTree two;
    addFolders(two, 60);
    for (int round = 0; round < 2; ++round) {
        FileScanner::clearCache();
        std::vector<std::tuple<RunningScan, const Scan*, const TemporaryTree*>> runs;
        for (const Scan& scan : scans()) {
            for (const TemporaryTree* const tree : {&one, &two, &one}) {
                runs.emplace_back(scan.start(*tree, tree->url()), &scan, tree);
            }
        }
        for (const auto& [run, scan, tree] : runs) {
            EXPECT_EQ(run.end(), scan->whole(*tree, tree->url()));
        }
    }
}

} // namespace

} // namespace tallyroom
