#include "Analysis/FolderAnalyzer.h"

#include "Support/TemporaryTree.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tallyroom {

namespace {

using testing::ElementsAre;

TEST(FolderAnalyzer, CountsFilesByKindAndNeitherLinksNorVersionControl)
{
    const TemporaryTree tree{file("a.jpg", 5000),
                             file("in/b.JPG", 100'000),
                             hardLink("again.png", "a.jpg"),
                             file("in/archive.tar.gz", 300'000),
                             link("in/shortcut.mp4", "../huge.bin"),
                             link("in/loop", "../in"),
                             file("no extension", 90'000),
                             file(".profile", 10),
                             fifo("pipe.png"),
                             socket("in/socket"),
                             file("project/.git/objects/pack.zip", 900'000),
                             file("project/.hg/store.zip", 900'000),
                             file("project/.svn/wc.db", 900'000),
                             file("project/main.cpp", 10),
                             file("module/.git", 30),
                             folder("empty"),
                             file(".gitignore/inner.md", 20)};
    const auto sum = [&tree](const std::vector<std::string>& paths) {
        std::int64_t bytes = 0;
        for (const std::string& path : paths) {
            bytes += allocated(tree.path(path));
        }
        return bytes;
    };
    const std::vector<CategorySize> expected{
        {FileKind::archive, sum({"in/archive.tar.gz"}), 1},
        {FileKind::image, sum({"a.jpg", "in/b.JPG", "again.png"}), 4},
        {FileKind::other, sum({"no extension", ".profile", "module/.git"}), 4},
        {FileKind::code, sum({"project/main.cpp"}), 1},
        {FileKind::document, sum({".gitignore/inner.md"}), 1}};
    std::int64_t total = 0;
    for (const CategorySize& category : expected) {
        total += category.totalBytes;
    }
    EXPECT_EQ(FolderAnalyzer::summarize(tree.url()).get(), (FolderSummary{expected, total, 11}));

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
