#include "Scanning/TreeOutline.h"

#include "Model/CheckedArithmetic.h"
#include "Scanning/ListedEntry.h"
#include "Scanning/OutlineTree.h"
#include "Scanning/Sizing.h"

#include <chrono>
#include <mutex>

namespace tallyroom {

namespace {

using TreeOutline::Detail;
using TreeOutline::Progress;
using TreeOutline::Unknown;

/// A reading from its request to its end: an outline, and when totals turn out to be missing, they are
/// measured and the outline is read again.
struct Reading {
    FileUrl url;
    Detail detail;
    ProgressSender<Progress> sender;
    int measurings = 0;
};

void list(Reading reading);

/// Measures what has no total.
class MissingTotals final : public SizingVisitor {
public:
    static void measure(Reading reading, const std::vector<FileUrl>& folders)
    {
        ++reading.measurings;
        std::vector<TreeWalk::Root> roots;
        for (const FileUrl& folder : folders) {
            auto record = std::make_unique<SizedFolder>();
            record->place = SizeCache::shared().place(folder);
            const bool isRoot = folder == reading.url;
            roots.push_back({folder, std::move(record),
                             isRoot ? TreeWalk::RootLink::followed : TreeWalk::RootLink::refused});
        }
        std::stop_token stop = reading.sender.stopToken();
        TreeWalk::start(WorkerPool::shared(), std::move(roots),
                        std::make_unique<MissingTotals>(std::move(reading)), std::move(stop));
    }

    explicit MissingTotals(Reading reading)
        : SizingVisitor(SizeCache::shared()), m_reading(std::move(reading))
    {}

    void finish(bool stopped) override
    {
        Reading reading = *std::exchange(m_reading, std::nullopt);
        if (!stopped) {
            list(std::move(reading));
        }
    }

protected:
    void measured(SizedFolder& /*folder*/, const FolderSize& /*size*/) override {}

private:
    std::optional<Reading> m_reading;
};

/// Lists the folders that are large enough.
class OutlineVisitor final : public TreeWalk::Visitor {
public:
    struct OutlinedFolder : TreeWalk::Folder {
        OutlineTree::Place outlined = 0;
        SizeCache::Place place;
        /// None of its files can be told: only its folders are looked at, and what is left of its total is
        /// theirs.
        bool hasSmallFilesOnly = false;
        std::atomic<std::int64_t> bytesInFolders = 0;
        std::int64_t bytes = 0; ///< as far as they are known
    };

    explicit OutlineVisitor(Reading reading) : m_reading(std::move(reading)), m_url(m_reading->url) {}

    [[nodiscard]] TreeWalk::Wish wish(const TreeWalk::Folder& folder) const override
    {
        const auto& outlined = static_cast<const OutlinedFolder&>(folder);
        const bool looksAtFiles =
            !outlined.hasSmallFilesOnly && (folder.isRoot() || m_tree->mayTell(outlined.bytes));
        return {looksAtFiles ? TreeWalk::Attributes::filesAndLinks : TreeWalk::Attributes::none,
                folder.isRoot()};
    }

    void unreadable(TreeWalk::Folder& folder, const SystemError& error) override
    {
        if (folder.isRoot()) {
            m_unread = error;
        }
    }

    /// Of the root alone, and before all else.
    void counted(TreeWalk::Folder& folder, std::size_t /*names*/) override
    {
        auto& root = static_cast<OutlinedFolder&>(folder);
        SizeCache& cache = SizeCache::shared();
        root.place = cache.place(m_url);
        OutlineTree::Item item{
            {.url = m_url, .name = std::string{m_url.lastPathComponent()}, .isDirectory = true}};
        std::optional<std::int64_t> largestFile;
        if (const auto known = cache.find(m_url)) {
            known->applyTo(item.entry);
            largestFile = known->largestFile;
        } else if (!m_unread) {
            m_knownBelow = cache.knownBelow(root.place);
            item.entry.sizeBytes = knownBelow(root.place);
            item.isPending = true;
            noteUnknown(m_url);
        }
        if (const auto attributes = fileAttributes(folder.descriptor())) {
            item.entry.modifiedAt = attributes->modifiedAt;
            item.entry.identity = folder.scanRoot().identify(*attributes);
        } else {
            item.entry.set(EntryMark::unreadable, true);
            item.entry.unread = std::max(item.entry.unread, 1U);
        }
        root.bytes = item.entry.sizeBytes;
        const Detail& detail = m_reading->detail;
        m_tree = std::make_unique<OutlineTree>(
            std::move(item), detail.leastShare * static_cast<double>(root.bytes), detail.mostNodes);
        root.hasSmallFilesOnly = largestFile && !m_tree->mayTell(*largestFile);
    }

    void visit(TreeWalk::Folder& folder, std::span<TreeWalk::Child> children) override
    {
        auto& outlined = static_cast<OutlinedFolder&>(folder);
        if (!folder.isRoot() && !m_tree->mayTell(outlined.bytes)) {
            return; // others turned out to be larger
        }
        add(outlined, children, known(outlined, children));
        report();
    }

    std::unique_ptr<TreeWalk::Folder> descendInto(TreeWalk::Folder& parent,
                                                  const TreeWalk::Child& child) override
    {
        auto folder = std::make_unique<OutlinedFolder>();
        folder->outlined = static_cast<OutlineTree::Place>(child.mark >> 32U);
        folder->place = {static_cast<OutlinedFolder&>(parent).place.epoch,
                         static_cast<std::uint32_t>(child.mark)};
        const auto known = SizeCache::shared().find(folder->place);
        folder->bytes = known ? known->bytes : knownBelow(folder->place);
        folder->hasSmallFilesOnly = known && !m_tree->mayTell(known->largestFile);
        return folder;
    }

    void leave(TreeWalk::Folder& folder, bool whole) override
    {
        const auto& outlined = static_cast<OutlinedFolder&>(folder);
        if (whole && (folder.isRoot() || m_tree->mayTell(outlined.bytes))) {
            m_tree->complete(outlined.outlined,
                             outlined.hasSmallFilesOnly
                                 ? std::max<std::int64_t>(outlined.bytes - outlined.bytesInFolders, 0)
                                 : 0);
        }
    }

    void finish(bool stopped) override
    {
        Reading reading = *std::exchange(m_reading, std::nullopt);
        if (stopped) {
            return;
        }
        const bool measures = !m_unknown.empty() && reading.measurings < mostMeasurings;
        reading.sender.send(record(!m_hasUnknown));
        if (measures) {
            MissingTotals::measure(std::move(reading), m_unknown);
        }
    }

private:
    using Clock = std::chrono::steady_clock;

    static constexpr std::chrono::milliseconds interval{120};

    /// Folders without a total that came up while others were measured.
    static constexpr int mostMeasurings = 3;

    /// What the store knows of a child.
    struct Known {
        FolderSize size;
        std::uint32_t record = 0;
        bool isPending = false;
    };

    [[nodiscard]] std::int64_t knownBelow(SizeCache::Place place) const
    {
        return place.record < m_knownBelow.size() ? m_knownBelow[place.record] : 0;
    }

    [[nodiscard]] std::vector<Known> known(const OutlinedFolder& folder,
                                           std::span<const TreeWalk::Child> children)
    {
        std::vector<SizeCache::Child> folders;
        for (const TreeWalk::Child& child : children) {
            if (child.isFolder()) {
                folders.push_back({child.name, {}, {}});
            }
        }
        SizeCache::shared().lookUp(folder.place, folders);
        std::vector<Known> answers;
        answers.reserve(children.size());
        auto answer = folders.cbegin();
        for (const TreeWalk::Child& child : children) {
            if (!child.isFolder()) {
                answers.push_back({sizeOfItem(child), 0, false});
                continue;
            }
            if (child.exclusion != 0) {
                answers.push_back({{.unread = 1, .hasExcluded = true, .isUnreadable = true}, 0, false});
                ++answer;
                continue;
            }
            const bool isPending = !answer->size;
            if (isPending) {
                noteUnknown(folder.url(child.name));
            }
            answers.push_back({isPending ? FolderSize{.bytes = knownBelow(answer->place)} : *answer->size,
                               answer->place.record, isPending});
            ++answer;
        }
        return answers;
    }

    [[nodiscard]] bool hasLargeParts(const Known& folder) const
    {
        return folder.isPending
                   ? folder.size.bytes > 0
                   : m_tree->mayTell(folder.size.largestFile) || m_tree->mayTell(folder.size.largestFolder);
    }

    void noteUnknown(const FileUrl& url)
    {
        const std::scoped_lock lock{m_mutex};
        m_hasUnknown = true;
        if (m_reading->detail.unknown == Unknown::measured) {
            m_unknown.push_back(url);
        }
    }

    void add(OutlinedFolder& folder, std::span<TreeWalk::Child> children, const std::vector<Known>& known)
    {
        const FileUrl url = folder.url();
        const ScanRoot& scanRoot = folder.scanRoot();
        std::vector<OutlineTree::Item> items;
        OutlineTree::Rest rest;
        std::int64_t bytesInFolders = 0;
        for (std::size_t i = 0; i < children.size(); ++i) {
            TreeWalk::Child& child = children[i];
            if (!child.isFolder() && folder.hasSmallFilesOnly) {
                ++rest.count;
                continue;
            }
            const std::int64_t bytes = known[i].size.bytes;
            bytesInFolders = saturatedSum(bytesInFolders, child.isFolder() ? bytes : 0);
            if (!m_tree->mayTell(bytes)) {
                rest.bytes = saturatedSum(rest.bytes, bytes);
                ++rest.count;
                continue;
            }
            child.descend = child.isFolder() && hasLargeParts(known[i]);
            child.mark = items.size();
            FileAttributes attributes;
            if (const auto read = child.isFolder() ? fileAttributes(folder.descriptor(), child.name.data())
                                                   : std::unexpected(SystemError{})) {
                attributes = *read;
                child.attributes = &attributes;
            }
            items.push_back({listedEntry(url, child, known[i].size, scanRoot), known[i].isPending});
        }
        folder.bytesInFolders.fetch_add(bytesInFolders);
        const std::uint64_t first = m_tree->add(folder.outlined, std::move(items), rest);
        for (std::size_t i = 0; i < children.size(); ++i) {
            children[i].mark = ((first + children[i].mark) << 32U) | known[i].record;
        }
    }

    [[nodiscard]] Progress record(bool isComplete) const
    {
        return {std::make_shared<const Outline>(m_tree->outline()), isComplete, m_unread};
    }

    /// The outline so far, now and then.
    void report()
    {
        const std::unique_lock lock{m_reporting, std::try_to_lock};
        if (lock.owns_lock() && Clock::now() >= m_nextReport) {
            m_reading->sender.send(record(false));
            m_nextReport = Clock::now() + interval;
        }
    }

    std::optional<Reading> m_reading;
    const FileUrl m_url;
    std::optional<SystemError> m_unread;    ///< why the root cannot be read
    std::vector<std::int64_t> m_knownBelow; ///< of what has no total, by its record
    std::unique_ptr<OutlineTree> m_tree;    ///< once the root is open
    std::mutex m_reporting;
    Clock::time_point m_nextReport = Clock::now() + interval; ///< guarded by m_reporting
    std::mutex m_mutex;
    bool m_hasUnknown = false;      ///< guarded by m_mutex until finish
    std::vector<FileUrl> m_unknown; ///< likewise; those that are to be measured
};

void list(Reading reading)
{
    FileUrl url = reading.url;
    std::stop_token stop = reading.sender.stopToken();
    TreeWalk::start({std::move(url), std::make_unique<OutlineVisitor::OutlinedFolder>()},
                    std::make_unique<OutlineVisitor>(std::move(reading)), std::move(stop));
}

} // namespace

TreeOutline::Stream TreeOutline::read(const FileUrl& folder, const Detail& detail)
{
    auto [sender, stream] = makeProgressStream<Progress>();
    Reading reading{folder.standardized(), detail, std::move(sender)};
    if (detail.unknown == Unknown::measured && !SizeCache::shared().find(reading.url)) {
        const FileUrl url = reading.url;
        MissingTotals::measure(std::move(reading), {url});
    } else {
        list(std::move(reading));
    }
    return std::move(stream);
}

} // namespace tallyroom
