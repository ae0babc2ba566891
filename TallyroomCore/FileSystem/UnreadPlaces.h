#pragma once

#include "FileSystem/SystemError.h"
#include "Model/FileUrl.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

namespace tallyroom {

/// Something that a scan met and could not read.
struct UnreadPlace {
    FileUrl url;
    SystemError error;
    bool isFolder = true; ///< that could not be listed; else an item that could not be examined

    friend bool operator==(const UnreadPlace&, const UnreadPlace&) = default;
};

/// All that a scan met and could not read: its result is a lower bound.
struct UnreadPlaces {
    /// The most places that are kept.
    static constexpr std::size_t limit = 1000;

    std::int64_t count = 0;          ///< of all, also those that are not kept
    bool hasItems = false;           ///< not all of them are folders
    std::vector<UnreadPlace> places; ///< the first ones by path
    std::int64_t excluded = 0;       ///< of `count`, the folders that the user excludes

    /// Takes in others.
    void add(UnreadPlaces others);

    /// Puts the places in order and drops those beyond the limit.
    void keepFirst();

    friend bool operator==(const UnreadPlaces&, const UnreadPlaces&) = default;
};

/// What the last record of a scan says of it; null when all was read.
using SharedUnreadPlaces = std::shared_ptr<const UnreadPlaces>;

/// Collects what a scan cannot read. Any thread; memory is bounded.
class UnreadLedger {
public:
    void add(UnreadPlace place);

    [[nodiscard]] SharedUnreadPlaces places() const;

private:
    mutable std::mutex m_mutex;
    UnreadPlaces m_places; // guarded by m_mutex; in no order, some more than are kept
};

} // namespace tallyroom
