#include "Analysis/DigestStages.h"

#include "Analysis/StableFile.h"
#include "Concurrency/ParallelMap.h"
#include "FileSystem/Digest.h"

#include <algorithm>
#include <atomic>
#include <memory>
#include <numeric>
#include <optional>
#include <thread>
#include <tuple>
#include <utility>

namespace tallyroom::DigestStages {

namespace {

enum class Stage : unsigned char { head, tail, whole };

FileSpan spanOf(Stage stage, std::int64_t size)
{
    switch (stage) {
    case Stage::head:
        return {0, std::min(size, spanLength)};
    case Stage::tail:
        return {std::max<std::int64_t>(size - spanLength, 0), std::min(size, spanLength)};
    case Stage::whole:
        return {0, size};
    }
    return {};
}

/// True when the digests up to this stage have covered every byte.
bool isSettled(Stage stage, std::int64_t size)
{
    switch (stage) {
    case Stage::head:
        return size <= spanLength;
    case Stage::tail:
        return size <= 2 * spanLength;
    case Stage::whole:
        return true;
    }
    return true;
}

std::string_view idPrefix(Stage stage)
{
    switch (stage) {
    case Stage::head:
        return "head:";
    case Stage::tail:
        return "headtail:";
    case Stage::whole:
        return "full:";
    }
    return {};
}

/// What a file may still cost from a stage on.
std::int64_t costFrom(Stage stage, std::int64_t size)
{
    std::int64_t bytes = 0;
    for (const Stage each : {Stage::head, Stage::tail, Stage::whole}) {
        if (each >= stage) {
            bytes = checkedSum(bytes, spanOf(each, size).length);
        }
        if (isSettled(each, size)) {
            break;
        }
    }
    return bytes;
}

/// One file on the disk, with all the paths that lead to it: it is read once.
struct Content {
    std::uint32_t firstPath = 0; ///< among the candidates
    std::uint32_t paths = 0;
};

/// Files that no stage has told apart yet.
struct Suspects {
    std::string key;
    std::int64_t size = 0;
    std::vector<std::uint32_t> contents;
};

class Search {
public:
    Search(CandidateWalk::Findings findings, std::stop_token stop,
           const std::function<void(Progress)>& onProgress)
        : m_findings(std::move(findings)), m_stop(std::move(stop)), m_onProgress(onProgress)
    {
        gatherContents();
    }

    std::vector<DuplicateGroup> groups()
    {
        std::vector<Suspects> suspects = bySize();
        m_progress.total = costOf(suspects, Stage::head);
        for (const Stage stage : {Stage::head, Stage::tail, Stage::whole}) {
            m_progress.done = m_progress.total - costOf(suspects, stage);
            m_onProgress(m_progress);
            suspects = tellApart(std::move(suspects), stage);
            if (m_stop.stop_requested()) {
                return {};
            }
        }
        const auto rank = [](const DuplicateGroup& group) {
            return std::tuple{-group.wastedBytes(), std::string_view{group.entries.front().url.path()}};
        };
        std::ranges::sort(m_groups, {}, rank);
        return std::move(m_groups);
    }

private:
    /// A file to digest in a stage.
    struct Task {
        std::uint32_t content = 0;
        std::uint32_t suspects = 0;
    };

    const Candidate& candidate(std::uint32_t content) const
    {
        return m_findings.candidates[m_contents[content].firstPath];
    }

    /// Brings the candidates into the order of their inodes, which is about that of the disk and costs
    /// nothing, and the paths of one file together.
    void gatherContents()
    {
        auto& candidates = m_findings.candidates;
        std::ranges::sort(candidates, {}, [](const Candidate& file) {
            return std::tuple{file.identity.device, file.identity.inode, file.size, file.identity.changedAt,
                              file.identity.modifiedAt};
        });
        for (std::uint32_t i = 0; i < candidates.size(); ++i) {
            if (m_contents.empty() || candidates[i].size != candidates[i - 1].size ||
                candidates[i].identity != candidates[i - 1].identity) {
                m_contents.push_back({i, 0});
            }
            ++m_contents.back().paths;
        }
    }

    std::vector<Suspects> bySize() const
    {
        std::vector<std::uint32_t> contents(m_contents.size());
        std::iota(contents.begin(), contents.end(), 0U);
        std::ranges::stable_sort(contents, {},
                                 [this](std::uint32_t content) { return candidate(content).size; });
        std::vector<Suspects> suspects;
        for (const std::uint32_t content : contents) {
            const std::int64_t size = candidate(content).size;
            if (suspects.empty() || suspects.back().size != size) {
                suspects.push_back({std::to_string(size), size, {}});
            }
            suspects.back().contents.push_back(content);
        }
        return suspects;
    }

    static std::int64_t costOf(const std::vector<Suspects>& suspects, Stage stage)
    {
        std::int64_t bytes = 0;
        for (const Suspects& set : suspects) {
            bytes = checkedSum(bytes, checkedProduct(costFrom(stage, set.size),
                                                     static_cast<std::int64_t>(set.contents.size())));
        }
        return bytes;
    }

    /// Digests every file of a stage, splits the sets, and returns those that need the next stage.
    std::vector<Suspects> tellApart(std::vector<Suspects> suspects, Stage stage)
    {
        const std::vector<Task> tasks = tasksOf(suspects);
        const auto digests = digestAll(tasks, stage);
        if (m_stop.stop_requested()) {
            return {};
        }
        std::vector<std::uint32_t> order(tasks.size());
        std::iota(order.begin(), order.end(), 0U);
        // A missing digest equals nothing, least of all another missing one.
        std::erase_if(order, [&digests](std::uint32_t task) { return !digests[task].has_value(); });
        std::ranges::sort(order, {}, [&](std::uint32_t task) {
            return std::tuple{tasks[task].suspects, *digests[task], tasks[task].content};
        });
        std::vector<Suspects> left;
        for (auto first = order.begin(); first != order.end();) {
            const std::uint32_t set = tasks[*first].suspects;
            const auto last = std::find_if(first, order.end(), [&](std::uint32_t task) {
                return tasks[task].suspects != set || *digests[task] != *digests[*first];
            });
            Suspects alike{suspects[set].key + "|" + digests[*first]->text(), suspects[set].size, {}};
            std::transform(first, last, std::back_inserter(alike.contents),
                           [&tasks](std::uint32_t task) { return tasks[task].content; });
            settle(std::move(alike), stage, left);
            first = last;
        }
        return left;
    }

    static std::vector<Task> tasksOf(const std::vector<Suspects>& suspects)
    {
        std::vector<Task> tasks;
        for (std::uint32_t set = 0; set < suspects.size(); ++set) {
            std::ranges::transform(suspects[set].contents, std::back_inserter(tasks),
                                   [set](std::uint32_t content) {
                                       return Task{content, set};
                                   });
        }
        std::ranges::sort(tasks, {}, &Task::content);
        return tasks;
    }

    /// Files alike after a stage: none, a group, or suspects for the next stage.
    void settle(Suspects alike, Stage stage, std::vector<Suspects>& left)
    {
        std::uint32_t paths = 0;
        for (const std::uint32_t content : alike.contents) {
            paths += m_contents[content].paths;
        }
        if (paths < 2) {
            return;
        }
        if (isSettled(stage, alike.size)) {
            m_groups.push_back(makeGroup(std::string{idPrefix(stage)} + alike.key, alike));
        } else {
            left.push_back(std::move(alike));
        }
    }

    std::vector<std::optional<Digest>> digestAll(std::span<const Task> tasks, Stage stage)
    {
        WorkerPool& pool = WorkerPool::shared();
        std::vector<std::unique_ptr<Digester>> digesters(pool.width());
        std::atomic<std::int64_t> digested = 0;
        const Progress before = m_progress;
        ParallelMapOptions options;
        options.stop = m_stop;
        options.lanes = lanesOf(stage, pool.width());
        options.whileWaiting = [&] {
            m_onProgress({before.done + digested.load(std::memory_order_relaxed), before.total});
        };
        return parallelMap(
            pool, tasks,
            [&](const Task& task, unsigned worker) {
                auto& digester = digesters[worker];
                if (digester == nullptr) {
                    digester = std::make_unique<Digester>();
                }
                return digest(*digester, task.content, stage, digested);
            },
            options);
    }

    /// Short reads wait for the disk and are begun many at a time; whole files keep a core busy each, and
    /// more of them at once would send the heads of a disk to and fro.
    static unsigned lanesOf(Stage stage, unsigned width)
    {
        const unsigned most = std::max(width * 3 / 4, 1U);
        switch (stage) {
        case Stage::head:
        case Stage::tail:
            return most;
        case Stage::whole:
            return std::clamp(std::thread::hardware_concurrency(), 1U, most);
        }
        return most;
    }

    std::optional<Digest> digest(Digester& digester, std::uint32_t content, Stage stage,
                                 std::atomic<std::int64_t>& digested) const
    {
        const Content& file = m_contents[content];
        const Candidate& known = candidate(content);
        for (std::uint32_t path = 0; path < file.paths; ++path) {
            const Candidate& way = m_findings.candidates[file.firstPath + path];
            const FileUrl url{m_findings.folders.path(way.folder, way.name)};
            if (const auto opened = StableFile::open(url, known.identity, known.size)) {
                const auto result =
                    digester.digest(opened->descriptor(), spanOf(stage, known.size), m_stop, digested);
                return result && opened->isUnchanged() ? result : std::nullopt;
            }
        }
        return std::nullopt;
    }

    DuplicateGroup makeGroup(std::string id, const Suspects& alike) const
    {
        struct Copy {
            Entry entry;
            FileIdentity identity;
        };

        std::vector<Copy> copies;
        for (const std::uint32_t content : alike.contents) {
            const Content& file = m_contents[content];
            for (std::uint32_t path = 0; path < file.paths; ++path) {
                const Candidate& way = m_findings.candidates[file.firstPath + path];
                FileUrl url{m_findings.folders.path(way.folder, way.name)};
                copies.push_back({{std::move(url), way.name, way.size, false, {}}, way.identity});
            }
        }
        std::ranges::sort(copies, {}, [](const Copy& copy) -> const FileUrl& { return copy.entry.url; });
        DuplicateGroup group;
        group.id = std::move(id);
        for (Copy& copy : copies) {
            group.entries.push_back(std::move(copy.entry));
            group.identities.push_back(copy.identity);
        }
        return group;
    }

    CandidateWalk::Findings m_findings;
    std::stop_token m_stop;
    const std::function<void(Progress)>& m_onProgress;
    std::vector<Content> m_contents; // in the order of the disk
    std::vector<DuplicateGroup> m_groups;
    Progress m_progress;
};

} // namespace

std::vector<DuplicateGroup> run(CandidateWalk::Findings findings, const std::stop_token& stop,
                                const std::function<void(Progress)>& onProgress)
{
    return Search{std::move(findings), stop, onProgress}.groups();
}

} // namespace tallyroom::DigestStages
