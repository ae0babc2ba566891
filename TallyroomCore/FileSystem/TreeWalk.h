#pragma once

#include "Concurrency/WorkerPool.h"
#include "FileSystem/DiskSense.h"
#include "FileSystem/FileAttributes.h"
#include "FileSystem/FileDescriptor.h"
#include "FileSystem/FolderReader.h"
#include "FileSystem/MountPlaces.h"
#include "FileSystem/ScanRoots.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

namespace tallyroom {

/// The one parallel walk that every search stands on. A folder is one piece of work, and so is every further
/// buffer of names of a large folder, or a part of one where the disk is slow: all workers of the pool share
/// a tree whatever its shape. What lies on a rotating disk is read in the order of inode numbers instead, by
/// one worker a disk (DiskPace). Folders are opened relative to their open parent, never through a link;
/// depth, name and path length are unlimited and nothing recurses on the stack. Open descriptors are bounded.
/// A stop is asked once a folder and every 256 entries.
class TreeWalk {
    struct Spindles;

public:
    struct Child;

    /// A folder on its way through the walk. Visitors derive from it to keep their sums.
    class Folder {
    public:
        Folder() = default;
        Folder(const Folder&) = delete;
        Folder& operator=(const Folder&) = delete;
        virtual ~Folder() = default;

        /// The folder that holds it; none for a root of the walk. Alive as long as this one.
        [[nodiscard]] Folder* parent() const noexcept { return m_parent; }

        [[nodiscard]] bool isRoot() const noexcept { return m_parent == nullptr; }

        /// Its name; for a root the path it was given by.
        [[nodiscard]] const std::string& name() const noexcept { return m_name; }

        /// Its location, put together from the names up to the root. O(depth).
        [[nodiscard]] FileUrl url() const;

        /// The location of an item in it.
        [[nodiscard]] FileUrl url(std::string_view child) const;

        /// The open folder while it is being visited, for calls relative to it; -1 when it could not be
        /// opened.
        [[nodiscard]] int descriptor() const noexcept { return m_descriptor.get(); }

        /// Which mount holds it. Known from its first visit on.
        [[nodiscard]] const MountPlaces::Position& position() const noexcept { return m_position; }

        /// The root of its walk as an item's identity remembers it. During a visit; O(depth).
        [[nodiscard]] const ScanRoot& scanRoot() const;

    private:
        friend class TreeWalk;

        /// Becomes a folder in `parent`, on the same disk.
        void standBelow(Folder& parent, const Child& child);

        /// Opens it by its path below the root, however long that is.
        [[nodiscard]] SystemResult<FileDescriptor> openFromRoot() const;

        Folder* m_parent = nullptr;
        std::string m_name;
        FileDescriptor m_descriptor;
        MountPlaces::Position m_position;
        Spindles* m_spindles = nullptr;          ///< where a rotating disk holds it
        std::uint64_t m_inode = 0;               ///< as its parent lists it
        std::atomic<std::uint32_t> m_pending{1}; ///< its own listing, its buffers, its child folders
        std::atomic<std::uint32_t> m_uses{1};    ///< who still needs the descriptor
        std::uint64_t m_serial = 0;              ///< tells one folder from a later one at the same address
        int m_exclusion = 0;                     ///< why it is not read though it may be
        bool m_keepsOpen = false;                ///< children are opened relative to the descriptor
        FolderAccess m_rootAccess = FolderAccess::listing;         ///< how a root is opened
        mutable std::atomic<const ScanRoot*> m_scanRoot = nullptr; ///< of a root that was asked for it
    };

    /// A child of a folder, as a batch shows it.
    struct Child {
        std::string_view name; ///< zero-terminated; good during the visit only
        EntryType type = EntryType::unknown;
        const FileAttributes* attributes = nullptr; ///< none when not asked for, or not readable
        int failure = 0;                            ///< errno: why not readable; 0 for what is gone
        std::size_t index = 0;                      ///< its place in the listing, for folders counted first
        std::uint64_t inode = 0;                    ///< as listed: of a mount point, what it covers
        std::uint64_t mark = 0;                     ///< the visitor's own, from `visit` to `descendInto`
        bool descend = false;                       ///< the visitor's answer: walk into this folder
        int exclusion = 0;                          ///< why this folder is told as unreadable when entered

        [[nodiscard]] bool isFolder() const noexcept { return type == EntryType::folder; }

        [[nodiscard]] EntryForm form() const noexcept
        {
            return type == EntryType::link ? EntryForm::link
                   : attributes != nullptr ? attributes->form
                                           : EntryForm::ordinary;
        }
    };

    /// Whose attributes are read before the visit. Types are always known.
    enum class Attributes : unsigned char { none, files, filesAndLinks, everything };

    /// A visitor's request for one folder.
    struct Wish {
        Attributes attributes = Attributes::none;
        /// Read all names before the first visit, and call `counted` with their number.
        bool countFirst = false;
        /// What `stamp` hashes is told too. Sizes and dates alone cost less: the kernel keeps the birth time
        /// apart from them.
        bool identities = true;

        [[nodiscard]] bool asksFor(EntryType type) const noexcept;
    };

    /// Sees the tree. All calls but `finish` come from many workers at once, for one folder too.
    class Visitor {
    public:
        Visitor() = default;
        Visitor(const Visitor&) = delete;
        Visitor& operator=(const Visitor&) = delete;
        virtual ~Visitor() = default;

        [[nodiscard]] virtual Wish wish(const Folder& folder) const = 0;

        /// Whether it sees what the user excludes from scans.
        [[nodiscard]] virtual bool seesExcluded() const { return false; }

        /// A folder cannot be opened, or is excluded, and counts as empty: before `counted`. Or its names
        /// cannot be read to the end: after their visits, or at once with them. On one thread. Not called for
        /// a folder below the root that went, or was replaced, since its name was read.
        virtual void unreadable(Folder& /*folder*/, const SystemError& /*error*/) {}

        /// All names of a folder were read; before its first visit, on one thread.
        virtual void counted(Folder& /*folder*/, std::size_t /*names*/) {}

        /// The children of a folder in one batch; large folders come in several, maybe at once. Answers by
        /// setting `descend` on children that are folders.
        virtual void visit(Folder& folder, std::span<Child> children) = 0;

        /// The record of a child folder that the walk enters.
        [[nodiscard]] virtual std::unique_ptr<Folder> descendInto(Folder& /*parent*/, const Child& /*child*/)
        {
            return std::make_unique<Folder>();
        }

        /// Everything below `folder` is done: `whole`, or partly given up after a stop. Children come before
        /// their parents.
        virtual void leave(Folder& /*folder*/, bool /*whole*/) {}

        /// The walk has ended; called once, the last of all calls.
        virtual void finish(bool stopped) = 0;
    };

    /// Whether a root may be a link to a folder.
    enum class RootLink : bool { refused, followed };

    /// A folder to start from, and its record. Roots are opened by path, through links on the way.
    struct Root {
        FileUrl url;
        std::unique_ptr<Folder> folder;
        RootLink link = RootLink::followed;
    };

    /// Starts a walk on the pool and returns at once. The pool keeps the visitor until it has finished.
    static void start(WorkerPool& pool, std::vector<Root> roots, std::unique_ptr<Visitor> visitor,
                      std::stop_token stop, const DiskSense& sense = DiskSense::machine());

    /// The same from one root, on the process's pool.
    static void start(Root root, std::unique_ptr<Visitor> visitor, std::stop_token stop);

private:
    struct Piece;
    struct Item;
    class DiskAccount;
    class Agenda;
    class OpenFolders;
    class Run;
};

} // namespace tallyroom
