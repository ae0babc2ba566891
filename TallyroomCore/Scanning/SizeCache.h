#pragma once

#include "FileSystem/UnreadPlaces.h"
#include "Scanning/FolderSize.h"

#include <cstdint>
#include <mutex>
#include <optional>
#include <span>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace tallyroom {

/// The totals of all folders measured so far, by their standardized path, and what could not be read. A
/// folder keeps its total until the whole store is emptied. Paths share their beginnings: a folder costs some
/// 75 bytes, however deep it lies.
/// Any thread; the one lock is held for one short step and never across file-system access.
class SizeCache {
public:
    /// A folder's record, as long as the store is not emptied.
    struct Place {
        std::uint64_t epoch = 0;
        std::uint32_t record = 0;
    };

    /// A child folder to look up.
    struct Child {
        std::string_view name;
        Place place;
        std::optional<FolderSize> size;
    };

    /// An item of a folder that could not be examined.
    struct UnreadItem {
        std::string_view name;
        SystemError error;
    };

    /// The one of the process, never destroyed: workers may outlive main().
    static SizeCache& shared();

    SizeCache();

    /// The total that is known for a folder.
    [[nodiscard]] std::optional<FolderSize> find(const FileUrl& url) const;
    [[nodiscard]] std::optional<FolderSize> find(Place place) const;

    /// Keeps a folder's total.
    void set(const FolderSize& size, const FileUrl& url);

    /// The record of a folder, made when there is none.
    [[nodiscard]] Place place(const FileUrl& url);

    /// Fills in places and known totals of children of `parent`, under one lock. When the store was emptied
    /// since `parent` was looked up, nothing is known and nothing will be kept.
    void lookUp(Place parent, std::span<Child> children);

    /// Keeps a total, unless the store was emptied since the place was looked up. `cause` is why the folder
    /// could not be listed, or not to its end.
    void store(Place place, const FolderSize& size, const std::optional<SystemError>& cause = {});

    /// Keeps which items of a folder could not be examined. They count in the folder's total.
    void noteUnread(Place folder, std::span<const UnreadItem> items);

    /// The deepest folder that holds both `folder` and one of `others`, which were looked up in the same
    /// epoch; nothing after that.
    [[nodiscard]] std::optional<std::uint32_t> meetingPlace(Place folder,
                                                            std::span<const std::uint32_t> others) const;

    /// What could not be read in a folder that was measured and below it, as far as the store knows: it is
    /// empty after `clear`. Linear in all that is unread.
    [[nodiscard]] UnreadPlaces unreadPlaces(const FileUrl& url) const;

    /// By record: the sum of the totals known below a folder that has none itself, for `folder` and what was
    /// met below it. Empty when the store was emptied since the place was looked up. Linear in the store.
    [[nodiscard]] std::vector<std::int64_t> knownBelow(Place folder) const;

    /// Forgets everything, totals that are being measured included.
    void clear();

    /// How many bytes the store holds, for the benchmarks.
    [[nodiscard]] std::size_t memory() const;

private:
    /// A tree of names: a path is the chain of records up to record 0, the root.
    struct Record {
        std::int64_t total = unknown;
        std::uint32_t parent = 0;
        std::uint32_t nameOffset = 0;
        std::uint32_t hash = 0;
        std::uint16_t nameLength = 0;
        bool hasRemark = false; ///< in what would be padding
    };

    /// Beside each record.
    struct Content {
        std::uint32_t files = 0; ///< stays at its largest value rather than wrap
        std::uint32_t newest = 0;
        std::uint16_t largestFile = 0; ///< rounded up
        std::uint16_t largestFolder = 0;
    };

    /// What few records need: those with something unread, or with files of several names.
    struct Remark {
        std::int64_t unread = 0;
        std::int64_t countedAgain = 0;
        int cause = 0; ///< errno: why this very item could not be read
        bool hasUnreadItems = false;
        bool hasExcluded = false;
        bool isUnreadable = false;
        bool isItem = false; ///< no folder
    };

    struct Store {
        std::vector<Record> records;
        std::vector<Content> contents; ///< of the records, apart from them for the sake of their alignment
        std::vector<char> names;
        std::vector<std::uint32_t> slots; ///< record numbers by hash, 0 for a free slot
        std::unordered_map<std::uint32_t, Remark> remarks;
    };

    static constexpr std::int64_t unknown = -1;

    static Store emptyStore();
    [[nodiscard]] std::optional<FolderSize> sizeAt(std::uint32_t record) const;
    [[nodiscard]] bool isBelow(std::uint32_t record, std::uint32_t folder) const;
    [[nodiscard]] FileUrl urlOf(std::uint32_t record) const;
    [[nodiscard]] std::optional<std::uint32_t> known(const FileUrl& url) const;
    [[nodiscard]] std::size_t slotOf(std::uint32_t parent, std::string_view name, std::uint32_t hash) const;
    std::uint32_t child(std::uint32_t parent, std::string_view name);
    void grow();

    mutable std::mutex m_mutex;
    Store m_store;             // guarded by m_mutex
    std::uint64_t m_epoch = 1; // guarded by m_mutex
};

} // namespace tallyroom
