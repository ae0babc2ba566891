#include "Duplicates/DuplicateRemovalCheck.h"

#include "Duplicates/DuplicateFinder.h"
#include "Removal/FileRemover.h"
#include "Support/Cases.h"
#include "Support/Isolation.h"
#include "Support/ListWords.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <iterator>
#include <sstream>
#include <sys/mman.h>
#include <sys/mount.h>
#include <thread>
#include <unistd.h>

namespace tallyroom {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* gone = "ce fichier n'existe plus";
constexpr const char* changed = "ce fichier a changé depuis l'analyse";
constexpr const char* noCopy = "la copie à garder a changé ou n'existe plus";
constexpr const char* hardLinked = "c'est le même fichier que la seule copie gardée (lien physique)";
constexpr const char* otherPath = "c'est le même fichier qu'une copie gardée, atteint par un autre chemin";

std::shared_ptr<const std::vector<DuplicateGroup>> duplicatesIn(const TemporaryTree& tree)
{
    return std::make_shared<const std::vector<DuplicateGroup>>(DuplicateFinder::find(tree.url(), 1).get());
}

using Groups = decltype(duplicatesIn(std::declval<const TemporaryTree&>()));
using Names = std::vector<std::string>;

std::unordered_set<FileUrl> urlsOf(const TemporaryTree& tree, const Names& names)
{
    std::unordered_set<FileUrl> urls;
    for (const std::string& name : names) {
        urls.insert(tree.url(name));
    }
    return urls;
}

/// Removes `victims`, and tells "name: reason" of those that stayed.
Names removeIn(const TemporaryTree& tree, const Groups& groups, const Names& victims,
               FileRemover::BatchOptions options = {}, bool permanently = true)
{
    const std::unordered_set<FileUrl> urls = urlsOf(tree, victims);
    std::vector<Entry> entries;
    for (const DuplicateGroup& group : *groups) {
        std::ranges::copy_if(group.entries, std::back_inserter(entries),
                             [&urls](const Entry& entry) { return urls.contains(entry.url); });
    }
    options.screening = DuplicateRemovalCheck::forGroups(groups, urls);
    return told(tree, FileRemover::remove(entries, permanently, options).failures);
}

/// Writes another byte through memory: on a tmpfs this moves no time at all.
void rewriteInMemory(const std::string& path, std::size_t offset, std::size_t size)
{
    const FileDescriptor file{::open(path.c_str(), O_RDWR | O_CLOEXEC)};
    void* const memory = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, file.get(), 0);
    ASSERT_NE(memory, MAP_FAILED);
    static_cast<char*>(memory)[offset] = '?';
    ::munmap(memory, size);
}

Names wordsIn(const std::string& text)
{
    std::istringstream words{text};
    return {std::istream_iterator<std::string>{words}, {}};
}

TEST(DuplicateRemovalCheck, OnlyWhatIsACopyOfAFileThatStaysIsRemoved)
{
    for (const auto& row : cases("what happens to copies before they go")) {
        SCOPED_TRACE(row[0]);
        TemporaryTree tree;
        for (const char* const name : {"a", "b", "c", "d/d"}) {
            tree.add(file(name, "same").modifiedAt(1'500'000'000));
        }
        const auto groups = duplicatesIn(tree);
        change(tree, row[1]);
        const Names victims = wordsIn(row[2]);
        const Names refused = wordsIn(row[3]);
        Names expected;
        for (const std::string& name : refused) {
            expected.push_back(name + ": " + row.at(4));
        }
        EXPECT_EQ(removeIn(tree, groups, victims), expected);
        for (const std::string& victim : victims) {
            EXPECT_TRUE(std::ranges::count(refused, victim) > 0 || !tree.exists(victim)) << victim;
        }
    }
}

TEST(DuplicateRemovalCheck, EachGroupIsLookedAtRightBeforeItGoes)
{
    TemporaryTree tree{folder("volume")};
    const auto volume = TemporaryMount::memory(tree.path("volume"));
    SKIP_UNLESS_MOUNTED(volume);
    constexpr std::size_t size = 200'000; // all three digests
    tree.add({file("volume/1a", static_cast<std::int64_t>(size) * 2),
              file("volume/1b", static_cast<std::int64_t>(size) * 2),
              file("volume/2a", static_cast<std::int64_t>(size)),
              file("volume/2b", static_cast<std::int64_t>(size)), file("volume/3a", "same"),
              file("volume/3b", "same")});
    const auto groups = duplicatesIn(tree);
    ASSERT_EQ(groups->size(), 3U);
    FileRemover::BatchOptions options;
    options.progress = [&tree](std::size_t completed, std::size_t) {
        if (completed == 1) { // the others have not had their turn yet
            rewriteInMemory(tree.path("volume/2a"), size / 2, size);
            rewriteInMemory(tree.path("volume/3b"), 2, 4);
        }
    };
    EXPECT_THAT(removeIn(tree, groups, {"volume/1b", "volume/2b", "volume/3b"}, options),
                ElementsAre(std::string{"volume/2b: "} + noCopy, std::string{"volume/3b: "} + changed));
    EXPECT_THAT(tree.names("volume"), ElementsAre("1a", "2a", "2b", "3a", "3b"));
}

TEST(DuplicateRemovalCheck, AStopAmidAComparisonLeavesTheFileUnjudged)
{
    constexpr std::int64_t minutes = 10'000'000_MiB; // of reading
    const TemporaryTree tree{sparseFile("a", 1_MiB), sparseFile("b", 1_MiB)};
    auto found = *duplicatesIn(tree);
    for (std::size_t copy = 0; copy < 2; ++copy) {
        const std::string path = tree.path(copy == 0 ? "a" : "b");
        if (::truncate(path.c_str(), minutes) != 0) {
            GTEST_SKIP() << "files of this size are not to be had here";
        }
        found[0].entries[copy].sizeBytes = minutes;
        found[0].identities[copy] = FileIdentity::of(*fileAttributes(FileUrl{path}));
    }
    std::stop_source stop;
    const auto screening = DuplicateRemovalCheck::forGroups(
        std::make_shared<const std::vector<DuplicateGroup>>(found), {tree.url("b")});
    FileRemover::BatchOptions options;
    options.stop = stop.get_token();
    options.screening = [&](const Entry& entry, const std::stop_token& token) {
        std::jthread stopper{[&stop] { stop.request_stop(); }};
        return screening(entry, token);
    };
    const auto result = FileRemover::remove(std::span{&found[0].entries[1], 1}, true, options);
    EXPECT_EQ(result, FileRemover::RemovalResult{});
    EXPECT_TRUE(tree.exists("b"));
}

TEST(DuplicateRemovalCheck, AHardLinkIsNoCopyToRelyOn)
{
    const auto outcome = [](const Names& victims) {
        const TemporaryTree tree{file("a", "same"), hardLink("b", "a"), file("c", "same")};
        return removeIn(tree, duplicatesIn(tree), victims);
    };
    EXPECT_THAT(outcome({"b", "c"}), ElementsAre(std::string{"b: "} + hardLinked));
    EXPECT_THAT(outcome({"b"}), IsEmpty()) << "c is a copy of its own";
    EXPECT_THAT(outcome({"a", "b"}), IsEmpty());
}

TEST(DuplicateRemovalCheck, ACopyInATrashIsNoCopyToRelyOn)
{
    const TemporaryTree tree{file(".Trash-1000/files/a", "same"),
                             file("b", "same"),
                             file("c", "same"),
                             file(".Trash/0/files/x", "pair"),
                             file(".Trash/0/files/y", "pair"),
                             folder(".Trash-1000/info"),
                             folder(".Trash/0/info")};
    const auto groups = duplicatesIn(tree);
    const auto losing = [&](const Names& victims) {
        return std::ranges::count_if(*groups, [&](const DuplicateGroup& group) {
            return DuplicateRemovalCheck::losesAllCopies(group, urlsOf(tree, victims));
        });
    };
    EXPECT_EQ(losing({"b", ".Trash/0/files/y"}), 0);
    EXPECT_EQ(losing({"b", "c"}), 1);
    EXPECT_EQ(losing({".Trash-1000/files/a"}), 0);
    EXPECT_EQ(losing({".Trash/0/files/x", ".Trash/0/files/y"}), 1);

    tree.overwrite("c", "more", 4);
    EXPECT_THAT(removeIn(tree, groups, {"b", ".Trash/0/files/y"}), ElementsAre(std::string{"b: "} + noCopy));
    EXPECT_FALSE(tree.exists(".Trash/0/files/y")) << "the one of a pair that is all in the trash";
}

TEST(DuplicateRemovalCheck, AFileThatIsReachedByTwoRoutesIsNotRemovedThroughOneOfThem)
{
    const TemporaryTree tree{file("real/a", "same"), folder("route"), file("c", "same")};
    const auto route = TemporaryMount::bind(tree.path("real"), tree.path("route"));
    SKIP_UNLESS_MOUNTED(route);
    const auto groups = duplicatesIn(tree);
    ASSERT_EQ(groups->size(), 1U);
    EXPECT_EQ((*groups)[0].wastedBytes(), 8);
    EXPECT_EQ((*groups)[0].reclaimableBytes(), 4);
    EXPECT_THAT(removeIn(tree, groups, {"route/a"}), ElementsAre(std::string{"route/a: "} + otherPath));
    EXPECT_TRUE(tree.exists("real/a"));
}

TEST(DuplicateRemovalCheck, TheImageOfAFileInAnOverlayIsNoCopy)
{
    TemporaryTree tree{folder("layers"), folder("merged"), file("c", "same").modifiedAt(1'000'000'000)};
    const auto layers = TemporaryMount::memory(tree.path("layers"));
    if (layers.isMounted()) {
        tree.add({file("layers/upper/a", "same"), folder("layers/lower")});
    }
    const auto overlay =
        TemporaryMount::overlay(tree.path("layers/upper"), tree.path("layers/lower"), tree.path("merged"));
    SKIP_UNLESS_MOUNTED(overlay);
    const auto groups = duplicatesIn(tree);
    ASSERT_EQ(groups->size(), 1U);
    ASSERT_EQ((*groups)[0].entries.size(), 3U);
    EXPECT_THAT(removeIn(tree, groups, {"c", "layers/upper/a"}),
                ElementsAre(testing::StartsWith("layers/upper/a: c'est peut-être le même fichier")));
    EXPECT_FALSE(tree.exists("c"));
    EXPECT_TRUE(tree.exists("layers/upper/a"));
}

/// A folder shown as that of another machine, which numbers its files as it likes and tells whole seconds.
class NetworkFolder {
public:
    NetworkFolder(TemporaryTree& tree, const std::string& source, const std::string& folder)
        : m_folder(tree.path(folder))
    {
        tree.add(file("serve", "#!/bin/sh\nexec /usr/lib/openssh/sftp-server\n").withMode(0755));
        const std::string command = "sshfs -o ssh_command=" + tree.path("serve") + " x:" + tree.path(source) +
                                    " " + m_folder + " 2>/dev/null";
        m_isMounted = std::system(command.c_str()) == 0; // NOLINT: a test's own words
    }

    NetworkFolder(const NetworkFolder&) = delete;
    NetworkFolder& operator=(const NetworkFolder&) = delete;

    ~NetworkFolder()
    {
        if (m_isMounted) {
            ::umount2(m_folder.c_str(), MNT_DETACH);
        }
    }

    [[nodiscard]] bool isMounted() const { return m_isMounted; }

private:
    std::string m_folder;
    bool m_isMounted = false;
};

TEST(DuplicateRemovalCheck, AFileIsNoCopyOfItselfThroughANetwork)
{
    TemporaryTree tree{folder("net"), folder("data"), folder("home")};
    const NetworkFolder net{tree, "data", "net"};
    if (!net.isMounted()) {
        GTEST_SKIP() << "sshfs or the right to mount is missing";
    }
    const ScopedVariable home{"XDG_DATA_HOME", tree.path("home")};
    tree.add(file("data/a", 200_KiB));
    const std::string content = tree.content("data/a");
    for (const bool isPermanent : {true, false}) {
        for (const char* const victim : {"data/a", "net/a"}) {
            SCOPED_TRACE(std::string{victim} + (isPermanent ? " for good" : " to the trash"));
            const auto groups = duplicatesIn(tree);
            ASSERT_EQ(groups->size(), 1U);
            ASSERT_EQ((*groups)[0].entries.size(), 2U);
            EXPECT_THAT(removeIn(tree, groups, {victim}, {}, isPermanent),
                        ElementsAre(std::string{victim} + ": " + otherPath));
            EXPECT_THAT(tree.names("data"), testing::IsSupersetOf({"a"}));
            EXPECT_EQ(tree.content("data/a"), content);
        }
    }
    tree.add({file("data/b", 200_KiB), file("other", 200_KiB)});
    tree.remove("data/a");
    EXPECT_THAT(removeIn(tree, duplicatesIn(tree), {"data/b", "net/b"}),
                ElementsAre(std::string{"net/b: "} + gone))
        << "a copy is elsewhere, and a path is gone";
    EXPECT_FALSE(tree.exists("data/b"));
}

} // namespace

} // namespace tallyroom
