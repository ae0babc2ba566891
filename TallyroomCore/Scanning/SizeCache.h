#pragma once

#include "Model/FileUrl.h"

#include <cstdint>
#include <mutex>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace tallyroom {

/// The totals of all folders measured so far, by their standardized path. A folder keeps its total until the
/// whole store is emptied. Paths share their beginnings: a folder costs some 60 bytes, however deep it lies.
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
        std::optional<std::int64_t> total;
    };

    /// The one of the process, never destroyed: workers may outlive main().
    static SizeCache& shared();

    SizeCache();

    /// The total that is known for a folder.
    [[nodiscard]] std::optional<std::int64_t> find(const FileUrl& url) const;

    /// Keeps a folder's total.
    void set(std::int64_t total, const FileUrl& url);

    /// The record of a folder, made when there is none.
    [[nodiscard]] Place place(const FileUrl& url);

    /// Fills in places and known totals of children of `parent`, under one lock. When the store was emptied
    /// since `parent` was looked up, nothing is known and nothing will be kept.
    void lookUp(Place parent, std::span<Child> children);

    /// Keeps a total, unless the store was emptied since the place was looked up.
    void store(Place place, std::int64_t total);

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
    };

    struct Store {
        std::vector<Record> records;
        std::vector<char> names;
        std::vector<std::uint32_t> slots; ///< record numbers by hash, 0 for a free slot
    };

    static constexpr std::int64_t unknown = -1;

    static Store emptyStore();
    [[nodiscard]] std::optional<std::uint32_t> known(const FileUrl& url) const;
    [[nodiscard]] std::size_t slotOf(std::uint32_t parent, std::string_view name, std::uint32_t hash) const;
    std::uint32_t child(std::uint32_t parent, std::string_view name);
    void grow();

    mutable std::mutex m_mutex;
    Store m_store;             // guarded by m_mutex
    std::uint64_t m_epoch = 1; // guarded by m_mutex
};

} // namespace tallyroom
