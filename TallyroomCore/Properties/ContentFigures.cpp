#include "Properties/ContentFigures.h"

#include "Concurrency/Thread.h"
#include "FileSystem/TreeWalk.h"
#include "Model/CheckedArithmetic.h"
#include "Model/OutermostUrls.h"

#include <algorithm>
#include <chrono>
#include <mutex>
#include <optional>

namespace tallyroom {

namespace {

using Clock = std::chrono::steady_clock;

/// Nobody reads figures that change faster.
constexpr std::chrono::milliseconds recordInterval{100};

void add(ContentFigures& sum, const ContentFigures& part)
{
    sum.files += part.files;
    sum.folders += part.folders;
    sum.allocatedBytes = saturatedSum(sum.allocatedBytes, part.allocatedBytes);
    sum.logicalBytes = saturatedSum(sum.logicalBytes, part.logicalBytes);
    sum.linkedNames += part.linkedNames;
    sum.unread += part.unread;
    sum.hasUnreadItems |= part.hasUnreadItems;
}

ContentFigures figuresOf(const FileAttributes& file)
{
    return {.files = 1,
            .allocatedBytes = file.allocatedBytes,
            .logicalBytes = file.logicalBytes,
            .linkedNames = file.links > 1 ? 1 : 0};
}

constexpr ContentFigures unreadItem{.files = 1, .unread = 1, .hasUnreadItems = true};

class CountingVisitor final : public TreeWalk::Visitor {
public:
    CountingVisitor(ProgressSender<ContentFigures> sender, const ContentFigures& known)
        : m_sender(std::move(sender)), m_figures(known)
    {}

    [[nodiscard]] TreeWalk::Wish wish(const TreeWalk::Folder& /*folder*/) const override
    {
        return {.attributes = TreeWalk::Attributes::filesAndLinks, .identities = false};
    }

    void unreadable(TreeWalk::Folder& /*folder*/, const SystemError& /*error*/) override
    {
        take({.unread = 1});
    }

    void visit(TreeWalk::Folder& /*folder*/, std::span<TreeWalk::Child> children) override
    {
        ContentFigures batch;
        for (TreeWalk::Child& child : children) {
            child.descend = child.isFolder();
            if (child.isFolder()) {
                ++batch.folders;
            } else if (child.attributes != nullptr) {
                add(batch, figuresOf(*child.attributes));
            } else if (child.failure != 0) {
                add(batch, unreadItem);
            }
        }
        take(batch);
    }

    void finish(bool /*stopped*/) override
    {
        m_sender->send(m_figures);
        m_sender.reset();
    }

private:
    void take(const ContentFigures& batch)
    {
        StreamWake wake; // outlives the lock
        const std::scoped_lock lock{m_mutex};
        add(m_figures, batch);
        if (const auto now = Clock::now(); now - m_sent >= recordInterval) {
            m_sent = now;
            wake = m_sender->enqueue({m_figures});
        }
    }

    std::optional<ProgressSender<ContentFigures>> m_sender;
    std::mutex m_mutex;
    ContentFigures m_figures; // guarded by m_mutex until finish, as what follows
    Clock::time_point m_sent = Clock::now();
};

/// Looks at the files among `entries`, which may wait for the disk, and starts the walk of the folders.
void count(const std::vector<Entry>& entries, ProgressSender<ContentFigures> sender)
{
    UrlSet folders;
    for (const Entry& entry : entries) {
        if (entry.isDirectory) {
            folders.insert(entry.url);
        }
    }
    ContentFigures known; // before the walk
    std::vector<TreeWalk::Root> roots;
    const std::stop_token stop = sender.stopToken();
    for (const Entry& entry : entries) {
        if (stop.stop_requested() || isBelowAny(entry.url, folders)) {
            continue;
        }
        if (entry.isDirectory) {
            known.folders += entries.size() > 1 ? 1 : 0;
            roots.push_back({entry.url, std::make_unique<TreeWalk::Folder>(), TreeWalk::RootLink::refused});
        } else {
            const auto attributes = fileAttributes(entry.url);
            add(known, attributes ? figuresOf(*attributes) : unreadItem);
        }
    }
    TreeWalk::start(WorkerPool::shared(), std::move(roots),
                    std::make_unique<CountingVisitor>(std::move(sender), known), stop);
}

} // namespace

ProgressStream<ContentFigures> countContent(std::vector<Entry> entries)
{
    auto [sender, stream] = makeProgressStream<ContentFigures>();
    std::jthread thread =
        runOnThread([entries = std::move(entries), sender = std::move(sender)](
                        const std::stop_token&) mutable { count(entries, std::move(sender)); });
    if (thread.joinable()) {
        thread.detach();
    }
    return std::move(stream);
}

} // namespace tallyroom
