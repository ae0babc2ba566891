#include "Concurrency/Thread.h"
#include "FileSystem/PrunedFolders.h"
#include "Scanning/BoundedTopHeap.h"
#include "Scanning/FileScanner.h"
#include "Scanning/Sizing.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>

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
        if (files > 0 && !m_hasSeen.load(std::memory_order_relaxed) && !m_hasSeen.exchange(true)) {
            sawFirst();
        }
    }

    std::unique_ptr<TreeWalk::Folder> descendInto(TreeWalk::Folder& /*parent*/,
                                                  const TreeWalk::Child& /*child*/) final
    {
        return std::make_unique<TreeWalk::Folder>();
    }

protected:
    /// The first files have been seen. One worker.
    virtual void sawFirst() {}

    [[nodiscard]] EntryList ranking() const { return m_heap.sortedSnapshot(); }

    [[nodiscard]] std::int64_t seen() const noexcept { return m_seen.load(std::memory_order_relaxed); }

private:
    static ItemIdentity identity(const TreeWalk::Folder& folder, const TreeWalk::Child& child)
    {
        return child.attributes != nullptr ? folder.scanRoot().identify(*child.attributes) : ItemIdentity{};
    }

    BoundedTopHeap m_heap;
    std::atomic<std::int64_t> m_seen = 0;
    std::atomic<bool> m_hasSeen = false;
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

/// Shows the first files at once, and then the ranking so far some eight times a second, by a clock: a disk
/// that answers slowly is no reason for silence.
class StreamedRanking final : public LargestFilesVisitor {
public:
    StreamedRanking(std::int64_t limit, ProgressSender<ScanProgress> sender)
        : LargestFilesVisitor(limit), m_sender(std::move(sender)),
          m_reporter(tryThread([this](const std::stop_token& stop) { keepReporting(stop); }))
    {}

    void unreadable(TreeWalk::Folder& folder, const SystemError& error) override
    {
        if (folder.isRoot()) {
            m_unread = error;
        }
    }

    void finish(bool stopped) override
    {
        m_reporter = {};
        if (!stopped) {
            report(false);
        }
        m_sender.reset();
    }

protected:
    void sawFirst() override { report(true); }

private:
    void keepReporting(const std::stop_token& stop)
    {
        using Clock = std::chrono::steady_clock;
        constexpr std::chrono::milliseconds interval{120};
        const std::stop_token cancelled = m_sender->stopToken();
        std::mutex mutex;
        std::unique_lock lock{mutex};
        std::condition_variable_any stopped;
        Clock::duration pause = interval;
        while (!stopped.wait_for(lock, stop, pause, [&stop] { return stop.stop_requested(); }) &&
               !cancelled.stop_requested()) {
            const Clock::time_point start = Clock::now();
            report(true);
            // A very long ranking must not spend the scan on copies of itself.
            pause = std::max<Clock::duration>(interval, (Clock::now() - start) * 9);
        }
    }

    void report(bool isDiscovering)
    {
        StreamWake wake; // outlives the lock
        const std::scoped_lock lock{m_order};
        const std::int64_t files = seen();
        auto unread = isDiscovering ? std::nullopt : m_unread; // known when the walk has ended
        wake = m_sender->enqueue({{ranking(), files, files, isDiscovering, unread}});
    }

    std::mutex m_order; ///< of records: counts never go back
    std::optional<ProgressSender<ScanProgress>> m_sender;
    std::optional<SystemError> m_unread;
    std::jthread m_reporter; // last: it uses the others
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
