#include "Kinds/FolderAnalyzer.h"

#include "Concurrency/LastRecord.h"
#include "FileSystem/AttentiveVisitor.h"
#include "FileSystem/PrunedFolders.h"
#include "Kinds/VolumeAudit.h"
#include "Model/CheckedArithmetic.h"

#include <algorithm>
#include <array>
#include <functional>
#include <mutex>

namespace tallyroom {

namespace {

/// Bytes and files of each kind.
class Tally {
public:
    void count(FileKind kind, std::int64_t bytes) { add(kind, {bytes, 1}); }

    void add(const Tally& other)
    {
        std::ranges::for_each(FileKind::all,
                              [&](FileKind kind) { add(kind, other.m_kinds.at(kind.index())); });
    }

    [[nodiscard]] std::int64_t files() const noexcept { return m_files; }

    [[nodiscard]] FolderSummary summary() const
    {
        FolderSummary summary;
        for (const FileKind kind : FileKind::all) {
            if (const Sum& sum = m_kinds.at(kind.index()); sum.files > 0) {
                summary.categories.push_back({kind, sum.bytes, sum.files});
                summary.totalBytes = checkedSum(summary.totalBytes, sum.bytes);
            }
        }
        std::ranges::stable_sort(summary.categories, std::greater{}, &CategorySize::totalBytes);
        summary.totalFiles = m_files;
        return summary;
    }

private:
    struct Sum {
        std::int64_t bytes = 0;
        std::int64_t files = 0;
    };

    void add(FileKind kind, const Sum& more)
    {
        Sum& sum = m_kinds.at(kind.index());
        sum.bytes = checkedSum(sum.bytes, more.bytes);
        sum.files = checkedSum(sum.files, more.files);
        m_files = checkedSum(m_files, more.files);
    }

    std::array<Sum, FileKind::all.size()> m_kinds;
    std::int64_t m_files = 0;
};

/// Counts the files of a tree: a record at every multiple of the cadence, and the summary at the end.
class AnalysisVisitor final : public AttentiveVisitor {
public:
    explicit AnalysisVisitor(ProgressSender<FolderAnalyzer::Progress> sender) : m_sender(std::move(sender)) {}

    [[nodiscard]] TreeWalk::Wish wish(const TreeWalk::Folder& folder) const override
    {
        const bool isAudited = folder.isRoot() ? VolumeAudit::isTop(folder) : m_audit != nullptr;
        return {.attributes = isAudited ? TreeWalk::Attributes::everything : TreeWalk::Attributes::files,
                .identities = false};
    }

    void visit(TreeWalk::Folder& folder, std::span<TreeWalk::Child> children) override
    {
        noteUnread(folder, children);
        if (folder.isRoot()) {
            std::call_once(m_begun, [&] { m_audit = VolumeAudit::of(folder); });
        }
        if (m_audit != nullptr) {
            m_audit->add(folder, children);
        }
        Tally batch;
        for (TreeWalk::Child& child : children) {
            if (child.isFolder()) {
                child.descend = !isPruned(child.name);
            } else if (child.type == EntryType::file && child.attributes != nullptr) {
                batch.count(FileKind::of(nameExtension(child.name)), child.attributes->allocatedBytes);
            }
        }
        if (batch.files() > 0) {
            take(batch);
        }
    }

    void leave(TreeWalk::Folder& folder, bool whole) override
    {
        if (folder.isRoot() && whole && m_audit != nullptr) {
            m_account = m_audit->close(folder);
        }
    }

    /// After a stop too: a stream that was cancelled drops the record.
    void finish(bool /*stopped*/) override
    {
        m_sender->send({m_tally.files(), m_tally.summary(), FolderAnalyzer::Progress::Phase::done,
                        unreadRoot(), unreadPlaces(), m_account});
        m_sender.reset();
    }

private:
    void take(const Tally& batch)
    {
        constexpr std::int64_t cadence = FolderAnalyzer::filesBetweenRecords;
        StreamWake wake; // outlives the lock
        const std::scoped_lock lock{m_mutex};
        const std::int64_t before = m_tally.files() / cadence;
        m_tally.add(batch);
        std::vector<FolderAnalyzer::Progress> records;
        for (std::int64_t multiple = before + 1; multiple <= m_tally.files() / cadence; ++multiple) {
            records.push_back({multiple * cadence, std::nullopt, FolderAnalyzer::Progress::Phase::scanning});
        }
        wake = m_sender->enqueue(std::move(records));
    }

    std::optional<ProgressSender<FolderAnalyzer::Progress>> m_sender;
    std::once_flag m_begun;
    std::unique_ptr<VolumeAudit> m_audit; // of a volume's top; from the root's first visit on
    std::optional<VolumeAccount> m_account;
    std::mutex m_mutex;
    Tally m_tally; // guarded by m_mutex until finish
};

/// Analyses until `stop` comes, or until the stream is cancelled where there is none.
ProgressStream<FolderAnalyzer::Progress> start(const FileUrl& url, std::optional<std::stop_token> stop)
{
    auto [sender, stream] = makeProgressStream<FolderAnalyzer::Progress>();
    const std::stop_token cancelled = sender.stopToken();
    TreeWalk::start({url.standardized(), std::make_unique<TreeWalk::Folder>()},
                    std::make_unique<AnalysisVisitor>(std::move(sender)),
                    std::move(stop).value_or(cancelled));
    return std::move(stream);
}

} // namespace

std::future<FolderSummary> FolderAnalyzer::summarize(const FileUrl& url, std::stop_token stop)
{
    return lastRecord(start(url, std::move(stop)),
                      [](const Progress& last) { return last.summary.value_or(FolderSummary{}); });
}

ProgressStream<FolderAnalyzer::Progress> FolderAnalyzer::stream(const FileUrl& url)
{
    return start(url, std::nullopt);
}

} // namespace tallyroom
