#include "FileSystem/WalkAgenda.h"

#include <algorithm>

namespace tallyroom {

namespace {

/// While all workers read a rotating disk, each tells of one step in so many.
constexpr unsigned stepsATelling = 64;

/// A part of a piece has at least so many names.
constexpr std::size_t leastPart = 8;

} // namespace

std::vector<TreeWalk::Piece> TreeWalk::Piece::parts(std::size_t count) const
{
    const std::size_t size = std::max((end - begin) / count, leastPart);
    std::vector<Piece> parts;
    for (std::size_t next = begin; next < end; next += size) {
        parts.push_back({names, firstIndex, next, std::min(next + size, end)});
    }
    return parts;
}

void TreeWalk::DiskAccount::begin(const Folder& folder, const DiskSense& sense)
{
    m_sense = &sense;
    m_spindles = folder.m_spindles;
    m_time = {};
    if (m_spindles != nullptr && !m_spindles->pace.isOrdered() && !m_wasLong &&
        m_steps++ % stepsATelling != 0) {
        m_spindles = nullptr;
    }
    if (m_spindles != nullptr) {
        m_before = sense.useSoFar();
    }
}

void TreeWalk::DiskAccount::tell()
{
    if (m_spindles != nullptr) {
        const DiskUse use = m_sense->useSoFar();
        if (m_spindles->pace.note(use.since(m_before))) {
            m_sense->hear({m_spindles->disks, m_spindles->pace.isOrdered()});
        }
        m_spindles->folders.showLife();
        m_before = use;
    }
}

TreeWalk::Agenda::Agenda(WorkerPool& pool, const DiskSense& sense)
    : m_pool(pool), m_sense(sense), m_queues(pool.width())
{}

TreeWalk::Agenda::~Agenda() = default;

TreeWalk::Spindles* TreeWalk::Agenda::spindlesOf(const Mount* mount)
{
    if (mount == nullptr) {
        return nullptr;
    }
    const std::scoped_lock lock{m_mutex};
    const auto [known, isNew] = m_byMount.try_emplace(mount->id, nullptr);
    if (isNew) {
        const auto disks = m_sense.rotatingDisks(*mount);
        const bool isOrdered = !disks.empty() && !m_sense.lookSolid(disks);
        m_sense.hear({disks, isOrdered});
        if (!disks.empty()) {
            auto& spindles = m_byDisks[disks];
            if (spindles == nullptr) {
                spindles = std::make_unique<Spindles>(disks, isOrdered);
                spindles->next = m_first.load();
                m_first = spindles.get();
            }
            known->second = spindles.get();
        }
    }
    return known->second;
}

std::size_t TreeWalk::Agenda::readers(const Spindles& spindles) const
{
    return spindles.pace.isOrdered() ? spindles.disks.size() : m_pool.capacity();
}

bool TreeWalk::Agenda::putInOrder(Folder& folder) const
{
    const Mount* const mount = folder.m_position.mount();
    Spindles& spindles = *folder.m_spindles;
    return spindles.folders.put({mount->device, folder.m_inode}, &folder, readers(spindles));
}

void TreeWalk::Agenda::put(unsigned worker, std::vector<Item>& items)
{
    std::size_t toAnnounce = 0;
    std::erase_if(items, [&](const Item& item) {
        const bool waits = item.piece.names == nullptr && isOrdered(*item.folder);
        toAnnounce += waits && putInOrder(*item.folder) ? 1 : 0;
        return waits;
    });
    toAnnounce += items.size();
    if (!items.empty()) {
        m_queues.put(worker, items);
    }
    if (toAnnounce > 0) {
        m_pool.announce(toAnnounce);
    }
}

bool TreeWalk::Agenda::take(unsigned worker, Item& item)
{
    while (m_queues.take(worker, item)) {
        if (item.piece.names != nullptr || !isOrdered(*item.folder)) {
            return true;
        }
        putInOrder(*item.folder); // all readers were too many
    }
    item = {};
    for (Spindles* spindles = m_first.load(); spindles != nullptr; spindles = spindles->next) {
        if (const auto taken = spindles->folders.take(readers(*spindles))) {
            item = {taken->item, {}, spindles, taken->ticket};
            return true;
        }
    }
    return false;
}

bool TreeWalk::Agenda::goOn(Item& item, bool isTimeOver)
{
    Spindles* const spindles = item.taken;
    if (spindles == nullptr) {
        return false;
    }
    const std::size_t waiting = spindles->folders.giveBack(item.ticket);
    if (!isTimeOver && spindles->pace.isOrdered()) {
        if (const auto taken = spindles->folders.take(readers(*spindles))) {
            item = {taken->item, {}, spindles, taken->ticket};
            return true;
        }
    }
    if (waiting > 0) {
        m_pool.announce(std::min(readers(*spindles), waiting));
    }
    return false;
}

} // namespace tallyroom
