#include "Concurrency/LastRecord.h"
#include "Concurrency/Thread.h"
#include "FileSystem/AttentiveVisitor.h"
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

/// Offers every file below a folder to a heap and counts them. Shows the first files at once, and then the
/// ranking so far some eight times a second, by a clock: a disk that answers slowly is no reason for silence.
class LargestFilesVisitor final : public AttentiveVisitor {
public:
    LargestFilesVisitor(std::int64_t limit, const FileScanner::FileCriteria& criteria,
                        ProgressSender<ScanProgress> sender)
        : m_criteria(criteria), m_heap(limit), m_sender(std::move(sender)),
          m_reporter(tryThread([this](const std::stop_token& stop) { keepReporting(stop); }))
    {}

    [[nodiscard]] TreeWalk::Wish wish(const TreeWalk::Folder& /*folder*/) const override
    {
        return {TreeWalk::Attributes::files, false};
    }

    void visit(TreeWalk::Folder& folder, std::span<TreeWalk::Child> children) override
    {
        noteUnread(folder, children);
        thread_local std::vector<BoundedTopHeap::Candidate> candidates;
        candidates.clear();
        std::int64_t files = 0;
        for (TreeWalk::Child& child : children) {
            if (child.isFolder()) {
                child.descend = !isPruned(child.name);
            } else if (child.type != EntryType::link) {
                // An unreadable file has size 0.
                const std::int64_t size = child.attributes != nullptr ? child.attributes->allocatedBytes : 0;
                ++files;
                if (m_heap.mayTake(size) && matches(child)) {
                    candidates.push_back(
                        {child.name, size, child.form(), identity(folder, child), modifiedAt(child)});
                }
            }
        }
        if (!candidates.empty()) {
            m_heap.offer(folder.url(), candidates);
        }
        addChecked(m_seen, files);
        if (files > 0 && !m_hasSeen.load(std::memory_order_relaxed) && !m_hasSeen.exchange(true)) {
            report(true);
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

private:
    static std::optional<Timestamp> modifiedAt(const TreeWalk::Child& child)
    {
        return child.attributes != nullptr ? child.attributes->modifiedAt : std::nullopt;
    }

    [[nodiscard]] bool matches(const TreeWalk::Child& child) const
    {
        const auto& [kind, before] = m_criteria;
        return (!kind || FileKind::of(nameExtension(child.name)) == *kind) &&
               (!before || modifiedAt(child).value_or(Timestamp::max()) < *before);
    }

    static ItemIdentity identity(const TreeWalk::Folder& folder, const TreeWalk::Child& child)
    {
        return child.attributes != nullptr ? folder.scanRoot().identify(*child.attributes) : ItemIdentity{};
    }

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
        const std::int64_t files = m_seen.load(std::memory_order_relaxed);
        ScanProgress record{m_heap.sortedSnapshot(), files, files, isDiscovering};
        if (!isDiscovering) {
            record.unread = unreadRoot();
            record.unreadPlaces = unreadPlaces();
        }
        wake = m_sender->enqueue({std::move(record)});
    }

    const FileScanner::FileCriteria m_criteria;
    BoundedTopHeap m_heap;
    std::atomic<std::int64_t> m_seen = 0;
    std::atomic<bool> m_hasSeen = false;
    std::mutex m_order; ///< of records: counts never go back
    std::optional<ProgressSender<ScanProgress>> m_sender;
    std::jthread m_reporter; // last: it uses the others
};

} // namespace

std::future<EntryList> FileScanner::findLargestFiles(const FileUrl& folder, std::int64_t limit,
                                                     const FileCriteria& criteria)
{
    return lastRecord(findLargestFilesStream(folder, limit, criteria),
                      [](ScanProgress last) { return std::move(last.entries); });
}

FileScanner::ScanStream FileScanner::findLargestFilesStream(const FileUrl& folder, std::int64_t limit,
                                                            const FileCriteria& criteria)
{
    auto [sender, stream] = makeProgressStream<ScanProgress>();
    std::stop_token stop = sender.stopToken();
    TreeWalk::start({folder.standardized(), std::make_unique<TreeWalk::Folder>()},
                    std::make_unique<LargestFilesVisitor>(limit, criteria, std::move(sender)),
                    std::move(stop));
    return std::move(stream);
}

} // namespace tallyroom
