#include "Duplicates/CandidateDisks.h"
#include "Duplicates/DigestSearch.h"
#include "FileSystem/LookTime.h"
#include "FileSystem/TreeWalk.h"
#include "Removal/TreeRemoval.h"
#include "Support/Interception.h"
#include "Support/OneDisk.h"
#include "Support/TemporaryTree.h"

#include <condition_variable>
#include <fcntl.h>
#include <future>
#include <gmock/gmock.h>
#include <map>
#include <mutex>
#include <set>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tallyroom {

namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::ElementsAreArray;

/// The longest wait; only a test that fails takes so long.
constexpr auto plenty = 60s;

std::uint64_t inodeOf(int folder)
{
    struct stat status = {};
    EXPECT_EQ(::fstat(folder, &status), 0);
    return status.st_ino;
}

/// Walks everything and tells each folder before it is left to others.
class Wanderer final : public TreeWalk::Visitor {
public:
    using Seen = std::function<void(TreeWalk::Folder& folder, std::span<TreeWalk::Child> children)>;

    Wanderer(Seen seen, std::promise<void>& end) : m_seen(std::move(seen)), m_end(end) {}

    TreeWalk::Wish wish(const TreeWalk::Folder& /*folder*/) const override
    {
        return {TreeWalk::Attributes::files};
    }

    void visit(TreeWalk::Folder& folder, std::span<TreeWalk::Child> children) override
    {
        m_seen(folder, children);
        std::ranges::for_each(children, [](TreeWalk::Child& child) { child.descend = child.isFolder(); });
    }

    void finish(bool /*stopped*/) override { m_end.set_value(); }

private:
    Seen m_seen;
    std::promise<void>& m_end;
};

std::future<void> walk(const TemporaryTree& tree, const DiskSense& sense, std::promise<void>& end,
                       Wanderer::Seen seen, WorkerPool& pool = WorkerPool::shared())
{
    std::vector<TreeWalk::Root> roots;
    roots.push_back({tree.url(), std::make_unique<TreeWalk::Folder>()});
    TreeWalk::start(pool, std::move(roots), std::make_unique<Wanderer>(std::move(seen), end), {}, sense);
    return end.get_future();
}

/// Folders in folders that were made after them, and files made in turns: what is found later often lies
/// before what was read last.
void addScatteredFolders(TemporaryTree& tree)
{
    for (const int round : {3, 1, 4, 2}) {
        for (int i = 0; i < 40; ++i) {
            tree.add(file(std::to_string(i * 13 % 40) + "/" + std::to_string(round)));
        }
    }
    for (int i = 0; i < 40; ++i) {
        const std::string above = "in-" + std::to_string(i * 7 % 10);
        tree.add(folder(above));
        tree.rename(std::to_string(i), above + "/" + std::to_string(i));
    }
}

TEST(DiskOrder, ARotatingDiskHasOneReaderThatAlwaysGoesOnToTheNextHigherInode)
{
    TemporaryTree tree;
    addScatteredFolders(tree);
    std::mutex mutex;
    std::vector<std::uint64_t> opened;
    std::map<std::uint64_t, std::vector<std::uint64_t>> stats; // by folder
    std::set<std::uint64_t> known{inodeOf(openFolder(tree.url(), FolderAccess::listing)->get())};
    std::vector<std::uint64_t> expected;
    std::atomic<int> inside = 0;
    const Interception looks{[&](const InterceptedCall& call) {
        const int others = inside++;
        EXPECT_EQ(others, 0) << "another reader";
        if (S_ISREG(call.told->stx_mode)) {
            const std::scoped_lock lock{mutex};
            stats[inodeOf(call.folder)].push_back(call.told->stx_ino);
        }
        --inside;
        return 0;
    }};
    const OneDisk disk{headMoves};
    std::promise<void> end;
    walk(tree, disk, end, [&](TreeWalk::Folder& folder, std::span<TreeWalk::Child> children) {
        const std::scoped_lock lock{mutex};
        opened.push_back(inodeOf(folder.descriptor()));
        auto next =
            known.lower_bound(opened.size() <= 2 ? 0 : expected.back()); // a root counts as the lowest
        next = next == known.end() ? known.begin() : next;
        expected.push_back(*next);
        known.erase(next);
        for (const TreeWalk::Child& child : children) {
            if (child.isFolder()) {
                known.insert(child.inode);
            }
        }
    }).wait();
    EXPECT_EQ(opened.size(), 51U);
    EXPECT_THAT(opened, ElementsAreArray(expected));
    EXPECT_EQ(stats.size(), 40U);
    for (const auto& [folder, files] : stats) {
        EXPECT_EQ(files.size(), 4U);
        EXPECT_TRUE(std::ranges::is_sorted(files));
    }
}

TEST(DiskOrder, WhatLiesInMemoryHasAllReaders)
{
    TemporaryTree tree;
    addScatteredFolders(tree);
    std::mutex mutex;
    std::condition_variable comes;
    std::size_t visits = 0, inside = 0, most = 0;
    bool isLate = false;
    const OneDisk disk{inMemory};
    std::promise<void> end;
    walk(tree, disk, end, [&](TreeWalk::Folder&, std::span<TreeWalk::Child>) {
        std::unique_lock lock{mutex};
        most = std::max(most, ++inside);
        comes.notify_all();
        if (++visits > 20) { // by now nothing has come from the disk for long
            isLate = isLate || !comes.wait_for(lock, plenty, [&] { return isLate || most >= 4; });
        }
        --inside;
    }).wait();
    EXPECT_GE(most, 4U);
}

TEST(DiskOrder, ADiskThatHasAlwaysBeenQuickBeginsWithAllReadersAndGetsItsOrderBackWhenTheyWait)
{
    TemporaryTree tree;
    addScatteredFolders(tree);
    WorkerPool two{2};
    std::mutex mutex;
    std::condition_variable comes;
    std::size_t visits = 0;
    OneDisk disk{inMemory, true};
    std::promise<void> end;
    const auto seen = [&](TreeWalk::Folder& folder, std::span<TreeWalk::Child>) {
        if (folder.isRoot()) {
            return;
        }
        std::unique_lock lock{mutex};
        ++visits;
        comes.notify_all();
        if (visits <= 2) { // both readers tell of their first steps
            EXPECT_TRUE(comes.wait_for(lock, plenty, [&] { return visits >= 2; }));
        } else if (disk.decisions().size() == 1) {
            disk.become({1ms, 60ms, 1, 1});
            lock.unlock();
            for (const LookTime time; !time.isOver();) { // a head moves
            }
        }
    };
    walk(tree, disk, end, seen, two).wait();
    EXPECT_THAT(disk.decisions(), ElementsAre(DiskDecision{{"disk"}, false}, DiskDecision{{"disk"}, true}));
}

TEST(DiskOrder, AFileThatHangsDoesNotKeepTheOnlyReader)
{
    TemporaryTree tree{file("a/hangs")};
    addScatteredFolders(tree);
    std::promise<void> gate, others, end;
    const std::shared_future<void> isOpen = gate.get_future().share();
    const auto hanging = Interception::at(InterceptedCall::Kind::statx, "hangs", [isOpen] { isOpen.wait(); });
    const OneDisk disk{headMoves};
    std::atomic<int> visits = 0;
    const auto isDone = walk(tree, disk, end, [&](TreeWalk::Folder&, std::span<TreeWalk::Child>) {
        if (++visits == 51) {
            others.set_value();
        }
    });
    EXPECT_EQ(others.get_future().wait_for(plenty), std::future_status::ready);
    gate.set_value();
    isDone.wait();
    EXPECT_EQ(visits, 52);
}

/// Inodes in the order in which files were looked at for a stage, and the disk was asked for them.
struct DigestOrder {
    std::vector<std::uint64_t> looks;
    std::vector<std::uint64_t> asked;
    std::vector<std::pair<long, long>> spans; ///< that it was asked for
};

DigestOrder digestedInOrder(const TemporaryTree& tree, const DiskUse& use, std::size_t groups)
{
    const OneDisk disk{use};
    std::mutex mutex;
    DigestOrder order;
    const Interception calls{[&](const InterceptedCall& call) {
        const std::scoped_lock lock{mutex};
        if (call.kind == InterceptedCall::Kind::statx) {
            call.told->stx_dev_major = 0; // as btrfs numbers a subvolume
            call.told->stx_dev_minor = 4242;
        }
        if (call.kind == InterceptedCall::Kind::advise) {
            order.asked.push_back(inodeOf(call.folder));
            order.spans.emplace_back(call.offset, call.length);
        } else if (call.name[0] == 0 && S_ISREG(call.told->stx_mode) &&
                   (order.looks.empty() ||
                    order.looks.back() != call.told->stx_ino)) { // young: looked at again
            order.looks.push_back(call.told->stx_ino);
        }
        return 0;
    }};
    auto findings = CandidateWalk::run(tree.url(), 1, {100, 100}, {}, [](std::int64_t) {});
    EXPECT_EQ(DigestSearch::run(
                  std::move(findings), {}, [](DigestSearch::Progress) {}, disk)
                  .size(),
              groups);
    return order;
}

TEST(DiskOrder, FilesAreDigestedOneByOneAsTheyLieOnTheDisk)
{
    TemporaryTree tree;
    std::vector<std::pair<std::uint64_t, std::uint64_t>> places; // and inodes
    for (int i = 0; i < 12; ++i) {
        tree.add(file(std::to_string(i)));
    }
    for (int i = 0; i < 12; ++i) {
        const std::string path = tree.path(std::to_string(i * 5 % 12));
        const FileDescriptor file{::open(path.c_str(), O_RDWR | O_CLOEXEC)};
        const std::string content(i % 2 == 0 ? 5000 : 9000, 'x');
        ASSERT_EQ(::pwrite(file.get(), content.data(), content.size(), 0), ssize_t(content.size()));
        ASSERT_EQ(::fsync(file.get()), 0); // has its place on the disk from now on
        const std::uint64_t inode = inodeOf(file.get());
        places.emplace_back(placeOnDisk(file.get(), 0).value_or(inode), inode);
    }
    std::ranges::sort(places);
    std::vector<std::uint64_t> expected;
    std::ranges::transform(places, std::back_inserter(expected),
                           [](const auto& place) { return place.second; });
    const auto [looks, asked, spans] = digestedInOrder(tree, headMoves, 2);
    EXPECT_THAT(asked, ElementsAreArray(expected));
    expected.insert(expected.end(), expected.begin(),
                    expected.end()); // all are opened before one has been read
    EXPECT_THAT(looks, ElementsAreArray(expected));
    const auto inAnyOrder = digestedInOrder(tree, {10ms, 0ms, 0, 0}, 2).looks;
    EXPECT_EQ(std::set(inAnyOrder.begin(), inAnyOrder.end()).size(), 12U)
        << "none is lost when the way changes";
}

TEST(DiskOrder, FilesWhoseHeadsAreAlikeAreFetchedOnOneWayToTheirTails)
{
    constexpr long head = 65536;
    constexpr long size = 5 * head;
    constexpr long longest = 1 << 20;
    TemporaryTree tree;
    for (const char* const name : {"a", "b"}) {
        tree.add(file(name, std::string(size, 'x')));
        tree.add(file(std::string{"long-"} + name, std::string(longest + 2 * head, 'x')));
    }
    auto spans = digestedInOrder(tree, headMoves, 2).spans;
    std::ranges::sort(spans);
    spans.erase(std::ranges::unique(spans).begin(), spans.end());
    EXPECT_THAT(spans, ElementsAre(std::pair{0L, head}, std::pair{0L, size}, std::pair{0L, longest},
                                   std::pair{head, size - head}, std::pair{longest, 2 * head},
                                   std::pair{longest + head, head}));
}

TEST(DiskOrder, FilesThatAreOpenedEarlyLeaveDescriptorsForTheOthers)
{
    TemporaryTree tree;
    for (int i = 0; i < 200; ++i) {
        tree.add(file(std::to_string(i), "same"));
    }
    const OneDisk disk{headMoves};
    auto findings = CandidateWalk::run(tree.url(), 1, {1000, 1000}, {}, [](std::int64_t) {});
    rlimit before = {};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
    rlimit few = before;
    few.rlim_cur = static_cast<rlim_t>(openFolder(tree.url(), FolderAccess::listing)->get()) + 64;
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &few), 0);
    const auto groups = DigestSearch::run(
        std::move(findings), {}, [](DigestSearch::Progress) {}, disk);
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &before), 0);
    ASSERT_EQ(groups.size(), 1U);
    EXPECT_EQ(groups[0].entries.size(), 200U);
}

/// What happens to the files of a tree while it is removed.
struct RemovalOrder {
    std::vector<std::pair<bool, std::uint64_t>> events; ///< whether a file goes, or else is looked at
    std::map<std::uint64_t, std::vector<std::uint64_t>> byFolders; ///< which go, one after the other
};

RemovalOrder removedInOrder(const TemporaryTree& tree, const DiskSense& sense)
{
    std::mutex mutex;
    RemovalOrder order;
    const Interception calls{[&](const InterceptedCall& call) {
        struct stat status = {};
        if (call.name[0] != 0 && ::fstatat(call.folder, call.name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
            S_ISREG(status.st_mode)) {
            const bool goes = call.kind == InterceptedCall::Kind::unlink;
            const std::scoped_lock lock{mutex};
            order.events.emplace_back(goes, status.st_ino);
            if (goes) {
                order.byFolders[inodeOf(call.folder)].push_back(status.st_ino);
            }
        }
        return 0;
    }};
    const auto parent = openFolder(tree.url(), FolderAccess::listing);
    EXPECT_TRUE(TreeRemoval::removeItem(parent->get(), "out", {}, {}, sense).isGone());
    return order;
}

TEST(DiskOrder, ALargeTreeIsLookedAtInOrderBeforeMostOfItIsRemovedAndFilesGoInOrder)
{
    for (const bool looksSolid : {false, true}) {
        TemporaryTree tree;
        for (int i = 0; i < 600; ++i) {
            tree.add(file("out/" + std::to_string(i * 7 % 30) + "/" + std::to_string(i * 37 % 600)));
        }
        const OneDisk disk{headMoves, looksSolid};
        const auto [events, byFolders] = removedInOrder(tree, disk);
        EXPECT_EQ(byFolders.size(), 30U);
        EXPECT_TRUE(std::ranges::all_of(byFolders, [](const auto& folderAndFiles) {
            return std::ranges::is_sorted(folderAndFiles.second);
        }));
        std::map<std::uint64_t, int> looks;
        std::size_t longest = 0, row = 0; // of looks without a removal
        for (const auto& [goes, inode] : events) {
            looks[inode] += goes ? 0 : 1;
            row = goes ? 0 : row + 1;
            longest = std::max(longest, row);
        }
        const auto twice = std::ranges::count(looks, 2, &std::pair<const std::uint64_t, int>::second);
        EXPECT_EQ(looks.size(), 600U);
        EXPECT_EQ(twice > 150, !looksSolid);
        EXPECT_EQ(std::cmp_greater_equal(longest, twice) && twice > 0, !looksSolid)
            << "all of it before any goes";
    }
}

} // namespace

} // namespace tallyroom
