#include "Duplicates/DigestSearch.h"

#include "Concurrency/ParallelFor.h"
#include "Duplicates/BatchDigester.h"
#include "Duplicates/CandidateContents.h"
#include "Duplicates/CandidateDisks.h"
#include "Duplicates/DigestStage.h"
#include "Duplicates/FilesAhead.h"
#include "Model/CheckedArithmetic.h"

#include <algorithm>
#include <atomic>
#include <memory>
#include <numeric>
#include <optional>
#include <tuple>
#include <utility>

namespace tallyroom::DigestSearch {

namespace {

using namespace DigestStages;
using Stage = DigestStage;

constexpr std::size_t filesALook = 8;

/// Files that no stage has told apart yet.
struct Suspects {
    std::string key;
    std::int64_t size = 0;
    std::vector<std::uint32_t> contents;
};

class Search {
public:
    Search(CandidateWalk::Findings findings, std::stop_token stop,
           const std::function<void(Progress)>& onProgress, const DiskSense& sense)
        : m_contents(std::move(findings)), m_disks(m_contents.devices(), sense), m_stop(std::move(stop)),
          m_onProgress(onProgress)
    {}

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
        bool isOrdered = false; ///< read while nobody else reads that disk
    };

    struct Digested {
        std::uint32_t suspects = 0;
        Digest digest;
        std::uint32_t content = 0;

        friend auto operator<=>(const Digested&, const Digested&) = default;
    };

    /// A stage on its way.
    struct Reading {
        const std::vector<Suspects>& suspects;
        Stage stage{};
        std::int64_t toRead = 0;
        std::atomic<std::int64_t> readBytes = 0;
        std::vector<Digested> digested{};
    };

    std::vector<Suspects> bySize() const
    {
        std::vector<std::uint32_t> contents(m_contents.size());
        std::iota(contents.begin(), contents.end(), 0U);
        std::ranges::stable_sort(contents, {},
                                 [this](std::uint32_t content) { return m_contents[content].size; });
        std::vector<Suspects> suspects;
        for (const std::uint32_t content : contents) {
            const std::int64_t size = m_contents[content].size;
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
            paths += m_contents.paths(content);
        }
        if (paths < 2) {
            return;
        }
        if (isSettled(stage, alike.size)) {
            DuplicateGroup group = m_contents.group(std::string{idPrefix(stage)} + alike.key, alike.contents);
            if (group.entries.size() > 1) {
                m_groups.push_back(std::move(group));
            }
        } else {
            left.push_back(std::move(alike));
        }
    }

    /// Files on rotating disks that are read in order come last, one at a time. When such a disk turns out
    /// to be quick, or a quick one slow, what is left is dealt with anew.
    std::vector<Digested> digestAll(const std::vector<Suspects>& suspects, Stage stage)
    {
        Reading reading{suspects, stage, bytesToRead(suspects, stage)};
        std::vector<Batch> left;
        for (std::uint32_t set = 0; set < suspects.size(); ++set) {
            left.push_back({set, suspects[set].contents});
        }
        while (!left.empty() && !m_stop.stop_requested()) {
            std::vector<Batch> ordered;
            std::vector<Batch> others = withoutOrdered(std::move(left), ordered);
            const bool isOrdered = others.empty();
            const unsigned lanes =
                isOrdered ? m_disks.readers() : lanesOf(stage, WorkerPool::shared().width());
            left = isOrdered
                       ? digest(inOrder(ordered, reading), reading, lanes)
                       : digest(batchesOf(others, reading, reading.toRead / (2 * lanes)), reading, lanes);
            if (!isOrdered) {
                left.insert(left.end(), ordered.begin(), ordered.end());
            }
        }
        return std::move(reading.digested);
    }

    /// Batches on their way, either all of them in order or none.
    struct Pass {
        const std::vector<Batch>& batches;
        Reading& reading;
        FilesAhead ahead;
        std::vector<std::unique_ptr<BatchDigester>> digesters; ///< one a worker
        std::vector<std::optional<BatchDigester::Digests>> digests;
    };

    /// Digests batches until the disk of one of them wants to be read otherwise. Returns those that are left.
    std::vector<Batch> digest(const std::vector<Batch>& batches, Reading& reading, unsigned lanes)
    {
        WorkerPool& pool = WorkerPool::shared();
        Pass pass{batches, reading, filesAhead(batches, reading),
                  std::vector<std::unique_ptr<BatchDigester>>(pool.capacity()),
                  std::vector<std::optional<BatchDigester::Digests>>(batches.size())};
        ParallelForOptions options;
        options.stop = m_stop;
        options.lanes = lanes;
        options.whileWaiting = [&] {
            // A file that differs from its model late is read twice and counts once.
            const std::int64_t bytes =
                std::min(reading.readBytes.load(std::memory_order_relaxed), reading.toRead);
            m_onProgress({m_progress.done + bytes, m_progress.total});
        };
        // One look at the disk for many files that lie side by side.
        const std::size_t step = !batches.empty() && batches.front().isOrdered ? filesALook : 1;
        const auto work = [&](std::size_t look, unsigned worker) {
            const std::size_t first = look * step;
            const Batch& batch = batches[first];
            if (m_disks.areOrdered(deviceOf(batch)) != batch.isOrdered) {
                return;
            }
            m_disks.watch(deviceOf(batch), [&] {
                for (std::size_t i = first; i < std::min(first + step, batches.size()); ++i) {
                    digestOne(pass, i, worker);
                }
            });
        };
        parallelFor(pool, (batches.size() + step - 1) / step, work, options);
        return gather(pass);
    }

    FilesAhead filesAhead(const std::vector<Batch>& batches, const Reading& reading)
    {
        return {batches.size(), [&](std::size_t number) { return open(batches[number], 0, reading); },
                [&](std::size_t number) {
                    return spanAhead(reading.stage, reading.suspects[batches[number].suspects].size);
                }};
    }

    std::optional<StableFile> open(const Batch& batch, std::size_t index, const Reading& reading)
    {
        return m_contents.open(batch.contents[index], reading.suspects[batch.suspects].key, reading.stage,
                               m_stop);
    }

    void digestOne(Pass& pass, std::size_t number, unsigned worker)
    {
        auto& digester = pass.digesters[worker];
        if (digester == nullptr) {
            digester = std::make_unique<BatchDigester>();
        }
        const Batch& batch = pass.batches[number];
        auto early = batch.isOrdered ? pass.ahead.take(number) : std::nullopt;
        pass.digests[number] = digester->digest(
            batch.contents.size(), spanOf(pass.reading.stage, pass.reading.suspects[batch.suspects].size),
            [&](std::size_t index) {
                return early ? std::exchange(early, std::nullopt) : open(batch, index, pass.reading);
            },
            m_stop, pass.reading.readBytes);
    }

    /// Enters the digests that were made, and returns the batches without.
    static std::vector<Batch> gather(const Pass& pass)
    {
        std::vector<Batch> left;
        for (std::size_t i = 0; i < pass.batches.size(); ++i) {
            const Batch& batch = pass.batches[i];
            if (!pass.digests[i]) {
                left.push_back(batch);
                continue;
            }
            for (std::size_t file = 0; file < batch.contents.size(); ++file) {
                if (const auto& digest = (*pass.digests[i])[file]) {
                    pass.reading.digested.push_back({batch.suspects, *digest, batch.contents[file]});
                }
            }
        }
        return left;
    }

    std::uint64_t deviceOf(const Batch& batch) const
    {
        return m_contents[batch.contents.front()].identity.device;
    }

    /// Moves the files that are to be read in order to `ordered`. The contents of a set are sorted by device.
    std::vector<Batch> withoutOrdered(std::vector<Batch> batches, std::vector<Batch>& ordered) const
    {
        std::vector<Batch> others;
        for (const Batch& batch : joined(std::move(batches))) {
            for (std::span rest = batch.contents; !rest.empty();) {
                const std::uint64_t device = m_contents[rest.front()].identity.device;
                const auto end = std::ranges::find_if(rest, [&](std::uint32_t content) {
                    return m_contents[content].identity.device != device;
                });
                const Batch part{batch.suspects, {rest.begin(), end}};
                (m_disks.areOrdered(device) ? ordered : others).push_back(part);
                rest = {end, rest.end()};
            }
        }
        return others;
    }

    /// Parts of a set that lie side by side become one again.
    static std::vector<Batch> joined(std::vector<Batch> batches)
    {
        std::ranges::sort(batches, {}, [](const Batch& batch) {
            return std::pair{batch.suspects, batch.contents.data()};
        });
        std::vector<Batch> result;
        for (const Batch& batch : batches) {
            if (!result.empty() && result.back().suspects == batch.suspects &&
                result.back().contents.data() + result.back().contents.size() == batch.contents.data()) {
                result.back().contents = {result.back().contents.data(),
                                          result.back().contents.size() + batch.contents.size()};
            } else {
                result.push_back({batch.suspects, batch.contents});
            }
        }
        return result;
    }

    /// Each file by itself, as the spans that will be read lie on the disk; as their inodes do where the file
    /// system does not tell.
    std::vector<Batch> inOrder(const std::vector<Batch>& batches, const Reading& reading) const
    {
        using Place = std::tuple<std::uint64_t, bool, std::uint64_t, std::uint32_t>;
        std::vector<std::pair<Place, Batch>> placed;
        for (const Batch& batch : batches) {
            const std::int64_t size = reading.suspects[batch.suspects].size;
            const std::int64_t offset = spanAhead(reading.stage, size).offset;
            for (const std::uint32_t& content : batch.contents) {
                const FileId& identity = m_contents[content].identity;
                const auto file = openForReading(m_contents.url(content));
                const auto place = file ? placeOnDisk(file->get(), offset) : std::nullopt;
                placed.push_back({{identity.device, !place, place.value_or(identity.inode), content},
                                  {batch.suspects, {&content, 1}, true}});
            }
        }
        std::ranges::sort(placed, {}, &std::pair<Place, Batch>::first);
        std::vector<Batch> result;
        std::ranges::transform(placed, std::back_inserter(result), &std::pair<Place, Batch>::second);
        return result;
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
    static std::vector<Batch> batchesOf(const std::vector<Batch>& sets, const Reading& reading,
                                        std::int64_t mostBytes)
    {
        std::vector<Batch> batches;
        for (const Batch& set : sets) {
            const auto fitting = static_cast<std::size_t>(
                mostBytes / spanOf(reading.stage, reading.suspects[set.suspects].size).length);
            const std::size_t most = std::clamp<std::size_t>(fitting, 1, BatchDigester::filesAtOnce);
            for (std::span rest = set.contents; !rest.empty();) {
                const std::size_t count = std::min(most, rest.size());
                batches.push_back({set.suspects, rest.first(count)});
                rest = rest.subspan(count);
            }
        }
        // The order of the disk for short reads; the longest first for whole files, so that none is left at
        // the end for one worker alone.
        std::ranges::sort(batches, {}, [&reading](const Batch& batch) {
            return std::tuple{reading.stage == Stage::whole ? -reading.suspects[batch.suspects].size : 0,
                              batch.contents.front()};
        });
        return batches;
    }

    CandidateContents m_contents;
    CandidateDisks m_disks;
    std::stop_token m_stop;
    const std::function<void(Progress)>& m_onProgress;
    std::vector<DuplicateGroup> m_groups;
    Progress m_progress;
};

} // namespace

std::vector<DuplicateGroup> run(CandidateWalk::Findings findings, const std::stop_token& stop,
                                const std::function<void(Progress)>& onProgress, const DiskSense& sense)
{
    return Search{std::move(findings), stop, onProgress, sense}.groups();
}

} // namespace tallyroom::DigestSearch
