#include "Duplicates/DuplicateFinder.h"

#include "Concurrency/LastRecord.h"
#include "Concurrency/Locked.h"
#include "Concurrency/Thread.h"
#include "Concurrency/WorkerPool.h"
#include "Duplicates/CandidateWalk.h"
#include "Duplicates/DigestSearch.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

namespace tallyroom::DuplicateFinder {

namespace {

/// How long the program's end waits for searches that hang in the kernel, on a dead network mount for one.
constexpr std::chrono::seconds patience{2};

/// The searches that run. Each has its own thread, which waits for the pool's workers: a search never waits
/// for another search.
class Conductors {
public:
    using Search = std::function<void(const std::stop_token&)>;

    static Conductors& shared()
    {
        static_cast<void>(WorkerPool::shared()); // they end before it does
        static Conductors conductors;
        return conductors;
    }

    Conductors() = default;
    Conductors(const Conductors&) = delete;
    Conductors& operator=(const Conductors&) = delete;

    ~Conductors()
    {
        m_state->leaving.request_stop();
        std::unique_lock lock{m_state->mutex};
        m_state->ended.wait_for(lock, patience, [this] { return m_state->running == 0; });
    }

    /// Runs `search` until it ends, `cancelled` comes, or the program leaves.
    void start(const std::stop_token& cancelled, Search search)
    {
        {
            const std::scoped_lock lock{m_state->mutex};
            ++m_state->running;
        }
        std::jthread thread =
            runOnThread([state = m_state, cancelled, search = std::move(search)](const auto&) mutable {
                conduct(state->leaving.get_token(), cancelled, search);
                search = nullptr; // the stream ends here
                const std::scoped_lock lock{state->mutex};
                --state->running;
                state->ended.notify_all();
            });
        if (thread.joinable()) {
            thread.detach();
        }
    }

private:
    /// Shared with the threads, which may outlive a program's end that cannot wait.
    struct State {
        std::stop_source leaving;
        std::mutex mutex;
        std::condition_variable ended;
        std::size_t running = 0; // guarded by mutex
    };

    static void conduct(const std::stop_token& leaving, const std::stop_token& cancelled,
                        const Search& search)
    {
        std::stop_source stop;
        const auto request = [&stop] { stop.request_stop(); };
        const std::stop_callback onLeave{leaving, request};
        const std::stop_callback onCancel{cancelled, request};
        search(stop.get_token());
    }

    const std::shared_ptr<State> m_state = std::make_shared<State>();
};

} // namespace

Result computeGroups(const FileUrl& url, std::int64_t minimumSize, const Limits& limits,
                     const std::stop_token& stop, const std::function<void(DuplicateProgress)>& onProgress)
{
    DuplicateProgress record;
    auto findings =
        CandidateWalk::run(url.standardized(), minimumSize, {limits.trackedFiles, limits.visitedFiles}, stop,
                           [&](std::int64_t visited) {
                               record.scanned = visited;
                               onProgress(record);
                           });
    if (stop.stop_requested()) {
        return {};
    }
    record.scanned = findings.visited;
    record.phase = Phase::hashing;
    const bool truncated = findings.truncated;
    const std::optional<SystemError> unread = findings.unread;
    SharedUnreadPlaces unreadPlaces = findings.unreadPlaces;
    auto groups = DigestSearch::run(std::move(findings), stop, [&](DigestSearch::Progress progress) {
        record.hashedBytes = progress.done;
        record.bytesToHash = progress.total;
        onProgress(record);
    });
    if (stop.stop_requested()) {
        return {};
    }
    return {std::move(groups), truncated, unread, std::move(unreadPlaces)};
}

ProgressStream<DuplicateProgress> stream(const FileUrl& url, std::int64_t minimumSize)
{
    auto [sender, stream] = makeProgressStream<DuplicateProgress>();
    const std::stop_token cancelled = sender.stopToken();
    Conductors::shared().start(
        cancelled, [url, minimumSize, sender = std::move(sender)](const std::stop_token& stop) {
            Locked<DuplicateProgress> last;
            auto [groups, truncated, unread, unreadPlaces] =
                computeGroups(url, minimumSize, {}, stop, [&](const DuplicateProgress& record) {
                    last.set(record);
                    sender.send(record);
                });
            if (stop.stop_requested()) {
                return;
            }
            DuplicateProgress final = last.get();
            final.groups = std::move(groups);
            final.phase = Phase::done;
            final.truncated = truncated;
            final.unread = unread;
            final.unreadPlaces = std::move(unreadPlaces);
            final.hashedBytes = final.bytesToHash;
            sender.send(std::move(final));
        });
    return std::move(stream);
}

std::future<std::vector<DuplicateGroup>> find(const FileUrl& url, std::int64_t minimumSize)
{
    return lastRecord(stream(url, minimumSize),
                      [](DuplicateProgress last) { return std::move(last.groups); });
}

} // namespace tallyroom::DuplicateFinder
