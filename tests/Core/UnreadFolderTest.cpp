#include "Duplicates/DuplicateFinder.h"
#include "Kinds/FolderAnalyzer.h"
#include "Scanning/FileScanner.h"
#include "Support/AllRecords.h"
#include "Support/TemporaryTree.h"

#include <cerrno>
#include <gtest/gtest.h>

namespace tallyroom {

namespace {

TEST(UnreadFolder, IsNotTakenForAnEmptyOneByAnyScan)
{
    const TemporaryTree tree{folder("empty"), file("file", 5000)};
    const auto ends = [](const FileUrl& url) {
        return std::vector{allRecords(FileScanner::directEntriesStream(url, false)).back().unread,
                           allRecords(FileScanner::findNodeModulesStream(url)).back().unread,
                           allRecords(FileScanner::findLargestFilesStream(url, 5)).back().unread,
                           allRecords(DuplicateFinder::stream(url, 1)).back().unread,
                           allRecords(FolderAnalyzer::stream(url)).back().unread};
    };
    using Ends = std::vector<std::optional<SystemError>>;
    EXPECT_EQ(ends(tree.url("empty")), Ends(5));
    EXPECT_EQ(ends(tree.url("missing")), Ends(5, SystemError{ENOENT}));
    EXPECT_EQ(ends(tree.url("file")), Ends(5, SystemError{ENOTDIR}));
}

} // namespace

} // namespace tallyroom
