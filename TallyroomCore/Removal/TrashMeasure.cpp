#include "Removal/TrashMeasure.h"

#include "FileSystem/TreeWalk.h"
#include "Model/CheckedArithmetic.h"

#include <deque>
#include <future>
#include <memory>
#include <mutex>
#include <utility>

namespace tallyroom {

namespace {

using TrashMeasure::Item;

/// Shared by the walk and the thread that waits for it.
struct Findings {
    std::mutex mutex;
    std::deque<Item> items;   // guarded by mutex; an item never moves
    std::uint32_t unread = 0; // guarded by mutex
    std::promise<bool> isWhole;
};

/// Every name of a root is an item, and all that is below counts for it.
class ItemVisitor final : public TreeWalk::Visitor {
public:
    struct Root : TreeWalk::Folder {
        explicit Root(std::size_t place) : folder(place) {}

        std::size_t folder;
    };

    explicit ItemVisitor(std::shared_ptr<Findings> findings) : m_findings(std::move(findings)) {}

    [[nodiscard]] bool seesExcluded() const override { return true; }

    [[nodiscard]] TreeWalk::Wish wish(const TreeWalk::Folder& folder) const override
    {
        return {folder.isRoot() ? TreeWalk::Attributes::everything : TreeWalk::Attributes::filesAndLinks,
                false};
    }

    void unreadable(TreeWalk::Folder& folder, const SystemError& /*error*/) override
    {
        const std::scoped_lock lock{m_findings->mutex};
        ++(folder.isRoot() ? m_findings->unread : static_cast<Below&>(folder).item->entry.unread);
    }

    void visit(TreeWalk::Folder& folder, std::span<TreeWalk::Child> children) override
    {
        if (folder.isRoot()) {
            list(static_cast<Root&>(folder), children);
        } else {
            add(*static_cast<Below&>(folder).item, children);
        }
    }

    std::unique_ptr<TreeWalk::Folder> descendInto(TreeWalk::Folder& parent,
                                                  const TreeWalk::Child& child) override
    {
        auto folder = std::make_unique<Below>();
        if (parent.isRoot()) {
            const std::scoped_lock lock{m_findings->mutex};
            folder->item = &m_findings->items[child.mark];
        } else {
            folder->item = static_cast<Below&>(parent).item;
        }
        return folder;
    }

    void finish(bool stopped) override { m_findings->isWhole.set_value(!stopped); }

private:
    struct Below : TreeWalk::Folder {
        Item* item = nullptr;
    };

    void list(const Root& root, std::span<TreeWalk::Child> children)
    {
        const ScanRoot& scanRoot = root.scanRoot();
        const std::scoped_lock lock{m_findings->mutex};
        for (TreeWalk::Child& child : children) {
            if (child.attributes == nullptr) {
                m_findings->unread += child.failure != 0 ? 1 : 0; // else it is gone
                continue;
            }
            child.mark = m_findings->items.size();
            child.descend = child.isFolder();
            m_findings->items.push_back(
                {{.url = root.url(child.name),
                  .name = std::string{child.name},
                  .sizeBytes = child.isFolder() ? 0 : child.attributes->allocatedBytes,
                  .isDirectory = child.isFolder(),
                  .form = child.form(),
                  .modifiedAt = child.attributes->modifiedAt,
                  .identity = scanRoot.identify(*child.attributes)},
                 root.folder});
        }
    }

    void add(Item& item, std::span<TreeWalk::Child> children)
    {
        std::int64_t bytes = 0;
        std::uint32_t unread = 0;
        for (TreeWalk::Child& child : children) {
            if (child.isFolder()) {
                child.descend = true;
            } else if (child.attributes != nullptr) {
                bytes = saturatedSum(bytes, child.attributes->allocatedBytes);
            } else if (child.failure != 0) {
                ++unread;
            }
        }
        const std::scoped_lock lock{m_findings->mutex};
        item.entry.sizeBytes = saturatedSum(item.entry.sizeBytes, bytes);
        item.entry.unread += unread;
    }

    std::shared_ptr<Findings> m_findings;
};

} // namespace

std::optional<TrashMeasure::Result> TrashMeasure::measure(const std::vector<FileUrl>& folders,
                                                          const std::stop_token& stop)
{
    const auto findings = std::make_shared<Findings>();
    std::vector<TreeWalk::Root> roots;
    for (std::size_t place = 0; place < folders.size(); ++place) {
        roots.push_back(
            {folders[place], std::make_unique<ItemVisitor::Root>(place), TreeWalk::RootLink::refused});
    }
    auto isWhole = findings->isWhole.get_future();
    TreeWalk::start(WorkerPool::shared(), std::move(roots), std::make_unique<ItemVisitor>(findings), stop);
    if (!isWhole.get()) {
        return std::nullopt;
    }
    const std::scoped_lock lock{findings->mutex};
    return Result{
        {std::make_move_iterator(findings->items.begin()), std::make_move_iterator(findings->items.end())},
        findings->unread};
}

} // namespace tallyroom
