#pragma once

#include "FileSystem/FileDescriptor.h"
#include "Model/FileUrl.h"

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

namespace tallyroom {

constexpr std::int64_t operator""_KiB(unsigned long long count)
{
    return static_cast<std::int64_t>(count) * 1024;
}

constexpr std::int64_t operator""_MiB(unsigned long long count)
{
    return static_cast<std::int64_t>(count) * 1024 * 1024;
}

/// One item of a tree that a test describes; made by the functions below.
struct TreeItem {
    enum class Kind : unsigned char { folder, file, sparseFile, link, hardLink, fifo, socket };

    Kind kind = Kind::file;
    std::string path;    ///< relative to the tree; missing folders on the way are made
    std::string content; ///< of a file, or a link's target as it is written
    std::int64_t size = 0;
    std::optional<mode_t> mode = {};
    std::optional<uid_t> owner = {};
    std::optional<std::int64_t> modified = {};

    /// Sets the permissions, whatever the umask.
    [[nodiscard]] TreeItem withMode(mode_t permissions) &&;

    /// Gives the item to another user (root only).
    [[nodiscard]] TreeItem ownedBy(uid_t user) &&;

    /// Sets the modification time, in seconds since 1970.
    [[nodiscard]] TreeItem modifiedAt(std::int64_t seconds) &&;
};

[[nodiscard]] TreeItem folder(std::string path);

/// A regular file of `size` bytes, all of them written.
[[nodiscard]] TreeItem file(std::string path, std::int64_t size = 0);

/// A regular file with this content.
[[nodiscard]] TreeItem file(std::string path, std::string content);

/// A regular file of `size` bytes that occupies none.
[[nodiscard]] TreeItem sparseFile(std::string path, std::int64_t size);

/// A symbolic link; `target` is written as it stands.
[[nodiscard]] TreeItem link(std::string path, std::string target);

/// A second name of a file of the same tree.
[[nodiscard]] TreeItem hardLink(std::string path, std::string existing);

[[nodiscard]] TreeItem fifo(std::string path);

[[nodiscard]] TreeItem socket(std::string path);

/// "d/d/d" for `name` "d" and a depth of 3: `folder(chain("d", 10'000))` is a deep tree.
[[nodiscard]] std::string chain(std::string_view name, std::size_t depth);

/// The bytes that an item occupies on its disk; a link is not followed.
[[nodiscard]] std::int64_t allocated(const std::string& path);

/// A tree in a new temporary folder, removed with all that it holds at the end of its life. Names may hold
/// any byte; path length is unlimited, depth too if the test removes what is deeper than a few hundred
/// levels. A change that fails throws std::system_error.
class TemporaryTree {
public:
    TemporaryTree(std::initializer_list<TreeItem> items = {});
    TemporaryTree(const TemporaryTree&) = delete;
    TemporaryTree& operator=(const TemporaryTree&) = delete;
    ~TemporaryTree();

    /// Adds items in the order given. Folders that exist already are fine.
    void add(std::initializer_list<TreeItem> items);
    void add(const TreeItem& item);

    /// Adds many empty files to a folder, quickly: `beginning` and a number from 0.
    void addEmptyFiles(const std::string& folderPath, const std::string& beginning, int count);

    /// Removes a file, a link or an empty folder.
    void remove(const std::string& relative) const;

    void rename(const std::string& from, const std::string& to) const;

    /// Lets two items change places.
    void exchange(const std::string& one, const std::string& other) const;

    /// Writes into a file.
    void overwrite(const std::string& relative, std::string_view bytes, std::int64_t offset) const;

    /// Makes a change to a file, or puts another in its place, and sets its modification time back.
    void keepingItsTime(const std::string& relative, const std::function<void()>& change) const;

    /// The absolute path of an item, its text after the tree's own path kept as given ("shortcut/" too).
    [[nodiscard]] std::string path(std::string_view relative = {}) const;

    [[nodiscard]] FileUrl url(std::string_view relative = {}) const { return FileUrl{path(relative)}; }

    /// True when the item is there; for a link, the link itself.
    [[nodiscard]] bool exists(std::string_view relative) const;

    /// The bytes of a file, or of a link's text; empty when there is none.
    [[nodiscard]] std::string content(std::string_view relative) const;

    /// The names in a folder, sorted by bytes; empty when there is none.
    [[nodiscard]] std::vector<std::string> names(std::string_view relative = {}) const;

private:
    void removeAll() noexcept;

    std::string m_root;
    FileDescriptor m_folder;
    std::vector<std::string> m_closed; ///< folders that may be closed to their owner
};

} // namespace tallyroom
