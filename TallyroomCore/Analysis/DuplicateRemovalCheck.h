#pragma once

#include "Analysis/DuplicateGroup.h"

#include <cstddef>
#include <span>
#include <stop_token>
#include <string>
#include <unordered_set>
#include <vector>

namespace tallyroom {

/// The last look before duplicates are removed: is what was found still true? Keeps no state. Any thread; one
/// stat a file of the groups concerned. A file whose change time moved is read again, whole.
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
    /// Groups that lose all copies: worth a question of its own. Their files are fine as long as they are
    /// unchanged.
    std::size_t groupsLosingAllCopies = 0;

    friend bool operator==(const Verdict&, const Verdict&) = default;
};

/// Whether no copy of the group would be left that can be counted on: all are victims, or what is kept lies
/// in a trash while others do not. False for a group without victims.
[[nodiscard]] bool losesAllCopies(const DuplicateGroup& group, const std::unordered_set<FileUrl>& victims);

/// Looks again at every group that holds one of `victims`. A victim is fine when it is the very file that was
/// digested, with the size, modification time and content of that moment, and when the group loses all copies
/// or keeps one of which the same is true, which is another file (not its image on another device either)
/// and, where others are, outside of any trash. A location that is in no group is refused. After a stop, what
/// would have to be read is refused too.
[[nodiscard]] Verdict check(std::span<const DuplicateGroup> groups,
                            const std::unordered_set<FileUrl>& victims, const std::stop_token& stop = {});

} // namespace DuplicateRemovalCheck

} // namespace tallyroom
