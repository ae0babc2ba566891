#include "Duplicates/DigestSearch.h"

#include "Concurrency/ParallelFor.h"
#include "Duplicates/BatchDigester.h"
#include "Duplicates/DigestStage.h"
#include "Model/CheckedArithmetic.h"
#include "Removal/TrashFolders.h"

#include <algorithm>
#include <atomic>
#include <memory>
#include <numeric>
#include <optional>
#include <thread>
#include <tuple>
#include <utility>

namespace tallyroom::DigestSearch {

namespace {

using namespace DigestStages;
using Stage = DigestStage;

/// One file on the disk, with all the paths that lead to it: it is read once.
struct Content {
    std::uint32_t firstPath = 0; ///< among the candidates
    std::uint32_t paths = 0;
    FileIdentity identity; ///< as it was when it was read last
    ItemIdentity item{};   ///< likewise
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
        : m_findings(std::move(findings)), m_stop(std::move(stop)), m_onProgress(onProgress),
          m_trash(m_findings.root == nullptr ? TrashFolders::Lookup{}
                                             : TrashFolders::Lookup{*m_findings.root}),
          m_isTrashed(m_findings.folders.size())
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
            suspects = tellApart(suspects, stage);
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
    /// Files of one set that a worker digests together.
    struct Batch {
        std::uint32_t suspects = 0;
        std::span<const std::uint32_t> contents;
    };

    struct Digested {
        std::uint32_t suspects = 0;
        Digest digest;
        std::uint32_t content = 0;

        friend auto operator<=>(const Digested&, const Digested&) = default;
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
                m_contents.push_back({i, 0, candidates[i].identity, {}});
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
            bytes = saturatedSum(bytes, saturatedProduct(costFrom(stage, set.size),
                                                         static_cast<std::int64_t>(set.contents.size())));
        }
        return bytes;
    }

    /// Digests every file of a stage, splits the sets, and returns those that need the next stage. A file
    /// without a digest drops out.
    std::vector<Suspects> tellApart(const std::vector<Suspects>& suspects, Stage stage)
    {
        std::vector<Digested> digested = digestAll(suspects, stage);
        if (m_stop.stop_requested()) {
            return {};
        }
        std::ranges::sort(digested);
        std::vector<Suspects> left;
        for (auto first = digested.begin(); first != digested.end();) {
            const auto last = std::find_if(first, digested.end(), [first](const Digested& file) {
                return file.suspects != first->suspects || file.digest != first->digest;
            });
            const Suspects& set = suspects[first->suspects];
            Suspects alike{set.key + "|" + first->digest.text(), set.size, {}};
            std::transform(first, last, std::back_inserter(alike.contents),
                           [](const Digested& file) { return file.content; });
            settle(std::move(alike), stage, left);
            first = last;
        }
        return left;
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
            DuplicateGroup group = makeGroup(std::string{idPrefix(stage)} + alike.key, alike);
            if (group.entries.size() > 1) {
                m_groups.push_back(std::move(group));
            }
        } else {
            left.push_back(std::move(alike));
        }
    }

    std::vector<Digested> digestAll(const std::vector<Suspects>& suspects, Stage stage)
    {
        WorkerPool& pool = WorkerPool::shared();
        std::vector<std::unique_ptr<BatchDigester>> digesters(pool.capacity());
        std::atomic<std::int64_t> readBytes = 0;
        const std::int64_t toRead = bytesToRead(suspects, stage);
        ParallelForOptions options;
        options.stop = m_stop;
        options.lanes = lanesOf(stage, pool.width());
        options.whileWaiting = [&] {
            // A file that differs from its model late is read twice and counts once.
            const std::int64_t bytes = std::min(readBytes.load(std::memory_order_relaxed), toRead);
            m_onProgress({m_progress.done + bytes, m_progress.total});
        };
        const std::vector<Batch> batches = batchesOf(suspects, stage, toRead / (2 * options.lanes));
        std::vector<BatchDigester::Digests> digests(batches.size());
        const auto digest = [&](std::size_t number, unsigned worker) {
            auto& digester = digesters[worker];
            if (digester == nullptr) {
                digester = std::make_unique<BatchDigester>();
            }
            const Batch& batch = batches[number];
            const Suspects& set = suspects[batch.suspects];
            const auto open = [&](std::size_t index) {
                return this->open(m_contents[batch.contents[index]], set, stage);
            };
            digests[number] =
                digester->digest(batch.contents.size(), spanOf(stage, set.size), open, m_stop, readBytes);
        };
        parallelFor(pool, batches.size(), digest, options);
        return flattened(batches, digests);
    }

    static std::int64_t bytesToRead(const std::vector<Suspects>& suspects, Stage stage)
    {
        return std::accumulate(suspects.begin(), suspects.end(), std::int64_t{0},
                               [stage](std::int64_t bytes, const Suspects& set) {
                                   const auto files = static_cast<std::int64_t>(set.contents.size());
                                   const std::int64_t length = spanOf(stage, set.size).length;
                                   return saturatedSum(bytes, saturatedProduct(length, files));
                               });
    }

    /// Files that are likely to be identical go together, unless that would leave other workers idle: a batch
    /// of several files has at most `mostBytes` to read.
    static std::vector<Batch> batchesOf(const std::vector<Suspects>& suspects, Stage stage,
                                        std::int64_t mostBytes)
    {
        std::vector<Batch> batches;
        for (std::uint32_t set = 0; set < suspects.size(); ++set) {
            const auto fitting =
                static_cast<std::size_t>(mostBytes / spanOf(stage, suspects[set].size).length);
            const std::size_t most = std::clamp<std::size_t>(fitting, 1, BatchDigester::filesAtOnce);
            std::span<const std::uint32_t> rest{suspects[set].contents};
            while (!rest.empty()) {
                const std::size_t count = std::min(most, rest.size());
                batches.push_back({set, rest.first(count)});
                rest = rest.subspan(count);
            }
        }
        // The order of the disk for short reads; the longest first for whole files, so that none is left at
        // the end for one worker alone.
        std::ranges::sort(batches, {}, [&suspects, stage](const Batch& batch) {
            return std::tuple{stage == Stage::whole ? -suspects[batch.suspects].size : 0,
                              batch.contents.front()};
        });
        return batches;
    }

    static std::vector<Digested> flattened(const std::vector<Batch>& batches,
                                           const std::vector<BatchDigester::Digests>& digests)
    {
        std::vector<Digested> result;
        for (std::size_t i = 0; i < batches.size(); ++i) {
            for (std::size_t file = 0; file < digests[i].size(); ++file) {
                if (const auto& digest = digests[i][file]) {
                    result.push_back({batches[i].suspects, *digest, batches[i].contents[file]});
                }
            }
        }
        return result;
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

    /// Opens a file by the first of its paths that still leads to it. What was read of it before is read
    /// again when its state has changed since: only with the same bytes there is it still one of the set.
    std::optional<StableFile> open(Content& content, const Suspects& set, Stage stage) const
    {
        for (std::uint32_t path = 0; path < content.paths; ++path) {
            const Candidate& way = m_findings.candidates[content.firstPath + path];
            auto file = StableFile::open(urlOf(way), set.size, way.identity.modifiedAt);
            if (!file) {
                continue;
            }
            if (file->identity() != content.identity && !hasKeyOf(set, *file, stage)) {
                return std::nullopt;
            }
            content.identity = file->identity();
            content.item = m_findings.root->identify(file->attributes());
            return std::move(*file);
        }
        return std::nullopt;
    }

    bool hasKeyOf(const Suspects& set, const StableFile& file, Stage stage) const
    {
        switch (stage) {
        case Stage::head:
            return true;
        case Stage::tail:
            return contentKey(file, Stage::head, m_stop) == set.key;
        case Stage::whole:
            return contentKey(file, Stage::tail, m_stop) == set.key;
        }
        return false;
    }

    FileUrl urlOf(const Candidate& way) const
    {
        return FileUrl{m_findings.folders.path(way.folder, way.name)};
    }

    /// The paths that lead to the files of a set. Where several paths led to one file, those that no longer
    /// do are left out.
    DuplicateGroup makeGroup(std::string id, const Suspects& alike)
    {
        struct Copy {
            Entry entry;
            FileIdentity identity;
            bool isInTrash = false;
        };

        std::vector<Copy> copies;
        for (const std::uint32_t number : alike.contents) {
            const Content& content = m_contents[number];
            for (std::uint32_t path = 0; path < content.paths; ++path) {
                const Candidate& way = m_findings.candidates[content.firstPath + path];
                Entry entry{
                    .url = urlOf(way), .name = way.name, .sizeBytes = way.size, .identity = content.item};
                if (content.paths == 1 || leadsTo(entry.url, content.identity)) {
                    const bool isTrashed = isInTrash(way.folder, entry.url);
                    copies.push_back({std::move(entry), content.identity, isTrashed});
                }
            }
        }
        std::ranges::sort(copies, {}, [](const Copy& copy) -> const FileUrl& { return copy.entry.url; });
        DuplicateGroup group;
        group.id = std::move(id);
        for (Copy& copy : copies) {
            group.entries.push_back(std::move(copy.entry));
            group.identities.push_back(copy.identity);
            group.inTrash.push_back(copy.isInTrash);
        }
        return group;
    }

    /// One question a folder, and no look-up by name for the other files in it.
    bool isInTrash(std::uint32_t folder, const FileUrl& file)
    {
        std::optional<bool>& known = m_isTrashed[folder];
        if (!known) {
            known = m_trash.contains(file);
        }
        return *known;
    }

    static bool leadsTo(const FileUrl& url, const FileIdentity& file)
    {
        const auto now = fileAttributes(url);
        return now && FileIdentity::of(*now).isSameFile(file);
    }

    CandidateWalk::Findings m_findings;
    std::stop_token m_stop;
    const std::function<void(Progress)>& m_onProgress;
    std::vector<Content> m_contents; // in the order of the disk; a worker writes those of its batch
    std::vector<DuplicateGroup> m_groups;
    TrashFolders::Lookup m_trash;
    std::vector<std::optional<bool>> m_isTrashed; // the folders, by their numbers
    Progress m_progress;
};

} // namespace

std::vector<DuplicateGroup> run(CandidateWalk::Findings findings, const std::stop_token& stop,
                                const std::function<void(Progress)>& onProgress)
{
    return Search{std::move(findings), stop, onProgress}.groups();
}

} // namespace tallyroom::DigestSearch
