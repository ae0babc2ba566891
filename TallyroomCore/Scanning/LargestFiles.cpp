#include "FileSystem/PrunedFolders.h"
#include "Scanning/BoundedTopHeap.h"
#include "Scanning/FileScanner.h"
#include "Scanning/Sizing.h"

#include <chrono>
#include <limits>

namespace tallyroom {

namespace {

/// Offers every file below a folder to a heap and counts them.
class LargestFilesVisitor : public TreeWalk::Visitor {
public:
    explicit LargestFilesVisitor(std::int64_t limit) : m_heap(limit) {}

    [[nodiscard]] TreeWalk::Wish wish(const TreeWalk::Folder& /*folder*/) const final
    {
        return {TreeWalk::Attributes::files, false};
    }

    void visit(TreeWalk::Folder& folder, std::span<TreeWalk::Child> children) final
    {
        thread_local std::vector<BoundedTopHeap::Candidate> candidates;
        candidates.clear();
        std::int64_t files = 0;
        for (TreeWalk::Child& child : children) {
            if (child.isFolder()) {
                child.descend = !isPruned(child.name);
            } else if (child.type != EntryType::link) {
                // What cannot be read is a file of no size.
                const std::int64_t size = child.attributes != nullptr ? child.attributes->allocatedBytes : 0;
                ++files;
                if (m_heap.mayTake(size)) {
                    candidates.push_back({child.name, size, identity(folder, child)});
                }
            }
        }
        if (!candidates.empty()) {
            m_heap.offer(folder.url(), candidates);
        }
        addChecked(m_seen, files);
        visited();
    }

    std::unique_ptr<TreeWalk::Folder> descendInto(TreeWalk::Folder& /*parent*/,
                                                  const TreeWalk::Child& /*child*/) final
    {
        return std::make_unique<TreeWalk::Folder>();
    }

protected:
    /// Some more files have been seen. Any worker.
    virtual void visited() {}

    [[nodiscard]] EntryList ranking() const { return m_heap.sortedSnapshot(); }

    [[nodiscard]] std::int64_t seen() const noexcept { return m_seen.load(std::memory_order_relaxed); }

private:
    static ItemIdentity identity(const TreeWalk::Folder& folder, const TreeWalk::Child& child)
    {
        return child.attributes != nullptr ? folder.scanRoot().identify(*child.attributes) : ItemIdentity{};
    }

    BoundedTopHeap m_heap;
    std::atomic<std::int64_t> m_seen = 0;
};

class WholeRanking final : public LargestFilesVisitor {
public:
    WholeRanking(std::int64_t limit, std::promise<EntryList> result)
        : LargestFilesVisitor(limit), m_result(std::move(result))
    {}

    void finish(bool /*stopped*/) override { m_result.set_value(ranking()); }

private:
    std::promise<EntryList> m_result;
};

/// Shows the ranking so far some eight times a second. Whichever worker sees that it is time makes the
/// record: no thread sleeps for it, and nothing is left to be stopped at the end.
class StreamedRanking final : public LargestFilesVisitor {
public:
    StreamedRanking(std::int64_t limit, ProgressSender<ScanProgress> sender)
        : LargestFilesVisitor(limit), m_sender(std::move(sender))
    {}

    void unreadable(TreeWalk::Folder& folder, const SystemError& error) override
    {
        if (folder.isRoot()) {
            m_unread = error;
        }
    }

    void finish(bool stopped) override
    {
        if (!stopped) {
            report(false);
        }
        m_sender.reset();
    }

protected:
    void visited() override
    {
        const Clock::rep now = Clock::now().time_since_epoch().count();
        Clock::rep due = m_due.load(std::memory_order_relaxed);
        if (now < due || !m_due.compare_exchange_strong(due, beingMade)) {
            return;
        }
        report(true);
        const Clock::rep end = Clock::now().time_since_epoch().count();
        // A very long ranking must not spend the scan on copies of itself.
        m_due = end + std::max(Clock::duration{interval}.count(), (end - now) * 9);
    }

private:
    using Clock = std::chrono::steady_clock;

    static constexpr std::chrono::milliseconds interval{120};
    static constexpr Clock::rep beingMade = std::numeric_limits<Clock::rep>::max();

    void report(bool isDiscovering)
    {
        const std::int64_t files = seen();
        m_sender->send({ranking(), files, files, isDiscovering, m_unread});
    }

    std::optional<ProgressSender<ScanProgress>> m_sender;
    std::optional<SystemError> m_unread;
    std::atomic<Clock::rep> m_due = std::numeric_limits<Clock::rep>::min(); ///< when the next record is due
};

void startRanking(const FileUrl& folder, std::unique_ptr<LargestFilesVisitor> visitor, std::stop_token stop)
{
    std::vector<TreeWalk::Root> roots;
    roots.push_back({folder.standardized(), std::make_unique<TreeWalk::Folder>()});
    TreeWalk::start(WorkerPool::shared(), std::move(roots), std::move(visitor), std::move(stop));
}

} // namespace

std::future<EntryList> FileScanner::findLargestFiles(const FileUrl& folder, std::int64_t limit)
{
    std::promise<EntryList> promise;
    auto result = promise.get_future();
    startRanking(folder, std::make_unique<WholeRanking>(limit, std::move(promise)), {});
    return result;
}

FileScanner::ScanStream FileScanner::findLargestFilesStream(const FileUrl& folder, std::int64_t limit)
{
    auto [sender, stream] = makeProgressStream<ScanProgress>();
    std::stop_token stop = sender.stopToken();
    startRanking(folder, std::make_unique<StreamedRanking>(limit, std::move(sender)), std::move(stop));
    return std::move(stream);
}

} // namespace tallyroom
