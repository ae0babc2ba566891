#include "Scanning/Sizing.h"

#include "Model/CheckedArithmetic.h"
#include "Scanning/FileScanner.h"
#include "Scanning/ListedEntry.h"

#include <algorithm>
#include <future>
#include <tuple>

namespace tallyroom {

void addChecked(std::atomic<std::int64_t>& total, std::int64_t bytes)
{
    std::ignore = checkedSum(total.fetch_add(bytes, std::memory_order_relaxed), bytes);
}

FolderSize SizingVisitor::SizedFolder::size() const
{
    const std::int64_t bytes = total.load();
    return {.bytes = bytes,
            .unread = unread.load(),
            .countedAgain = countedAgain.load(),
            .files = files.load(),
            .largestFile = largestFile.load(),
            .largestFolder = largestFolder.load(),
            .newest = newest.load(),
            .hasUnreadItems = hasUnreadItems.load(),
            .hasExcluded = hasExcluded.load(),
            .isUnreadable = cause.has_value() && bytes == 0};
}

void SizingVisitor::SizedFolder::add(const FolderSize& child)
{
    sum(child);
    raise(largestFolder, child.bytes);
}

void SizingVisitor::SizedFolder::addItems(const FolderSize& items)
{
    sum(items);
    raise(largestFile, items.largestFile);
}

void SizingVisitor::SizedFolder::sum(const FolderSize& part)
{
    addChecked(total, part.bytes);
    files.fetch_add(part.files, std::memory_order_relaxed);
    raise(newest, part.newest);
    if (part.unread > 0) {
        unread.fetch_add(part.unread, std::memory_order_relaxed);
    }
    if (part.countedAgain > 0) {
        addChecked(countedAgain, part.countedAgain);
    }
    if (part.hasUnreadItems) {
        hasUnreadItems = true;
    }
    if (part.hasExcluded) {
        hasExcluded = true;
    }
}

void SizingVisitor::unreadable(TreeWalk::Folder& folder, const SystemError& error)
{
    auto& sized = static_cast<SizedFolder&>(folder);
    sized.cause = error;
    sized.hasExcluded = sized.hasExcluded || error.isExclusion();
    sized.unread.fetch_add(1, std::memory_order_relaxed);
}

void SizingVisitor::keepUnread(const SizedFolder& folder, std::span<const TreeWalk::Child> children)
{
    std::vector<SizeCache::UnreadItem> items;
    for (const TreeWalk::Child& child : children) {
        if (child.failure != 0 && !child.isFolder()) {
            items.push_back({child.name, {child.failure}});
        }
    }
    if (!items.empty()) {
        m_cache.noteUnread(folder.place, items);
    }
}

void SizingVisitor::countShared(SizedFolder& folder, std::span<const TreeWalk::Child> children)
{
    for (const TreeWalk::Child& child : children) {
        if (child.attributes != nullptr && child.attributes->links > 1 && !child.isFolder()) {
            meet(folder, *child.attributes, childWith(folder, child));
        }
    }
}

/// A name counts again in the deepest folder that holds another one, and in all folders above that.
void SizingVisitor::meet(SizedFolder& folder, const FileAttributes& file, std::string_view child)
{
    const auto [earlier, first] = m_shared.meet(file, folder.place.record, child);
    const auto record = earlier.empty() ? std::nullopt : m_cache.meetingPlace(folder.place, earlier);
    if (!record) {
        return;
    }
    auto* above = &folder;
    while (above != nullptr && above->place.record != *record) {
        above = static_cast<SizedFolder*>(above->parent());
    }
    if (above == nullptr) {
        return; // in another tree of this walk
    }
    addChecked(above->countedAgain, file.allocatedBytes);
    if (above->isRoot()) {
        sharedWith(std::max<std::string_view>(child, first), file.allocatedBytes);
    }
}

void SizingVisitor::visit(TreeWalk::Folder& folder, std::span<TreeWalk::Child> children)
{
    auto& sized = static_cast<SizedFolder&>(folder);
    const FolderSize items = sizeOfItems(children);
    FolderSize found = items;
    sized.addItems(items);
    countShared(sized, children);
    lookUpFolders(sized, children, [&](const TreeWalk::Child&, const FolderSize& known) {
        sized.add(known);
        found.bytes = saturatedSum(found.bytes, known.bytes);
        found.files += known.files;
        found.newest = std::max(found.newest, known.newest);
    });
    if (sized.soFar != nullptr) {
        sized.soFar->fetch_add(found.bytes, std::memory_order_relaxed);
    }
    if (sized.contentSoFar != nullptr) {
        sized.contentSoFar->add(found);
    }
    if (items.unread > 0) {
        keepUnread(sized, children);
    }
}

std::unique_ptr<TreeWalk::Folder> SizingVisitor::descendInto(TreeWalk::Folder& parent,
                                                             const TreeWalk::Child& child)
{
    auto folder = std::make_unique<SizedFolder>();
    const auto& above = static_cast<SizedFolder&>(parent);
    folder->place = {above.place.epoch, static_cast<std::uint32_t>(child.mark)};
    folder->soFar = above.soFar;
    folder->contentSoFar = above.contentSoFar;
    return folder;
}

void SizingVisitor::leave(TreeWalk::Folder& folder, bool whole)
{
    auto& sized = static_cast<SizedFolder&>(folder);
    if (!whole) {
        return;
    }
    const FolderSize size = sized.size();
    m_cache.store(sized.place, size, sized.cause);
    if (auto* const parent = static_cast<SizedFolder*>(sized.parent())) {
        parent->add(size);
    }
    measured(sized, size);
}

namespace {

/// Measures one folder for a caller that waits.
class SingleSizing final : public SizingVisitor {
public:
    explicit SingleSizing(std::promise<FolderSize> result)
        : SizingVisitor(SizeCache::shared()), m_result(std::move(result))
    {}

    void finish(bool /*stopped*/) override { m_result.set_value(m_size); }

protected:
    void measured(SizedFolder& folder, const FolderSize& size) override
    {
        if (folder.isRoot()) {
            m_size = size;
        }
    }

private:
    std::promise<FolderSize> m_result;
    FolderSize m_size;
};

} // namespace

std::int64_t FileScanner::directorySize(const FileUrl& url)
{
    return measure(url).bytes;
}

FolderSize FileScanner::measure(const FileUrl& url)
{
    const auto attributes = fileAttributes(url);
    if (!attributes) {
        return {};
    }
    if (attributes->type != EntryType::folder) {
        return {.bytes = attributes->allocatedBytes};
    }
    if (const auto known = SizeCache::shared().find(url)) {
        return *known;
    }
    auto root = std::make_unique<SizingVisitor::SizedFolder>();
    root->place = SizeCache::shared().place(url);
    std::promise<FolderSize> promise;
    auto total = promise.get_future();
    TreeWalk::start({url.standardized(), std::move(root)}, std::make_unique<SingleSizing>(std::move(promise)),
                    {});
    return total.get();
}

} // namespace tallyroom
