#pragma once

#include "Scanning/FolderSize.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>

namespace tallyroom {

/// What a listing found in the folders that it lists besides bytes, by their names. It grows while they are
/// measured. Any thread.
class FolderContents {
public:
    struct Content {
        std::int64_t files = 0;   ///< items that are no folders, at any depth
        std::uint32_t newest = 0; ///< as FolderSize has it

        friend bool operator==(const Content&, const Content&) = default;
    };

    /// The content of one folder so far.
    class Growing {
    public:
        explicit Growing(std::atomic<std::int64_t>& counted) : m_counted(counted) {}

        /// Takes in a part of it.
        void add(const FolderSize& part);

        [[nodiscard]] Content content() const { return {m_files, m_newest}; }

    private:
        friend class FolderContents;

        std::atomic<std::int64_t>& m_counted;
        std::atomic<std::int64_t> m_files = 0;
        std::atomic<std::uint32_t> m_newest = 0;
    };

    /// That of a folder, empty at first; it stays where it is.
    [[nodiscard]] Growing& of(const std::string& name);

    /// A folder was measured.
    void set(const std::string& name, const FolderSize& size);

    /// Items were found in the listed folder itself.
    void count(std::int64_t bytes) { m_counted.fetch_add(bytes, std::memory_order_relaxed); }

    /// The bytes found so far in all of the listed folder.
    [[nodiscard]] std::int64_t countedBytes() const { return m_counted; }

    /// None for a folder that the listing has not met.
    [[nodiscard]] std::optional<Content> find(const std::string& name) const;

private:
    std::atomic<std::int64_t> m_counted = 0;
    mutable std::mutex m_mutex;
    std::unordered_map<std::string, Growing> m_folders; // guarded by m_mutex, but for what is atomic
};

using SharedFolderContents = std::shared_ptr<FolderContents>;

/// Makes a number that many workers share at least as large as `least`.
template <class Number>
void raise(std::atomic<Number>& number, Number least)
{
    Number known = number.load(std::memory_order_relaxed);
    while (known < least && !number.compare_exchange_weak(known, least, std::memory_order_relaxed)) {
    }
}

} // namespace tallyroom
