#include "Removal/LookAhead.h"

#include "FileSystem/MountTable.h"
#include "FileSystem/RealPath.h"
#include "FileSystem/TreeWalk.h"

#include <algorithm>
#include <future>
#include <memory>
#include <span>
#include <utility>
#include <vector>

namespace tallyroom {

namespace {

class Onlooker final : public TreeWalk::Visitor {
public:
    explicit Onlooker(std::promise<void> end) : m_end(std::move(end)) {}

    [[nodiscard]] TreeWalk::Wish wish(const TreeWalk::Folder& /*folder*/) const override
    {
        return {TreeWalk::Attributes::filesAndLinks};
    }

    void visit(TreeWalk::Folder& folder, std::span<TreeWalk::Child> children) override
    {
        for (TreeWalk::Child& child : children) {
            child.descend = child.isFolder() && folder.position().child(child.name).mountPoint() == nullptr;
        }
    }

    void finish(bool /*stopped*/) override { m_end.set_value(); }

private:
    std::promise<void> m_end;
};

bool lieOnHeads(const FileUrl& folder, const DiskSense& sense)
{
    const auto mount = MountTable::holding(folder, MountTable::reachable(MountTable::read()));
    const auto disks = mount ? sense.rotatingDisks(*mount) : std::vector<std::string>{};
    return !disks.empty() && !sense.lookSolid(disks);
}

} // namespace

void lookAhead(int parent, const std::string& name, const std::stop_token& stop, const DiskSense& sense)
{
    const auto path = realPathOf(parent);
    if (!path || !lieOnHeads(FileUrl{*path}, sense)) {
        return;
    }
    std::promise<void> promise;
    const auto end = promise.get_future();
    std::vector<TreeWalk::Root> roots;
    roots.push_back(
        {FileUrl{*path}.appending(name), std::make_unique<TreeWalk::Folder>(), TreeWalk::RootLink::refused});
    TreeWalk::start(WorkerPool::shared(), std::move(roots), std::make_unique<Onlooker>(std::move(promise)),
                    stop, sense);
    end.wait(); // a pool that leaves breaks the promise
}

} // namespace tallyroom
