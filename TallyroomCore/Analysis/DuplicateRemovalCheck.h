#pragma once

#include "Analysis/DuplicateGroup.h"

#include <cstddef>
#include <span>
#include <string>
#include <unordered_set>
#include <vector>

namespace tallyroom {

/// The last look before duplicates are removed: is what was found still true? Reads attributes only, keeps no
/// state. Any thread; one stat a file of the groups concerned.
namespace DuplicateRemovalCheck {

struct Refusal {
    FileUrl url;
    std::string reason; ///< in words for people, without a full stop

    friend bool operator==(const Refusal&, const Refusal&) = default;
};

struct Verdict {
    /// What can go, in the order of the groups.
    std::vector<FileUrl> fine;
    /// What must stay: it changed, or what would be left of it is not certain.
    std::vector<Refusal> refused;
    /// Groups of which no copy is to be kept: worth a question of its own. Their files are fine as long as
    /// they are unchanged.
    std::size_t groupsLosingAllCopies = 0;

    friend bool operator==(const Verdict&, const Verdict&) = default;
};

/// Looks again at every group that holds one of `victims`. A victim is fine when it is the very file that was
/// digested, with the size and modification time of that moment, and when the group keeps a copy of which the
/// same is true and which is another file. A location that is in no group is refused.
[[nodiscard]] Verdict check(std::span<const DuplicateGroup> groups,
                            const std::unordered_set<FileUrl>& victims);

} // namespace DuplicateRemovalCheck

} // namespace tallyroom
