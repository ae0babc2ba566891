#include "Duplicates/CandidateWalk.h"

#include "FileSystem/AttentiveVisitor.h"
#include "FileSystem/PrunedFolders.h"
#include "Model/CheckedArithmetic.h"

#include <algorithm>
#include <condition_variable>
#include <memory>
#include <mutex>

namespace tallyroom::CandidateWalk {

namespace {

/// A file of one folder that may have copies, and how many files were met since the one before it.
struct Met {
    std::int64_t files = 0;
    Candidate candidate;
};

/// A folder of the walk that knows its place among the names, once it holds a candidate.
struct SearchedFolder : TreeWalk::Folder {
    std::uint32_t id = PathPool::none;
};

/// The one place where the walk's workers meet, one lock a folder.
class Ledger {
public:
    explicit Ledger(const Limits& limits)
        : m_trackedLimit(std::max<std::int64_t>(limits.trackedFiles, 0)),
          // The limit is looked at after counting, so the first file reaches any that is lower.
          m_visitedLimit(std::max<std::int64_t>(limits.visitedFiles, 1))
    {}

    /// Enters a folder's files in their order, `filesAfter` being those met after the last of `met`.
    void enter(SearchedFolder& folder, std::vector<Met> met, std::int64_t filesAfter)
    {
        const std::scoped_lock lock{m_mutex};
        if (m_root == nullptr) {
            m_root = &folder.scanRoot();
        }
        for (Met& file : met) {
            if (!visit(file.files)) {
                return;
            }
            if (std::ssize(m_tracked) == m_trackedLimit) {
                truncate();
                return;
            }
            file.candidate.folder = idOf(folder);
            m_tracked.push_back(std::move(file.candidate));
        }
        visit(filesAfter);
    }

    /// The walk is over; what it could not read.
    void finish(const std::optional<SystemError>& unread, SharedUnreadPlaces places)
    {
        const std::scoped_lock lock{m_mutex};
        m_unread = unread;
        m_unreadPlaces = std::move(places);
        m_isFinished = true;
        m_changed.notify_all();
    }

    /// Stops the walk: from outside, or because a limit was reached.
    [[nodiscard]] std::stop_source& stop() noexcept { return m_stop; }

    /// Waits for the end of the walk, and calls `onVisited` under no lock meanwhile.
    Findings wait(const std::function<void(std::int64_t)>& onVisited)
    {
        std::unique_lock lock{m_mutex};
        for (std::int64_t told = 0; true;) {
            const std::int64_t next = told + visitedInterval;
            m_changed.wait(lock, [this, next] { return m_isFinished || m_visited >= next; });
            if (m_visited < next) {
                break;
            }
            lock.unlock();
            onVisited(next);
            lock.lock();
            told = next;
        }
        dropUniqueSizes();
        return {std::move(m_tracked),     std::move(m_folders), m_visited, m_truncated, m_root, m_unread,
                std::move(m_unreadPlaces)};
    }

private:
    /// Only files of a size that others have too are ever read.
    void dropUniqueSizes()
    {
        std::vector<std::int64_t> sizes(m_tracked.size());
        std::ranges::transform(m_tracked, sizes.begin(), &Candidate::size);
        std::ranges::sort(sizes);
        std::size_t repeated = 0; // as many sizes are moved to the front, each once
        for (auto first = sizes.begin(); first != sizes.end();) {
            const auto last = std::find_if(first, sizes.end(), [first](auto size) { return size != *first; });
            if (last - first > 1) {
                sizes[repeated++] = *first;
            }
            first = last;
        }
        sizes.resize(repeated);
        std::erase_if(m_tracked, [&sizes](const Candidate& file) {
            return !std::ranges::binary_search(sizes, file.size);
        });
        m_tracked.shrink_to_fit();
    }

    std::uint32_t idOf(SearchedFolder& folder)
    {
        std::vector<SearchedFolder*> unknown; // from the folder up to the first known one
        TreeWalk::Folder* above = &folder;
        for (; above != nullptr && static_cast<SearchedFolder*>(above)->id == PathPool::none;
             above = above->parent()) {
            unknown.push_back(static_cast<SearchedFolder*>(above));
        }
        std::uint32_t id = above == nullptr ? PathPool::none : static_cast<SearchedFolder*>(above)->id;
        for (auto next = unknown.rbegin(); next != unknown.rend(); ++next) {
            id = m_folders.add(id, (*next)->name());
            (*next)->id = id;
        }
        return id;
    }

    /// Counts files; false when that ends the walk.
    bool visit(std::int64_t files)
    {
        if (m_truncated) {
            return false;
        }
        const std::int64_t before = m_visited;
        m_visited = std::min(checkedSum(m_visited, files), m_visitedLimit);
        if (before / visitedInterval != m_visited / visitedInterval) {
            m_changed.notify_all();
        }
        if (m_visited == m_visitedLimit) {
            truncate();
        }
        return !m_truncated;
    }

    void truncate()
    {
        m_truncated = true;
        m_stop.request_stop(); // the walk only polls it: nothing runs under the lock
    }

    const std::int64_t m_trackedLimit;
    const std::int64_t m_visitedLimit;
    std::stop_source m_stop;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<Candidate> m_tracked;    // guarded by m_mutex
    PathPool m_folders;                  // guarded by m_mutex
    std::int64_t m_visited = 0;          // guarded by m_mutex
    bool m_truncated = false;            // guarded by m_mutex
    bool m_isFinished = false;           // guarded by m_mutex
    const ScanRoot* m_root = nullptr;    // guarded by m_mutex
    std::optional<SystemError> m_unread; // guarded by m_mutex
    SharedUnreadPlaces m_unreadPlaces;   // guarded by m_mutex
};

class CandidateVisitor final : public AttentiveVisitor {
public:
    CandidateVisitor(std::int64_t minimumSize, std::shared_ptr<Ledger> ledger)
        : m_minimumSize(std::max<std::int64_t>(minimumSize, 1)), m_ledger(std::move(ledger))
    {}

    [[nodiscard]] TreeWalk::Wish wish(const TreeWalk::Folder& /*folder*/) const override
    {
        return {TreeWalk::Attributes::files};
    }

    void visit(TreeWalk::Folder& folder, std::span<TreeWalk::Child> children) override
    {
        noteUnread(folder, children);
        std::vector<Met> met;
        std::int64_t files = 0;
        for (TreeWalk::Child& child : children) {
            if (child.isFolder()) {
                child.descend = !isPruned(child.name);
            } else if (child.type == EntryType::file && child.attributes != nullptr) {
                ++files;
                if (child.attributes->isRegular && child.attributes->logicalBytes >= m_minimumSize) {
                    met.push_back({std::exchange(files, 0), candidate(child)});
                }
            }
        }
        m_ledger->enter(static_cast<SearchedFolder&>(folder), std::move(met), files);
    }

    [[nodiscard]] std::unique_ptr<TreeWalk::Folder> descendInto(TreeWalk::Folder& /*parent*/,
                                                                const TreeWalk::Child& /*child*/) override
    {
        return std::make_unique<SearchedFolder>();
    }

    void finish(bool /*stopped*/) override { m_ledger->finish(unreadRoot(), unreadPlaces()); }

private:
    static Candidate candidate(const TreeWalk::Child& child)
    {
        return {PathPool::none, std::string{child.name}, child.attributes->logicalBytes,
                FileIdentity::of(*child.attributes)};
    }

    const std::int64_t m_minimumSize;
    const std::shared_ptr<Ledger> m_ledger;
};

} // namespace

Findings run(const FileUrl& url, std::int64_t minimumSize, const Limits& limits, const std::stop_token& stop,
             const std::function<void(std::int64_t)>& onVisited)
{
    const auto ledger = std::make_shared<Ledger>(limits);
    const std::stop_callback passOn{stop, [&ledger] { ledger->stop().request_stop(); }};
    TreeWalk::start({url, std::make_unique<SearchedFolder>()},
                    std::make_unique<CandidateVisitor>(minimumSize, ledger), ledger->stop().get_token());
    return ledger->wait(onVisited);
}

} // namespace tallyroom::CandidateWalk
