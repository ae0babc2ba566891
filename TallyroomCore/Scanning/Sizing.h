#pragma once

#include "FileSystem/TreeWalk.h"
#include "Scanning/FolderContents.h"
#include "Scanning/SharedFiles.h"
#include "Scanning/SizeCache.h"

namespace tallyroom {

/// A walk that sums what lies below each folder and keeps every folder's total in the SizeCache. Listings,
/// searches and single measurements derive from it. They decide which attributes a
/// folder needs and what happens with a finished root.
class SizingVisitor : public TreeWalk::Visitor {
public:
    /// A folder that is being summed.
    struct SizedFolder : TreeWalk::Folder {
        std::atomic<std::int64_t> total = 0;
        std::atomic<std::int64_t> unread = 0;
        std::atomic<std::int64_t> countedAgain = 0;
        std::atomic<std::int64_t> files = 0;
        std::atomic<std::int64_t> largestFile = 0;
        std::atomic<std::int64_t> largestFolder = 0;
        std::atomic<std::uint32_t> newest = 0;
        std::atomic<bool> hasUnreadItems = false;
        std::atomic<bool> hasExcluded = false;
        std::optional<SystemError> cause; ///< why it could not be listed
        SizeCache::Place place;
        /// Where all that is found below it is counted at once, for one who cannot wait for totals; may be
        /// null. Folders below it count there too.
        std::atomic<std::int64_t>* soFar = nullptr;
        /// The same for what is found besides bytes.
        FolderContents::Growing* contentSoFar = nullptr;

        [[nodiscard]] FolderSize size() const;

        /// Takes in what is known of a folder that lies in it. Any thread; an overflow ends the process.
        void add(const FolderSize& child);

        /// Takes in items that lie directly in it and are no folders.
        void addItems(const FolderSize& items);

    private:
        void sum(const FolderSize& part);
    };

    /// `cache` knows totals and takes new ones.
    explicit SizingVisitor(SizeCache& cache) : m_cache(cache) {}

    [[nodiscard]] TreeWalk::Wish wish(const TreeWalk::Folder&) const override
    {
        return {.attributes = TreeWalk::Attributes::filesAndLinks, .identities = false};
    }

    void unreadable(TreeWalk::Folder& folder, const SystemError& error) override;
    void visit(TreeWalk::Folder& folder, std::span<TreeWalk::Child> children) override;
    std::unique_ptr<TreeWalk::Folder> descendInto(TreeWalk::Folder& parent,
                                                  const TreeWalk::Child& child) override;
    void leave(TreeWalk::Folder& folder, bool whole) override;

protected:
    /// Looks up the totals of those children that are folders: a folder without one is to be entered, and
    /// its place is its mark. Calls `know(child, size)` for the others.
    template <class Know>
    void lookUpFolders(const SizedFolder& folder, std::span<TreeWalk::Child> children, Know know);

    /// Keeps which children could not be examined.
    void keepUnread(const SizedFolder& folder, std::span<const TreeWalk::Child> children);

    /// A folder's total is complete.
    virtual void measured(SizedFolder& folder, const FolderSize& size) = 0;

    /// Counts the files of a folder that have other names in the tree.
    void countShared(SizedFolder& folder, std::span<const TreeWalk::Child> children);

    /// In which child of the listed folder a file lies.
    [[nodiscard]] virtual std::string_view childWith(const SizedFolder& /*folder*/,
                                                     const TreeWalk::Child& /*file*/) const
    {
        return {};
    }

    /// A file lies in several children of the listed folder; `child` is not the first one of them by name.
    virtual void sharedWith(std::string_view /*child*/, std::int64_t /*bytes*/) {}

    [[nodiscard]] SizeCache& cache() const noexcept { return m_cache; }

private:
    void meet(SizedFolder& folder, const FileAttributes& file, std::string_view child);

    SizeCache& m_cache;
    SharedFiles m_shared;
};

/// Adds to a total that many workers share; an overflow ends the process.
void addChecked(std::atomic<std::int64_t>& total, std::int64_t bytes);

template <class Know>
void SizingVisitor::lookUpFolders(const SizedFolder& folder, std::span<TreeWalk::Child> children, Know know)
{
    thread_local std::vector<SizeCache::Child> wanted;
    wanted.clear();
    for (const TreeWalk::Child& child : children) {
        if (child.isFolder()) {
            wanted.push_back({child.name, {}, {}});
        }
    }
    if (wanted.empty()) {
        return;
    }
    m_cache.lookUp(folder.place, wanted);
    auto answer = wanted.cbegin();
    for (TreeWalk::Child& child : children) {
        if (!child.isFolder()) {
            continue;
        }
        if (answer->size && child.exclusion == 0) {
            know(child, *answer->size);
        } else {
            child.descend = true;
            child.mark = answer->place.record;
        }
        ++answer;
    }
}

} // namespace tallyroom
