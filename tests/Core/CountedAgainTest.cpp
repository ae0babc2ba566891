#include "Scanning/FileScanner.h"
#include "Support/AllRecords.h"
#include "Support/TemporaryTree.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <sys/stat.h>

namespace tallyroom {

namespace {

/// What the names below a folder add to its files, by the disk itself; `children` gets each child's part.
std::int64_t addedByNames(const std::string& folder, std::map<FileUrl, std::int64_t>& children)
{
    std::map<ino_t, std::string> owners; // the first child by name
    std::map<std::string, std::map<ino_t, std::int64_t>> names;
    std::map<ino_t, std::int64_t> sizes;
    for (const auto& item : std::filesystem::recursive_directory_iterator{folder}) {
        struct stat status = {};
        ::lstat(item.path().c_str(), &status);
        if (!item.is_directory()) {
            const std::string child = *std::filesystem::relative(item.path(), folder).begin();
            const auto owner = owners.try_emplace(status.st_ino, child).first;
            owner->second = std::min(owner->second, child);
            ++names[child][status.st_ino];
            sizes[status.st_ino] = status.st_blocks * 512;
        }
    }
    std::int64_t total = 0;
    for (const auto& [child, files] : names) {
        std::int64_t added = 0;
        for (const auto& [inode, count] : files) {
            added += sizes[inode] * (count - (owners[inode] == child ? 1 : 0));
        }
        if (added > 0) {
            children[FileUrl{folder}.appending(child)] = added;
        }
        total += added;
    }
    return total;
}

TEST(CountedAgain, IsWhatFurtherNamesAddInEachFolderFromTheCacheToo)
{
    TemporaryTree tree{file("a/one", 40'000), file("a/in/x", 9000), file("alone", 5000),
                       file("d/three", 12'000), folder("empty")};
    const std::vector<std::pair<std::string, std::string>> links{
        {"a/two", "a/one"},       {"b/x", "a/in/x"},          {"b/y", "a/in/x"}, {"c", "a/in/x"},
        {"d/e/three", "d/three"}, {"f/g/h/three", "d/three"}, {"0", "alone"}};
    for (const auto& [path, existing] : links) {
        tree.add(hardLink(path, existing));
    }
    FileScanner::clearCache();
    for (const std::string path : {"", "a", "a/in", "b", "d", "d/e", "f", "f/g", "empty"}) {
        std::map<FileUrl, std::int64_t> children;
        const std::int64_t bytes = addedByNames(tree.path(path), children);
        for (const bool useCache : {false, true}) {
            const ScanProgress last =
                allRecords(FileScanner::directEntriesStream(tree.url(path), useCache)).back();
            const CountedAgain again = last.countedAgain == nullptr ? CountedAgain{} : *last.countedAgain;
            EXPECT_EQ(again.bytes, bytes) << path;
            if (path.empty()) { // others take children from the store
                EXPECT_EQ(again.children, children);
            }
        }
    }
}

} // namespace

} // namespace tallyroom
