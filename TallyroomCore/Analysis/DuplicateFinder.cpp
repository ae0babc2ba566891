#include "Analysis/DuplicateFinder.h"

#include "Analysis/CandidateWalk.h"
#include "Analysis/DigestStages.h"
#include "Concurrency/Locked.h"
#include "Concurrency/WorkerPool.h"

#include <atomic>
#include <memory>
#include <optional>
#include <utility>

namespace tallyroom::DuplicateFinder {

namespace {

/// Searches that run at the same time; a further one waits for its turn.
constexpr unsigned searchesAtOnce = 4;

/// The threads that conduct searches. They wait for the pool's workers, so they are not among them, and they
/// end before the pool does.
WorkerPool& conductors()
{
    static_cast<void>(WorkerPool::shared());
    static WorkerPool pool{searchesAtOnce};
    return pool;
}

/// One search in the background, as a job of a single piece.
class SearchJob final : public WorkerPool::Job {
public:
    using Search = std::function<void(const std::stop_token&)>;

    /// Runs `search` until it ends, `cancelled` comes, or the program leaves.
    SearchJob(const std::stop_token& cancelled, Search search)
        : m_passOn(cancelled, Stop{m_stop}), m_search(std::move(search))
    {}

    bool work(unsigned /*worker*/) override
    {
        if (m_isTaken.exchange(true)) {
            return false;
        }
        m_search(m_stop.get_token());
        m_search = nullptr; // the stream ends here, whoever still holds the job
        conductors().remove(*this);
        return true;
    }

    void abandon() noexcept override { m_stop.request_stop(); }

private:
    struct Stop {
        std::stop_source source;

        void operator()() { source.request_stop(); }
    };

    std::stop_source m_stop;
    std::stop_callback<Stop> m_passOn;
    std::atomic<bool> m_isTaken = false;
    Search m_search;
};

void start(const std::stop_token& cancelled, SearchJob::Search search)
{
    conductors().add(std::make_shared<SearchJob>(cancelled, std::move(search)));
}

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
    auto groups = DigestStages::run(std::move(findings), stop, [&](DigestStages::Progress progress) {
        record.hashedBytes = progress.done;
        record.bytesToHash = progress.total;
        onProgress(record);
    });
    if (stop.stop_requested()) {
        return {};
    }
    return {std::move(groups), truncated, unread};
}

ProgressStream<DuplicateProgress> stream(const FileUrl& url, std::int64_t minimumSize)
{
    auto [sender, stream] = makeProgressStream<DuplicateProgress>();
    const std::stop_token cancelled = sender.stopToken();
    start(cancelled, [url, minimumSize, sender = std::move(sender)](const std::stop_token& stop) {
        Locked<DuplicateProgress> last;
        auto [groups, truncated, unread] =
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
        final.hashedBytes = final.bytesToHash;
        sender.send(std::move(final));
    });
    return std::move(stream);
}

std::future<std::vector<DuplicateGroup>> find(const FileUrl& url, std::int64_t minimumSize)
{
    auto promise = std::make_shared<std::promise<std::vector<DuplicateGroup>>>();
    auto result = promise->get_future();
    start({}, [url, minimumSize, promise = std::move(promise)](const std::stop_token& stop) {
        promise->set_value(computeGroups(url, minimumSize, {}, stop, [](const DuplicateProgress&) {}).groups);
    });
    return result;
}

} // namespace tallyroom::DuplicateFinder
