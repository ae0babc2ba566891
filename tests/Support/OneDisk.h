#pragma once

#include "Concurrency/Locked.h"
#include "FileSystem/DiskSense.h"

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace tallyroom {

/// What a thread does on a disk whose content lies in memory.
inline constexpr DiskUse inMemory{std::chrono::milliseconds{1}, std::chrono::milliseconds{0}, 0, 0};

/// What it does where a head has to move.
inline constexpr DiskUse headMoves{std::chrono::milliseconds{1}, std::chrono::milliseconds{5}, 1, 1};

/// All lies on one rotating disk, and whatever a thread does there is `use`.
class OneDisk final : public DiskSense {
public:
    explicit OneDisk(const DiskUse& use, bool looksSolid = false) : m_use(use), m_looksSolid(looksSolid) {}

    std::vector<std::string> rotatingDisks(const Mount& /*mount*/) const override { return {"disk"}; }

    bool lookSolid(const std::vector<std::string>& /*disks*/) const override { return m_looksSolid; }

    DiskUse useSoFar() const override
    {
        thread_local std::int64_t steps = 0;
        ++steps;
        const DiskUse use = m_use.get();
        return {use.worked * steps, use.slept * steps, use.sleeps * steps, use.blocksRead * steps};
    }

    void hear(const DiskDecision& decision) const override
    {
        m_decisions.with([&](auto& decisions) { decisions.push_back(decision); });
    }

    void become(const DiskUse& use) { m_use.set(use); }

    std::vector<DiskDecision> decisions() const { return m_decisions.get(); }

private:
    Locked<DiskUse> m_use;
    mutable Locked<std::vector<DiskDecision>> m_decisions;
    bool m_looksSolid;
};

} // namespace tallyroom
