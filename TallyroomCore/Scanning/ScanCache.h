#pragma once

#include "FileSystem/UnreadPlaces.h"
#include "Model/EntryList.h"
#include "Scanning/CountedAgain.h"
#include "Scanning/FolderContents.h"

#include <cstdint>
#include <list>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>

namespace tallyroom {

/// A folder's children, what could not be read below it, and what they hold besides bytes.
struct Listing {
    EntryList entries;
    SharedUnreadPlaces unreadPlaces = {};
    SharedCountedAgain countedAgain = {};
    SharedFolderContents contents = {};
};

/// The listings of the folders used most recently, by standardized path. Operations take turns; any thread.
class ScanCache {
public:
    /// How many folders are kept.
    static constexpr std::size_t capacity = 48;

    /// The one of the process, never destroyed: workers may outlive main().
    static ScanCache& shared();

    /// The folder's listing; the folder becomes the most recent one.
    [[nodiscard]] std::optional<Listing> find(const FileUrl& url);

    /// Keeps a listing and drops the least recent one over the capacity, unless something was invalidated
    /// since `epoch` was read.
    void store(const FileUrl& url, const Listing& listing, std::uint64_t epoch);

    /// The number to hand to `store`, read before the listing starts.
    [[nodiscard]] std::uint64_t epoch() const;

    /// Forgets that one folder; its parent's and its children's listings stay.
    void remove(const FileUrl& url);

    /// Forgets that folder, and all above and below it.
    void removeAround(const FileUrl& url);

    /// Forgets every listing.
    void clear();

private:
    struct Kept {
        std::string key;
        Listing listing;
    };

    using Order = std::list<Kept>; // least recently used first

    mutable std::mutex m_mutex;
    Order m_order;                                            // guarded by m_mutex
    std::unordered_map<std::string, Order::iterator> m_store; // guarded by m_mutex
    std::uint64_t m_epoch = 0;                                // guarded by m_mutex
};

} // namespace tallyroom
