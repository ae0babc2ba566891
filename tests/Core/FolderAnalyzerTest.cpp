#include "Analysis/FolderAnalyzer.h"

#include "FileSystem/FolderReader.h"
#include "Support/AllRecords.h"
#include "Support/TemporaryTree.h"

#include <algorithm>
#include <fcntl.h>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <sys/stat.h>

namespace tallyroom {

namespace {

using testing::ElementsAre;

/// Makes `count` empty files in a folder, quickly.
void addEmptyFiles(const TemporaryTree& tree, std::string_view folder, int count)
{
    const FileDescriptor place = std::move(*openFolder(tree.url(folder), FolderAccess::listing));
    for (int i = 0; i < count; ++i) {
        ASSERT_EQ(::mknodat(place.get(), (std::to_string(i) + ".txt").c_str(), S_IFREG | 0644, 0), 0);
    }
}

/// The rules over again, plainly and one item after the other.
FolderSummary plainSummary(const std::string& path)
{
    std::map<FileKind::Value, CategorySize> kinds;
    FolderSummary summary;
    for (std::filesystem::recursive_directory_iterator it{path}, end; it != end; ++it) {
        const std::string name = it->path().filename().native();
        if (it->is_symlink()) {
            continue;
        }
        if (it->is_directory()) {
            if (name == ".git" || name == ".hg" || name == ".svn") {
                it.disable_recursion_pending();
            }
            continue;
        }
        CategorySize& category = kinds[FileKind::of(FileUrl{it->path().native()}.pathExtension())];
        category.kind = FileKind::of(FileUrl{it->path().native()}.pathExtension());
        category.totalBytes += allocated(it->path().native());
        ++category.fileCount;
        summary.totalBytes += allocated(it->path().native());
        ++summary.totalFiles;
    }
    for (const auto& [kind, category] : kinds) {
        summary.categories.push_back(category);
    }
    std::ranges::stable_sort(summary.categories, std::greater{}, &CategorySize::totalBytes);
    return summary;
}

TEST(FolderAnalyzer, CountsFilesByKindAndNeitherLinksNorVersionControl)
{
    const TemporaryTree tree{file("a.jpg", 5000),
                             file("in/b.JPG", 100'000),
                             file("in/archive.tar.gz", 300'000),
                             link("in/shortcut.mp4", "../huge.bin"),
                             link("in/loop", "../in"),
                             file("no extension", 10),
                             file(".profile", 10),
                             fifo("pipe.png"),
                             socket("in/socket"),
                             file("project/.git/objects/pack.zip", 900'000),
                             file("project/.hg/store.zip", 900'000),
                             file("project/.svn/wc.db", 900'000),
                             file("project/main.cpp", 4096),
                             file("module/.git", 30),
                             folder("empty"),
                             file(".gitignore/inner.md", 20)};
    const FolderSummary summary = FolderAnalyzer::summarize(tree.url()).get();
    EXPECT_EQ(summary, plainSummary(tree.path()));
    EXPECT_EQ(summary.totalFiles, 10) << "three images, an archive, four others, a source and a document";
    const std::int64_t images = allocated(tree.path("a.jpg")) + allocated(tree.path("in/b.JPG"));
    EXPECT_THAT(summary.categories, testing::Contains(CategorySize{FileKind::image, images, 3}));
    EXPECT_EQ(summary.categories[0].kind, FileKind::archive);

    EXPECT_EQ(FolderAnalyzer::summarize(tree.url("project/.git")).get().totalFiles, 1)
        << "a person who chooses such a folder means it";
    EXPECT_EQ(FolderAnalyzer::summarize(tree.url("in/loop")).get().totalFiles, 3)
        << "a chosen link stands for its folder";
}

TEST(FolderAnalyzer, KindsOfEqualSizeComeInTheOrderOfDeclaration)
{
    const TemporaryTree tree{file("z.iso"), file("y.csv"), file("x.mp3"), file("w.png"), file("v")};
    std::vector<FileKind::Value> kinds;
    std::ranges::transform(FolderAnalyzer::summarize(tree.url()).get().categories, std::back_inserter(kinds),
                           &CategorySize::kind);
    EXPECT_THAT(kinds, ElementsAre(FileKind::image, FileKind::audio, FileKind::spreadsheet,
                                   FileKind::diskImage, FileKind::other));
}

TEST(FolderAnalyzer, SendsARecordAtEveryMultipleAndTheSummaryLast)
{
    // One folder that passes several multiples at once, and many small ones that pass one together.
    TemporaryTree tree{folder("wide")};
    addEmptyFiles(tree, "wide", 9000);
    for (int i = 0; i < 100; ++i) {
        const std::string name = "small" + std::to_string(i);
        tree.add(folder(name));
        addEmptyFiles(tree, name, 10);
    }
    const auto records = allRecords(FolderAnalyzer::stream(tree.url()));
    const FolderSummary whole = FolderAnalyzer::summarize(tree.url()).get();
    EXPECT_EQ(whole.totalFiles, 10'000);
    EXPECT_EQ(whole, plainSummary(tree.path()));
    using Progress = FolderAnalyzer::Progress;
    EXPECT_THAT(records, ElementsAre(Progress{4096, std::nullopt, FolderAnalyzer::Progress::Phase::scanning},
                                     Progress{8192, std::nullopt, FolderAnalyzer::Progress::Phase::scanning},
                                     Progress{10'000, whole, FolderAnalyzer::Progress::Phase::done}));
}

TEST(FolderAnalyzer, AnEmptyAMissingAndAFileForAFolderGiveTheEmptySummary)
{
    const TemporaryTree tree{folder("empty"), file("file", 10), folder("only/folders/.git")};
    const FolderAnalyzer::Progress nothing{0, FolderSummary{}, FolderAnalyzer::Progress::Phase::done};
    for (const std::string name : {"empty", "file", "missing", "only"}) {
        EXPECT_THAT(allRecords(FolderAnalyzer::stream(tree.url(name))), ElementsAre(nothing)) << name;
        EXPECT_EQ(FolderAnalyzer::summarize(tree.url(name)).get(), FolderSummary{}) << name;
    }
}

TEST(FolderAnalyzer, AStoppedAnalysisSendsNoSummaryAndGivesWhatItHad)
{
    TemporaryTree tree;
    for (int i = 0; i < 40; ++i) {
        tree.add(folder(std::to_string(i)));
        addEmptyFiles(tree, std::to_string(i), 100);
    }
    std::stop_source stopped;
    stopped.request_stop();
    EXPECT_EQ(FolderAnalyzer::summarize(tree.url(), stopped.get_token()).get(), FolderSummary{});

    // A walk may have ended before it was cancelled, but not a hundred times in a row.
    const auto isCutShort = [&tree] {
        auto stream = FolderAnalyzer::stream(tree.url());
        stream.cancel();
        return std::ranges::none_of(allRecords(std::move(stream)), [](const auto& record) {
            return record.phase == FolderAnalyzer::Progress::Phase::done;
        });
    };
    int round = 0;
    while (round < 100 && !isCutShort()) {
        ++round;
    }
    EXPECT_LT(round, 100);

    std::stop_source early;
    auto partial = FolderAnalyzer::summarize(tree.url(), early.get_token());
    early.request_stop();
    const FolderSummary summary = partial.get();
    EXPECT_LE(summary.totalFiles, 4000);
}

TEST(FolderAnalyzer, CountsNamesThatAreNoTextAndEveryNameOfAFile)
{
    const TemporaryTree tree{file("\xff.png", 5000), file("line\nfeed.png", 5000), file("-rf.png", 5000),
                             hardLink("again.png", "-rf.png"), file(std::string(251, 'n') + ".png", 5000)};
    const std::int64_t each = allocated(tree.path("-rf.png"));
    EXPECT_THAT(FolderAnalyzer::summarize(tree.url()).get().categories,
                ElementsAre(CategorySize{FileKind::image, 5 * each, 5}));
}

} // namespace

} // namespace tallyroom
