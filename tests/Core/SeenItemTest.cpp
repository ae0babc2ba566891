#include "FileSystem/ScanRoots.h"
#include "Removal/FileRemover.h"
#include "Scanning/FileScanner.h"
#include "Support/Cases.h"
#include "Support/Interception.h"
#include "Support/Isolation.h"
#include "Support/ListWords.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <iterator>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <optional>
#include <stop_token>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <thread>
#include <tuple>
#include <unistd.h>

namespace tallyroom {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

const std::string changedSinceTheScan = ": Cet élément a changé depuis l'analyse.";

/// Answers openat2(2) of this thread, and of those it starts, as an old kernel does; false where that cannot
/// be had.
bool refuseOpenat2InThisThread()
{
    std::array<sock_filter, 4> steps{{
        {BPF_LD | BPF_W | BPF_ABS, 0, 0, offsetof(seccomp_data, nr)},
        {BPF_JMP | BPF_JEQ | BPF_K, 0, 1, SYS_openat2},
        {BPF_RET | BPF_K, 0, 0, SECCOMP_RET_ERRNO | ENOSYS},
        {BPF_RET | BPF_K, 0, 0, SECCOMP_RET_ALLOW},
    }};
    const sock_fprog program{steps.size(), steps.data()};
    return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

/// Entries as scans tell them, removed some time later.
class SeenItemTest : public testing::Test {
protected:
    /// The child of `folder` that a listing tells.
    Entry listed(const std::string& folder, const std::string& name) const
    {
        FileScanner::clearCache();
        for (const Entry& entry : FileScanner::directEntries(tree.url(folder), false).get()) {
            if (entry.name == name) {
                return entry;
            }
        }
        ADD_FAILURE() << name << " is not listed";
        return {};
    }

    /// The folders of a name that a search tells.
    std::vector<Entry> found(const std::string& name, const std::string& folder) const
    {
        return FileScanner::findDirectories({name}, tree.url(folder)).get().toVector();
    }

    std::vector<std::string> failures(const std::vector<Entry>& entries, bool permanently) const
    {
        return told(tree, FileRemover::remove(entries, permanently, {}).failures);
    }

    TemporaryTree tree{file("home/me/Documents/thesis", "t"), folder("data")};
    ScopedVariable home{"HOME", tree.path("home/me")};
    ScopedVariable dataHome{"XDG_DATA_HOME", tree.path("data")};
};

TEST_F(SeenItemTest, ASecondLookComesWhenAnItemIsAwayAndCanStillComeBack)
{
    for (const auto& row : cases("second looks at what is about to go")) {
        const bool permanent = row[0] == "for good";
        tree.add({file("work/a", "a"), file("work/b", "b")});
        std::vector<std::string> seen;
        FileRemover::BatchOptions options;
        const auto look = [&]() -> std::optional<std::string> {
            seen = tree.names("work");
            if (row[2] == "taken") {
                tree.add(file("work/a", "another"));
            }
            return row[1] == "refuses" ? std::optional<std::string>{"Non."} : std::nullopt;
        };
        options.screening = [&](const auto&, const auto&) { return FileRemover::Screened{{}, look}; };
        const auto result = FileRemover::remove(std::vector{listed("work", "a")}, permanent, options);
        EXPECT_THAT(seen, SizeIs(permanent ? 2 : 1));
        EXPECT_TRUE(!permanent || seen[0].starts_with(".tallyroom-"));
        std::string told = result.failures.empty() ? "" : result.failures[0].message + " ";
        told += std::to_string(result.trashed.size());
        for (const std::string& name : tree.names("work")) {
            told.append(" ").append(name).append("=").append(tree.content("work/" + name));
        }
        for (std::size_t at = 0; permanent && (at = told.find(seen[0])) != std::string::npos;) {
            told.replace(at, seen[0].size(), "ASIDE");
        }
        EXPECT_EQ(told, row[3]) << row[0];
        std::ignore = FileRemover::deletePermanently(tree.url("work"));
    }
}

TEST_F(SeenItemTest, WhatAnyScanFoundGoesAndNothingBesideIt)
{
    const std::string far = "far/" + chain(std::string(200, 'd'), 30);
    for (const bool permanently : {false, true}) {
        tree.add({
            file("work/a", 10_KiB),
            file("work/kept", "k"),
            file("work/b/inner", 8_KiB),
            link("work/c", "b"),
            fifo("work/d"),
            file("p/node_modules/x/y", "y"),
            file("q/node_modules/z", "z"),
            file(far + "/long", 64_KiB),
        });
        tree.add(link(permanently ? "way" : "route", "work"));
        std::vector<Entry> entries{listed("work", "a"), listed(permanently ? "way" : "route", "b"),
                                   listed("work/", "c"), listed("work/.", "d")};
        for (const EntryList& found : {FileScanner::findNodeModules(tree.url("p")).get(),
                                       FileScanner::findNodeModules(tree.url("q/node_modules")).get(),
                                       FileScanner::findLargestFiles(tree.url("far"), 1).get()}) {
            std::ranges::copy(found, std::back_inserter(entries));
        }
        ASSERT_THAT(entries, SizeIs(7));
        tree.add({file("work/b/later", "b"), file("p/node_modules/later", "l")}); // a folder may be filled
        tree.add(file("work/a", "a"));                                            // and a file written to
        const auto result = FileRemover::remove(entries, permanently, {});
        EXPECT_THAT(result.failures, IsEmpty()) << result.failures.front().message;
        EXPECT_THAT(result.trashed, SizeIs(permanently ? 0 : 7));
        EXPECT_THAT(tree.names("work"), ElementsAre("kept"));
        EXPECT_THAT(tree.names("p"), IsEmpty());
        EXPECT_THAT(tree.names("q"), IsEmpty());
        EXPECT_THAT(tree.names(far), IsEmpty());
    }
}

TEST_F(SeenItemTest, WhatHasTakenItsPlaceStays)
{
    for (const auto& row : cases("what takes the place of shared/proj/Documents")) {
        for (const bool permanently : {false, true}) {
            const std::string& precious = row[2];
            SCOPED_TRACE(row[0]);
            tree.add({file("shared/proj/Documents/thesis", "draft"), file("mine/Documents/thesis", "t")});
            const std::vector<Entry> entries = found("Documents", "shared");
            change(tree, row[1]);
            const std::string before = tree.content(precious);
            EXPECT_FALSE(before.empty());
            EXPECT_THAT(failures(entries, permanently),
                        ElementsAre("shared/proj/Documents" + changedSinceTheScan));
            EXPECT_EQ(tree.content(precious), before);
            EXPECT_THAT(tree.names("data/Trash/files"), IsEmpty());
            std::ignore =
                FileRemover::remove(std::vector{tree.url("shared"), tree.url("mine"), tree.url("aside"),
                                                tree.url("lure"), tree.url("data/Trash")},
                                    true);
        }
    }
    EXPECT_THAT(failures({Entry{tree.url("data"), "data", 0, true}}, true),
                ElementsAre("data" + changedSinceTheScan))
        << "no scan saw it";
}

TEST_F(SeenItemTest, AnotherVolumeAtThePlaceStays)
{
    tree.add({folder("media/stick"), folder("held")});
    for (const std::string scanned : {"media/stick", "media"}) {
        std::vector<Entry> photos;
        {
            const auto first = TemporaryMount::memory(tree.path("media/stick"));
            SKIP_UNLESS_MOUNTED(first);
            tree.add(file("media/stick/DCIM/1.jpg", "first"));
            photos = found("DCIM", scanned);
            ASSERT_THAT(photos, SizeIs(1));
        }
        const auto second = TemporaryMount::memory(tree.path("media/stick"));
        tree.add(file("media/stick/DCIM/1.jpg", "second"));
        for (const bool permanently : {false, true}) {
            EXPECT_THAT(failures(photos, permanently), ElementsAre("media/stick/DCIM" + changedSinceTheScan));
            EXPECT_EQ(tree.content("media/stick/DCIM/1.jpg"), "second");
        }
    }
}

TEST_F(SeenItemTest, WhatComesIntoItsPlaceAtTheLastMomentIsPutBack)
{
    using Kind = InterceptedCall::Kind;

    for (const auto& [kind, permanently, which] : std::vector<std::tuple<Kind, bool, int>>{
             {Kind::rename, false, 1}, // the first call of the kind, or a later one
             {Kind::statx, false, 1},
             {Kind::statx, false, 2},
             {Kind::statx, true, 1},
             {Kind::statx, true, 2}}) {
        tree.add({file("work/doc/text", "old"), file("work/other/text", "precious")});
        const std::vector entries{listed("work", "doc")};
        int seen = 0;
        {
            const auto intruder = Interception::at(kind, "doc", [&, which = which] {
                if (++seen == which) {
                    tree.exchange("work/doc", "work/other");
                }
            });
            EXPECT_THAT(failures(entries, permanently), ElementsAre("work/doc" + changedSinceTheScan));
        }
        EXPECT_EQ(tree.content("work/doc/text"), "precious");
        EXPECT_EQ(tree.content("work/other/text"), "old");
        EXPECT_THAT(tree.names("data/Trash/files"), IsEmpty());
        EXPECT_THAT(tree.names("data/Trash/info"), IsEmpty());
        std::ignore = FileRemover::deletePermanently(tree.url("work"));
    }
    tree.add({file("work/doc", "mine"), file("data/stranger", "stranger")});
    const auto trashed = FileRemover::remove(std::vector{listed("work", "doc")}, false, {}).trashed;
    ASSERT_THAT(trashed, SizeIs(1));
    {
        const auto intruder = Interception::at(Kind::rename, "doc", [&] {
            if (tree.content("data/Trash/files/doc") == "mine") {
                tree.exchange("data/Trash/files/doc", "data/stranger");
            }
        });
        EXPECT_THAT(FileRemover::restore(trashed).removed, IsEmpty());
    }
    EXPECT_THAT(tree.names("work"), IsEmpty());
    EXPECT_EQ(tree.content("data/Trash/files/doc"), "stranger");
}

TEST_F(SeenItemTest, AStopLeavesTheRestAndSaysWhatWent)
{
    for (int number = 0; number < 600; ++number) {
        tree.add(file("work/large/" + std::to_string(number), 4_KiB));
    }
    tree.add({file("work/first", "1"), file("work/last", "l")});
    const std::vector entries{listed("work", "first"), listed("work", "large"), listed("work", "last")};
    std::stop_source stop;
    std::optional<Interception> person;
    int gone = 0;
    person.emplace([&](const InterceptedCall& call) {
        if (call.kind == InterceptedCall::Kind::unlink && ++gone == 101) {
            stop.request_stop();
        }
        return 0;
    });
    const auto result =
        FileRemover::remove(entries, true, {.progress = {}, .stop = stop.get_token(), .screening = {}});
    person.reset();
    EXPECT_THAT(result.removed, ElementsAre(tree.url("work/first")));
    EXPECT_THAT(told(tree, result.failures),
                ElementsAre("work/large: Suppression arrêtée, en partie supprimé."));
    EXPECT_EQ(result.failures.front().freedBytes, 400_KiB);
    EXPECT_THAT(tree.names("work/large"), SizeIs(500));
    EXPECT_TRUE(tree.exists("work/last"));

    tree.add(file("work/first", "1"));
    const auto trashed =
        FileRemover::remove(std::vector{listed("work", "first"), listed("work", "last")}, false, {}).trashed;
    std::stop_source second;
    const auto restored =
        FileRemover::restore(trashed, {.progress = [&](std::size_t, std::size_t) { second.request_stop(); },
                                       .stop = second.get_token(),
                                       .screening = {}});
    EXPECT_THAT(restored.removed, ElementsAre(tree.url("work/first")));
    EXPECT_THAT(restored.failures, IsEmpty());
}

TEST_F(SeenItemTest, AKernelThatGrantsNoOpenat2RemovesTheSameAndNoMore)
{
    tree.add({file("work/a/b/c/doc/text", "x"), file("work/a/b/other/text", "x")});
    auto entries = found("doc", "work");
    std::ranges::move(found("other", "work"), std::back_inserter(entries));
    ASSERT_THAT(entries, SizeIs(2));
    tree.rename("work/a/b/c", "work/a/b/d");
    tree.add(link("work/a/b/c", "d"));
    std::jthread{[&] {
        if (!refuseOpenat2InThisThread()) {
            return;
        }
        EXPECT_THAT(failures(entries, true), ElementsAre("work/a/b/c/doc" + changedSinceTheScan));
        EXPECT_THAT(tree.names("work/a/b/other"), IsEmpty());
    }}.join();
    EXPECT_EQ(tree.content("work/a/b/d/doc/text"), "x");
}

/// Where a file system makes up its inode numbers, size and date of a file stand for them.
TEST(VolumeMarks, TellItemsApartWhereInodeNumbersDoNotLast)
{
    const auto marks = [](const std::string& type, const std::string& source) {
        return VolumeMarks{std::vector<Mount>{{1, 0, 7, "/", "/stick", type, source, {}}}};
    };
    FileAttributes file;
    file.type = EntryType::file;
    file.device = 7;
    file.inode = 10;
    file.mount = 1;
    file.logicalBytes = 100;
    file.modifiedAt = Timestamp{std::chrono::seconds{1000}};
    const auto with = [](FileAttributes attributes, auto field, auto value) {
        attributes.*field = value;
        return attributes;
    };
    const FileAttributes renumbered = with(file, &FileAttributes::inode, std::uint64_t{11});
    const FileAttributes rewritten =
        with(file, &FileAttributes::modifiedAt, Timestamp{std::chrono::seconds{1001}});
    const FileAttributes grown = with(file, &FileAttributes::logicalBytes, 101);
    const FileAttributes folder = with(file, &FileAttributes::type, EntryType::folder);
    const FileAttributes filled = with(rewritten, &FileAttributes::type, EntryType::folder);
    for (const std::string type : {"vfat", "exfat", "fuse.sshfs", "cifs", "ext4", "btrfs"}) {
        SCOPED_TRACE(type);
        const bool lasts = type == "ext4" || type == "btrfs";
        const VolumeMarks volume = marks(type, "/dev/sdb1");
        const auto isSame = [&volume](const FileAttributes& one, const FileAttributes& other) {
            return volume.identify(one).isSameItem(volume.identify(other));
        };
        EXPECT_EQ(isSame(file, renumbered), !lasts);
        EXPECT_EQ(isSame(file, rewritten), lasts);
        EXPECT_EQ(isSame(file, grown), lasts);
        EXPECT_TRUE(isSame(folder, filled));
        EXPECT_FALSE(volume.identify(folder).isSameItem(marks(type, "/dev/sdc1").identify(folder)));
    }
}

} // namespace

} // namespace tallyroom
