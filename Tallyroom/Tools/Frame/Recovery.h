#pragma once

#include "Model/CheckedArithmetic.h"
#include "Model/EntryList.h"

#include <QString>

#include <cstddef>
#include <cstdint>
#include <numeric>

namespace tallyroom {

/// How much room a tool's finds can give back: what may go without a look at each item, and
/// the rest. A plain value, cheap to copy.
struct Recovery {
    EntryList safe;              ///< as found; the tool proposes these and nothing else
    std::int64_t safeBytes = 0;  ///< what comes back with them
    std::size_t otherCount = 0;  ///< what a person has to look at
    std::int64_t otherBytes = 0; ///< and what that takes
    QString words{};             ///< "17 caches prouvés sur 20"
    QString caution{};           ///< for the question before `safe` goes; may be empty
    bool isKnown = true;         ///< nothing is being found out any more

    /// A list parted by `isSafe`, without words.
    template <class Condition>
    [[nodiscard]] static Recovery parted(const EntryList& entries, const Condition& isSafe)
    {
        const auto [safe, others] = entries.parted(isSafe);
        return {safe, bytesOf(safe), others.size(), bytesOf(others)};
    }

    friend bool operator==(const Recovery&, const Recovery&) = default;

private:
    [[nodiscard]] static std::int64_t bytesOf(const EntryList& entries)
    {
        return std::accumulate(
            entries.begin(), entries.end(), std::int64_t{0},
            [](std::int64_t sum, const Entry& entry) { return saturatedSum(sum, entry.sizeBytes); });
    }
};

} // namespace tallyroom
