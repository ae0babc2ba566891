#include "Duplicates/DuplicateFinder.h"

#include "Duplicates/BatchDigester.h"
#include "FileSystem/Digest.h"
#include "FileSystem/FileAttributes.h"
#include "Support/AllRecords.h"
#include "Support/Cases.h"
#include "Support/Isolation.h"
#include "Support/ListWords.h"

#include <algorithm>
#include <gmock/gmock.h>
#include <regex>
#include <string_view>

namespace tallyroom {

namespace {

using DuplicateFinder::DuplicateProgress;
using DuplicateFinder::Phase;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

/// The paths of each group, relative to the tree: "a, d/b".
std::vector<std::string> names(const TemporaryTree& tree, const std::vector<DuplicateGroup>& groups)
{
    std::vector<std::string> result;
    for (const DuplicateGroup& group : groups) {
        std::string line;
        for (const std::string& path : below(tree, group.entries)) {
            line += (line.empty() ? "" : ", ") + path;
        }
        result.push_back(line);
    }
    return result;
}

std::vector<DuplicateGroup> groupsIn(const TemporaryTree& tree, std::int64_t minimumSize = 1)
{
    return DuplicateFinder::find(tree.url(), minimumSize).get();
}

using OnProgress = std::function<void(DuplicateProgress)>;

DuplicateFinder::Result compute(
    const TemporaryTree& tree, DuplicateFinder::Limits limits,
    const OnProgress& onProgress = [](const DuplicateProgress&) {})
{
    return DuplicateFinder::computeGroups(tree.url(), 1, limits, {}, onProgress);
}

/// Content of a size with one byte of its own.
std::string content(std::int64_t size, std::int64_t at = 0, char byte = 'x')
{
    std::string bytes(static_cast<std::size_t>(size), 'x');
    bytes[static_cast<std::size_t>(at)] = byte;
    return bytes;
}

constexpr std::int64_t span = 64_KiB;

TEST(DuplicateFinder, EachSizeIsSettledByTheStageThatHasSeenEveryByte)
{
    for (const auto& row : cases("which stage settles which size")) {
        const std::int64_t size = std::stoll(row[0]);
        SCOPED_TRACE(size);
        TemporaryTree tree{file("a", content(size)), file("d/b", content(size))};
        // One that differs in each place that a stage might forget.
        for (const std::int64_t at : {std::int64_t{0}, size / 2, span - 1, span, size - span, size - 1}) {
            if (at >= 0 && at < size) {
                tree.add(file("other" + std::to_string(at), content(size, at, 'y')));
            }
        }
        const auto groups = groupsIn(tree);
        ASSERT_THAT(names(tree, groups), ElementsAre("a, d/b"));
        EXPECT_THAT(groups[0].id, StartsWith(row[1] + ":" + row[0] + "|"));
        EXPECT_EQ(groups[0].wastedBytes(), size);
        EXPECT_EQ(groups[0].entries[1], (Entry{tree.url("d/b"), "b", size, false, {}}));
    }
}

TEST(DuplicateFinder, HardLinksAreCopiesThatFreeNothing)
{
    const TemporaryTree tree{file("a", content(5000)),  hardLink("b", "a"),        file("c", content(5000)),
                             file("only", "alone"),     hardLink("only2", "only"), sparseFile("holes1", 3000),
                             sparseFile("holes2", 3000)};
    const auto groups = groupsIn(tree);
    ASSERT_THAT(names(tree, groups), ElementsAre("a, b, c", "holes1, holes2", "only, only2"));
    EXPECT_EQ(groups[0].wastedBytes(), 10'000);
    EXPECT_EQ(groups[0].reclaimableBytes(), 5000);
    EXPECT_TRUE(groups[0].identities[0].isSameFile(groups[0].identities[1]));
    EXPECT_FALSE(groups[0].identities[0].isSameFile(groups[0].identities[2]));
    EXPECT_EQ(groups[2].reclaimableBytes(), 0);
    const auto shortened = groups[0].without({true, false, false});
    EXPECT_THAT(below(tree, shortened.entries), ElementsAre("b", "c"));
    EXPECT_EQ(shortened.identities, (std::vector{groups[0].identities[1], groups[0].identities[2]}));
    EXPECT_EQ(groups[0].freedBytes({true, false, false}), 0); // "b" still leads there
    EXPECT_EQ(groups[0].freedBytes({true, true, false}), 5000);
    EXPECT_EQ(groups[0].freedBytes({true, true, true}), 10'000);

    TemporaryTree many;
    for (int i = 100; i < 120; ++i) {
        const std::string name = "f" + std::to_string(i);
        many.add(i % 2 == 0 ? file(name, "many") : hardLink(name, "f" + std::to_string(i - 1)));
    }
    const auto large = groupsIn(many);
    ASSERT_THAT(large, SizeIs(1));
    EXPECT_EQ(large[0].reclaimableBytes(), 9 * 4);
    std::vector<bool> gone(20, false);
    gone[0] = gone[1] = gone[2] = true;
    EXPECT_EQ(large[0].freedBytes(gone), 4);
}

TEST(DuplicateFinder, EqualBeginningsOfFilesOfDifferentSizesAreNotAlike)
{
    const TemporaryTree tree{file("a1", content(2 * span)), file("a2", content(2 * span)),
                             file("b1", content(2 * span + 1)), file("b2", content(2 * span + 1))};
    EXPECT_THAT(names(tree, groupsIn(tree)), ElementsAre("b1, b2", "a1, a2"));
}

TEST(DuplicateFinder, FilesOfExbibytesDoNotEndTheProcess)
{
    TemporaryTree tree{folder("volume")};
    const auto volume = TemporaryMount::memory(tree.path("volume"));
    SKIP_UNLESS_MOUNTED(volume);
    constexpr std::int64_t exbibyte = 1'048'576_MiB * 1'048'576;
    tree.add({sparseFile("volume/a", 7 * exbibyte), sparseFile("volume/b", 7 * exbibyte)});
    auto stream = DuplicateFinder::stream(tree.url("volume"), 1);
    std::optional<DuplicateProgress> record;
    do {
        record = stream.next();
        ASSERT_TRUE(record.has_value());
    } while (record->hashedBytes <= 4 * span); // in the whole files
    EXPECT_GE(record->bytesToHash, 7 * exbibyte);
    EXPECT_LT(record->hashedBytes, record->bytesToHash);
}

TEST(DuplicateFinder, LimitsEndTheWalkAndSaySo)
{
    TemporaryTree tree{link("link", "f0"), folder("folder")};
    constexpr std::int64_t count = 10;
    for (std::int64_t i = 0; i < count; ++i) {
        tree.add(file("f" + std::to_string(i), "same"));
    }
    for (const auto& [tracked, visited, taken] : std::vector<std::array<std::int64_t, 3>>{
             {10, 11, 10}, {9, 100, 9}, {0, 100, 0}, {-3, 100, 0}, {100, 10, 9}, {100, 0, 0}, {100, -1, 0}}) {
        const auto result = compute(tree, {tracked, visited});
        EXPECT_EQ(result.groups.empty() ? 0 : std::ssize(result.groups[0].entries), taken);
        EXPECT_EQ(result.truncated, taken < count) << tracked << ", " << visited;
    }
    std::int64_t visited = -1;
    static_cast<void>(
        compute(tree, {100, 4}, [&](const DuplicateProgress& record) { visited = record.scanned; }));
    EXPECT_EQ(visited, 4);
}

TEST(DuplicateFinder, TheStreamCountsEveryFourThousandAndEndsWithTheGroups)
{
    TemporaryTree tree{file("a/1", content(200'000)), file("a/2", content(200'000))};
    tree.addEmptyFiles("a", "empty", 8300);
    const auto records = allRecords(DuplicateFinder::stream(tree.url(), 1));
    ASSERT_GE(records.size(), 6U);
    EXPECT_EQ(records[0].scanned, 4096);
    EXPECT_EQ(records[1].scanned, 8192);
    EXPECT_EQ(records[1].phase, Phase::scanning);
    const DuplicateProgress& last = records.back();
    EXPECT_EQ(last.phase, Phase::done);
    EXPECT_EQ(last.scanned, 8302);
    EXPECT_THAT(names(tree, last.groups), ElementsAre("a/1, a/2"));
    EXPECT_EQ(last.bytesToHash, 2 * (2 * span + 200'000));
    EXPECT_EQ(last.hashedBytes, last.bytesToHash);
    EXPECT_TRUE(std::ranges::is_sorted(records, {}, &DuplicateProgress::hashedBytes));
    EXPECT_TRUE(std::ranges::all_of(
        records, [](const DuplicateProgress& record) { return record.hashedBytes <= record.bytesToHash; }));
}

TEST(DuplicateFinder, AFileDropsOutInAnyStageWhenItsContentMayBeAnotherOne)
{
    for (const auto& row : cases("what happens to a file between two stages")) {
        const bool isHarmless = row[0] == "harmless";
        for (const auto& [size, digested] : {std::pair{3 * span, std::int64_t{0}},
                                             {3 * span, 4 * span},
                                             {3 * span, 8 * span},
                                             {2 * span, 4 * span}}) {
            SCOPED_TRACE(row[1] + " after " + std::to_string(digested));
            TemporaryTree tree{file("a", content(size)), file("b", content(size)),
                               file("victim", content(size)), file("c", content(size))};
            bool isDisturbed = false;
            const auto result = compute(tree, {}, [&](const DuplicateProgress& record) {
                if (record.phase == Phase::hashing && record.hashedBytes == digested && !isDisturbed) {
                    isDisturbed = true;
                    change(tree, std::regex_replace(row[2], std::regex{"MIDDLE"},
                                                    std::to_string(size == 2 * span ? 1 : size / 2)));
                }
            });
            EXPECT_TRUE(isDisturbed);
            ASSERT_THAT(names(tree, result.groups), ElementsAre(isHarmless ? "a, b, c, victim" : "a, b, c"));
            const DuplicateGroup& group = result.groups[0];
            for (std::size_t i = 0; i < group.entries.size(); ++i) {
                EXPECT_EQ(group.identities[i], FileIdentity::of(*fileAttributes(group.entries[i].url)));
            }
        }
    }
}

TEST(DuplicateFinder, OfSeveralWaysToAFileTheOnesThatAreLeftCount)
{
    for (const auto& [gone, left] : {std::pair{"a1", "a2"}, {"a2", "a1"}}) {
        const TemporaryTree tree{file("a1", "same"), hardLink("a2", "a1"), file("b", "same"),
                                 file("c1", "pair"), hardLink("c2", "c1"), file("d1", "gone"),
                                 file("d2", "gone")};
        bool isFirst = true;
        const auto result = compute(tree, {}, [&, name = gone](const DuplicateProgress&) {
            for (const char* const one : {name, "c2", "d1", "d2"}) {
                isFirst ? tree.remove(one) : void();
            }
            isFirst = false;
        });
        EXPECT_THAT(names(tree, result.groups), ElementsAre(left + std::string{", b"}));
    }
}

TEST(DuplicateFinder, AFileThatMayNotBeReadIsLeftOut)
{
    const int outcome = asUnprivilegedUser([] {
        const TemporaryTree tree{file("a", "same"), file("b", "same"), file("secret", "same").withMode(0)};
        return names(tree, groupsIn(tree)) == std::vector<std::string>{"a, b"} ? 0 : 1;
    });
    EXPECT_EQ(outcome, 0);
}

TEST(DuplicateFinder, LongSearchesHoldUpNoShortOneAndStopAmidAFile)
{
    // Holes are digested at the speed of the processor: a minute's work at the least.
    const TemporaryTree huge{sparseFile("huge1", 100'000_MiB), sparseFile("huge2", 100'000_MiB)};
    std::vector<ProgressStream<DuplicateProgress>> longOnes;
    for (int i = 0; i < 5; ++i) {
        longOnes.push_back(DuplicateFinder::stream(huge.url(), 1));
        while (longOnes.back().next()->hashedBytes <= 4 * span) { // in the whole files
        }
    }
    TemporaryTree tree;
    for (int i = 0; i < 300; ++i) {
        tree.add(file("d" + std::to_string(i % 17) + "/f" + std::to_string(i), content(100 + i % 50)));
    }
    const auto expected = groupsIn(tree);
    ASSERT_THAT(expected, SizeIs(50));
    std::vector<std::future<std::vector<DuplicateGroup>>> searches;
    for (int i = 0; i < 8; ++i) {
        searches.push_back(DuplicateFinder::find(tree.url(), 1));
        auto dropped = DuplicateFinder::stream(tree.url(), 1);
        if (i % 2 == 0) {
            static_cast<void>(dropped.next());
        }
    }
    for (auto& search : searches) {
        EXPECT_EQ(search.get(), expected);
    }
    for (auto& stream : longOnes) {
        stream.cancel();
        while (const auto record = stream.next()) {
            EXPECT_LT(record->hashedBytes, record->bytesToHash);
            EXPECT_NE(record->phase, Phase::done);
        }
    }
}

std::span<const std::byte> bytesOf(std::string_view text)
{
    return std::as_bytes(std::span{text});
}

TEST(BatchDigester, FilesThatDifferLateShareNoDigest)
{
    constexpr std::int64_t size = 2'500'000; // more than a chunk
    const TemporaryTree tree{file("0", content(size)), file("1", content(size, size - 1, 'y')),
                             file("2", content(size))};
    const auto open = [&tree](std::size_t index) {
        const FileUrl url = tree.url(std::to_string(index));
        auto opened = StableFile::open(url, size, fileAttributes(url)->modifiedAt);
        return opened ? std::optional{std::move(*opened)} : std::nullopt;
    };
    std::atomic<std::int64_t> readBytes = 0;
    const auto digests = BatchDigester{}.digest(3, {0, size}, open, {}, readBytes);
    EXPECT_EQ(digests[0], digests[2]);
    EXPECT_NE(digests[0], digests[1]);
}

TEST(BatchDigester, WhatChangesWhileItIsReadIsReadAgain)
{
    for (const FileSpan part : {FileSpan{0, 2'500'000}, FileSpan{0, 50'000}}) {
        const std::string content(2'500'000, 'x');
        const TemporaryTree tree{file("0", content), file("1", content)};
        int changes = 0;
        const auto open = [&](std::size_t index) -> std::optional<StableFile> {
            const std::string name = std::to_string(index);
            const FileUrl url = tree.url(name);
            auto opened = StableFile::open(url, 2'500'000, fileAttributes(url)->modifiedAt);
            if (index == 1 && changes > 0) {
                --changes;
                tree.keepingItsTime(name, [&] { tree.overwrite(name, std::to_string(changes % 10), 1); });
            }
            return opened ? std::optional{std::move(*opened)} : std::nullopt;
        };
        BatchDigester digester;
        std::atomic<std::int64_t> readBytes = 0;
        Digester alone;
        const auto digestOf = [&](char second) {
            std::string now = content.substr(0, static_cast<std::size_t>(part.length));
            now[1] = second;
            return std::optional{alone.digest(bytesOf(now))};
        };
        changes = 1;
        EXPECT_THAT(digester.digest(2, part, open, {}, readBytes), ElementsAre(digestOf('x'), digestOf('0')));
        changes = 100;
        EXPECT_THAT(digester.digest(2, part, open, {}, readBytes), ElementsAre(digestOf('x'), std::nullopt));
    }
}

} // namespace

} // namespace tallyroom
