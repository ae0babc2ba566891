#include "Scanning/Sizing.h"

#include "Model/CheckedArithmetic.h"
#include "Scanning/FileScanner.h"

#include <future>
#include <tuple>

namespace tallyroom {

void addChecked(std::atomic<std::int64_t>& total, std::int64_t bytes)
{
    std::ignore = checkedSum(total.fetch_add(bytes, std::memory_order_relaxed), bytes);
}

void SizingVisitor::visit(TreeWalk::Folder& folder, std::span<TreeWalk::Child> children)
{
    auto& sized = static_cast<SizedFolder&>(folder);
    std::int64_t total = 0;
    for (const TreeWalk::Child& child : children) {
        if (!child.isFolder() && child.attributes != nullptr) {
            total = checkedSum(total, child.attributes->allocatedBytes);
        }
    }
    lookUpFolders(sized, children,
                  [&total](const TreeWalk::Child&, std::int64_t known) { total = checkedSum(total, known); });
    addChecked(sized.total, total);
}

std::unique_ptr<TreeWalk::Folder> SizingVisitor::descendInto(TreeWalk::Folder& parent,
                                                             const TreeWalk::Child& child)
{
    auto folder = std::make_unique<SizedFolder>();
    folder->place = {static_cast<SizedFolder&>(parent).place.epoch, static_cast<std::uint32_t>(child.mark)};
    return folder;
}

void SizingVisitor::leave(TreeWalk::Folder& folder, bool whole)
{
    auto& sized = static_cast<SizedFolder&>(folder);
    if (!whole) {
        return;
    }
    const std::int64_t total = sized.total.load();
    m_cache.store(sized.place, total);
    if (auto* const parent = static_cast<SizedFolder*>(sized.parent())) {
        addChecked(parent->total, total);
    }
    measured(sized, total);
}

namespace {

/// Measures one folder for a caller that waits.
class SingleSizing final : public SizingVisitor {
public:
    explicit SingleSizing(std::promise<std::int64_t> result)
        : SizingVisitor(SizeCache::shared()), m_result(std::move(result))
    {}

    void finish(bool /*stopped*/) override { m_result.set_value(m_total); }

protected:
    void measured(SizedFolder& folder, std::int64_t total) override
    {
        if (folder.isRoot()) {
            m_total = total;
        }
    }

private:
    std::promise<std::int64_t> m_result;
    std::int64_t m_total = 0;
};

} // namespace

std::int64_t FileScanner::directorySize(const FileUrl& url)
{
    const auto attributes = fileAttributes(url);
    if (!attributes) {
        return 0;
    }
    if (attributes->type != EntryType::folder) {
        return attributes->allocatedBytes;
    }
    if (const auto known = SizeCache::shared().find(url)) {
        return *known;
    }
    auto root = std::make_unique<SizingVisitor::SizedFolder>();
    root->place = SizeCache::shared().place(url);
    std::promise<std::int64_t> promise;
    auto total = promise.get_future();
    TreeWalk::start({url.standardized(), std::move(root)}, std::make_unique<SingleSizing>(std::move(promise)),
                    {});
    return total.get();
}

} // namespace tallyroom
