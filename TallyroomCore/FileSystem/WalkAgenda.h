#pragma once

#include "Concurrency/ElevatorQueue.h"
#include "Concurrency/StealingQueues.h"
#include "FileSystem/DiskPace.h"
#include "FileSystem/LookTime.h"
#include "FileSystem/ParsedNames.h"
#include "FileSystem/TreeWalk.h"

#include <atomic>
#include <cstdint>
#include <limits>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace tallyroom {

/// Some of the names of a buffer, from `begin` to `end`; to its own end when that comes first.
struct TreeWalk::Piece {
    std::shared_ptr<ParsedNames> names;
    std::size_t firstIndex = 0; ///< of the buffer's first name among the folder's
    std::size_t begin = 0;
    std::size_t end = std::numeric_limits<std::size_t>::max();

    /// Some `count` pieces of it, for other workers; fewer where they would have hardly a name each.
    [[nodiscard]] std::vector<Piece> parts(std::size_t count) const;
};

/// A folder to list, or names of it to visit.
struct TreeWalk::Item {
    Folder* folder = nullptr;
    Piece piece{};
    Spindles* taken = nullptr; ///< where the item keeps a reader's place
    std::uint64_t ticket = 0;
};

/// Rotating disks that a mount lies on, and the folders of one walk that wait for their heads: by inode
/// number, since file systems lay out what belongs together at numbers close to each other. Any thread.
struct TreeWalk::Spindles {
    using Place = std::pair<std::uint64_t, std::uint64_t>; ///< device and inode

    Spindles(std::vector<std::string> names, bool isOrdered) : disks(std::move(names)), pace(isOrdered) {}

    const std::vector<std::string> disks;
    DiskPace pace;
    ElevatorQueue<Place, Folder*> folders{};
    Spindles* next = nullptr; ///< of the same walk
};

/// How rotating disks answer one worker, told to them. While all workers read them, few of its steps are
/// enough: the first, some of the others, and each that follows one that took long. One thread at a time.
class TreeWalk::DiskAccount {
public:
    /// The worker turns to a folder.
    void begin(const Folder& folder, const DiskSense& sense);

    /// It got on, or is done.
    void tell();

    /// It turns away from the folder.
    void end() { m_wasLong = m_time.isOver(); }

private:
    const DiskSense* m_sense = nullptr;
    Spindles* m_spindles = nullptr; ///< to be told; null for none
    DiskUse m_before{};             ///< this thread's, when they were told last
    unsigned m_steps = 0;
    LookTime m_time{};
    bool m_wasLong = false;
};

/// What is still to be done in a walk, and who does it: what lies on rotating disks in order, one reader a
/// disk, all else by any worker. Any thread.
class TreeWalk::Agenda {
public:
    Agenda(WorkerPool& pool, const DiskSense& sense);
    Agenda(const Agenda&) = delete;
    Agenda& operator=(const Agenda&) = delete;
    ~Agenda();

    /// The disks of a folder by the mount that holds it; null where none rotates.
    [[nodiscard]] Spindles* spindlesOf(const Mount* mount);

    /// Whether a folder's disk is read in order at present.
    [[nodiscard]] static bool isOrdered(const Folder& folder) noexcept
    {
        return folder.m_spindles != nullptr && folder.m_spindles->pace.isOrdered();
    }

    /// Leaves `items` empty.
    void put(unsigned worker, std::vector<Item>& items);

    /// False when there is nothing that this worker may do now.
    [[nodiscard]] bool take(unsigned worker, Item& item);

    /// An item that was taken is done. True when the same worker goes on with another one, then in `item`: a
    /// disk that is read in order waits for no other worker to wake up, unless this one has had its time.
    [[nodiscard]] bool goOn(Item& item, bool isTimeOver);

    /// Nothing waits for just any worker.
    [[nodiscard]] bool isEmpty() const { return m_queues.isEmpty(); }

private:
    bool putInOrder(Folder& folder) const;
    [[nodiscard]] std::size_t readers(const Spindles& spindles) const;

    WorkerPool& m_pool;
    const DiskSense& m_sense;
    StealingQueues<Item> m_queues;
    std::mutex m_mutex;
    std::map<int, Spindles*> m_byMount;                                      // guarded by m_mutex
    std::map<std::vector<std::string>, std::unique_ptr<Spindles>> m_byDisks; // guarded by m_mutex
    std::atomic<Spindles*> m_first = nullptr;
};

} // namespace tallyroom
