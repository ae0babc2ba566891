#pragma once

#include "Model/Entry.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <limits>
#include <mutex>
#include <vector>

namespace tallyroom {

/// The folders that a listing is still measuring: a cheap look beside the records of its stream, as often as
/// somebody wants to know. Any thread.
class RunningFolders {
public:
    /// The first ones that are found; more are not told.
    static constexpr std::size_t limit = 1000;

    /// One of them.
    struct Folder {
        Entry entry; ///< without its size
        /// What was found below it so far.
        std::atomic<std::int64_t> bytes = 0;
        /// How many children the first record has that contains it.
        std::atomic<std::int64_t> completed = std::numeric_limits<std::int64_t>::max();
    };

    /// Takes in another one; null when there are enough. It stays where it is.
    [[nodiscard]] Folder* add(Entry entry);

    /// Those that a record with so many completed children does not contain, in the order in which they were
    /// found, with their sizes so far.
    [[nodiscard]] std::vector<Entry> after(std::int64_t completed) const;

private:
    mutable std::mutex m_mutex;
    std::deque<Folder> m_folders; // guarded by m_mutex, but for what is atomic
};

} // namespace tallyroom
