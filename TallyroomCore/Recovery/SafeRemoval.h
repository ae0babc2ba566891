#pragma once

#include "Duplicates/KeepPolicy.h"
#include "Model/AgeThreshold.h"
#include "Model/Entry.h"
#include "Removal/Screening.h"

#include <functional>
#include <optional>
#include <vector>

namespace tallyroom {

/// What may be proposed for removal without a look at each item: what tools make again, and further copies.
/// One answer for all who propose. No call reads a disk unless it says so. Any thread.
namespace SafeRemoval {

/// What is known of the project around a node_modules folder.
struct NodeProject {
    std::optional<Timestamp> changedAt; ///< the newest of its own files; nothing where none was found
    bool isProven = false;              ///< what has to be installed again is written beside it, or in it

    friend bool operator==(const NodeProject&, const NodeProject&) = default;
};

/// Looks at the project around the folder at `nodeModules`. Blocks for some milliseconds.
[[nodiscard]] NodeProject projectOf(const FileUrl& nodeModules);

/// Whether a build cache may go: proven, of no installed program, not in use, and read as a whole. Left
/// out are those that hold what was installed: node_modules are judged by their age, and nothing beside a
/// virtual environment says for sure what is in it. And so are names that people keep under version control
/// as well: dist, build, vendor.
[[nodiscard]] bool isSafeCache(const Entry& cache);

/// Tells which node_modules folders count as old now: unchanged for longer than `threshold` says, and of no
/// installed program.
[[nodiscard]] std::function<bool(const Entry& nodeModules)> oldNodeModules(AgeThreshold threshold);

/// Tells which node_modules folders may go now: the old ones whose project, too, has not changed for the time
/// that `threshold` says, and can install them again.
[[nodiscard]] std::function<bool(const Entry& nodeModules, const NodeProject& project)>
safeNodeModules(AgeThreshold threshold);

/// Looks right before a cache or node_modules goes whether a program has begun to use it since its scan,
/// which then keeps it. Asks the kernel once a second at most.
[[nodiscard]] FileRemover::Screening refuseInUse();

/// Which copies of a group may go, by its order: those that the policy does not keep, outside of installed
/// programs and of folders called like caches. The copy that stays lies outside of them too, whatever the
/// policy keeps: in there it may be gone after the next removal.
[[nodiscard]] std::vector<bool> safeCopies(const DuplicateGroup& group, const KeepPolicy& policy);

} // namespace SafeRemoval

} // namespace tallyroom
