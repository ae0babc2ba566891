#include "Concurrency/LastRecord.h"
#include "FileSystem/AttentiveVisitor.h"
#include "FileSystem/PrunedFolders.h"
#include "Scanning/FileScanner.h"
#include "Scanning/Sizing.h"
#include "Scanning/StreamedEntries.h"

#include <iterator>

namespace tallyroom {

namespace {

/// The folders that were found, not measured yet.
using Matches = std::vector<Entry>;

using Inspector = std::shared_ptr<const FindInspector>;

Entry matchAt(FileUrl url, const std::optional<Timestamp>& modifiedAt, const ItemIdentity& identity)
{
    std::string name{url.lastPathComponent()};
    return {.url = std::move(url),
            .name = std::move(name),
            .isDirectory = true,
            .modifiedAt = modifiedAt,
            .identity = identity};
}

/// Finds the folders of given names. Reads only names, the attributes of matches, and what the inspector
/// does.
class MatchFinder : public AttentiveVisitor {
public:
    explicit MatchFinder(FolderNames names, Inspector inspector = {})
        : m_names(std::move(names)), m_inspector(std::move(inspector))
    {}

    [[nodiscard]] TreeWalk::Wish wish(const TreeWalk::Folder& /*folder*/) const final
    {
        return {TreeWalk::Attributes::none, false};
    }

    void visit(TreeWalk::Folder& folder, std::span<TreeWalk::Child> children) final
    {
        noteUnread(folder, children);
        Matches matches;
        for (TreeWalk::Child& child : children) {
            if (!child.isFolder()) {
                continue;
            }
            if (child.exclusion == 0 && m_names.contains(child.name)) {
                matches.push_back(match(folder, child));
            } else {
                child.descend = child.exclusion != 0 || !isPruned(child.name);
            }
        }
        if (!matches.empty()) {
            add(std::move(matches));
        }
    }

    void add(Matches matches)
    {
        StreamWake wake; // outlives the lock
        const std::scoped_lock lock{m_mutex};
        const std::size_t before = m_matches.size();
        std::ranges::move(matches, std::back_inserter(m_matches));
        wake = found(before, m_matches.size());
    }

protected:
    /// The number of matches has grown from `before` to `now`. Under the lock of the matches, so that the
    /// numbers are told in their order.
    virtual StreamWake found(std::size_t /*before*/, std::size_t /*now*/) { return {}; }

    /// All matches by path, so that results repeat; once, at the end.
    [[nodiscard]] Matches takeMatches()
    {
        std::ranges::sort(m_matches, {}, &Entry::url);
        return std::move(m_matches);
    }

    [[nodiscard]] const Inspector& inspector() const { return m_inspector; }

private:
    [[nodiscard]] Entry match(const TreeWalk::Folder& folder, const TreeWalk::Child& child) const
    {
        const auto attributes = child.attributes != nullptr
                                    ? SystemResult<FileAttributes>{*child.attributes}
                                    : fileAttributes(folder.descriptor(), child.name.data());
        FileUrl url = folder.url(child.name);
        Entry found = attributes ? matchAt(std::move(url), attributes->modifiedAt,
                                           folder.scanRoot().identify(*attributes))
                                 : matchAt(std::move(url), {}, {});
        if (m_inspector != nullptr) {
            m_inspector->inspect(folder.descriptor(), found);
        }
        return found;
    }

    const FolderNames m_names;
    const Inspector m_inspector; // may be none
    std::mutex m_mutex;
    Matches m_matches; // guarded by m_mutex until finish
};

/// Gives the matches as they are, without their sizes.
class MatchLocator final : public MatchFinder {
public:
    MatchLocator(FolderNames names, std::promise<std::vector<FileUrl>> result)
        : MatchFinder(std::move(names)), m_result(std::move(result))
    {}

    void finish(bool /*stopped*/) override
    {
        Matches matches = takeMatches();
        std::vector<FileUrl> urls(matches.size());
        std::ranges::transform(matches, urls.begin(), [](Entry& match) { return std::move(match.url); });
        m_result.set_value(std::move(urls));
    }

private:
    std::promise<std::vector<FileUrl>> m_result;
};

/// Measures the matches of a search, all in one walk.
class MatchSizing final : public SizingVisitor {
public:
    struct MatchedFolder : SizedFolder {
        std::size_t index = 0;
    };

    MatchSizing(Matches matches, std::unique_ptr<StreamedEntries> entries)
        : SizingVisitor(SizeCache::shared()), m_matches(std::move(matches)), m_entries(std::move(entries))
    {}

    /// `passedBy` is what the search before could not read.
    static void start(Matches matches, SharedUnreadPlaces passedBy, std::unique_ptr<StreamedEntries> entries)
    {
        std::stop_token stop = entries->sender().stopToken();
        auto sizing = std::make_unique<MatchSizing>(std::move(matches), std::move(entries));
        sizing->m_entries->setRemarks(
            [&found = sizing->m_matches, passedBy = std::move(passedBy)](ScanProgress& last) {
                last.unreadPlaces = unread(found, passedBy);
            });
        auto roots = sizing->deliverKnown();
        TreeWalk::start(WorkerPool::shared(), std::move(roots), std::move(sizing), std::move(stop));
    }

    void finish(bool /*stopped*/) override { m_entries->end(); }

protected:
    void measured(SizedFolder& folder, const FolderSize& size) override
    {
        if (folder.isRoot()) {
            std::vector<IndexedEntry> done;
            done.push_back(entry(static_cast<MatchedFolder&>(folder).index, size));
            m_entries->append(std::move(done));
        }
    }

private:
    /// Delivers the totals that are known, and returns the folders to walk.
    std::vector<TreeWalk::Root> deliverKnown()
    {
        m_entries->expect(m_matches.size());
        std::vector<IndexedEntry> known;
        std::vector<TreeWalk::Root> roots;
        for (std::size_t index = 0; index < m_matches.size(); ++index) {
            const FileUrl& url = m_matches[index].url;
            if (const auto size = cache().find(url)) {
                known.push_back(entry(index, *size));
                continue;
            }
            auto folder = std::make_unique<MatchedFolder>();
            folder->place = cache().place(url);
            folder->index = index;
            // A link that has taken the folder's place since then is not followed.
            roots.push_back({url, std::move(folder), TreeWalk::RootLink::refused});
        }
        m_entries->append(std::move(known));
        return roots;
    }

    /// What the search passed by, and what lies below its matches.
    static SharedUnreadPlaces unread(const Matches& matches, const SharedUnreadPlaces& passedBy)
    {
        UnreadPlaces all = passedBy != nullptr ? *passedBy : UnreadPlaces{};
        for (const Entry& match : matches) {
            all.add(SizeCache::shared().unreadPlaces(match.url));
        }
        return all.count > 0 ? std::make_shared<const UnreadPlaces>(std::move(all)) : nullptr;
    }

    [[nodiscard]] IndexedEntry entry(std::size_t index, const FolderSize& size) const
    {
        Entry measured = m_matches[index];
        size.applyTo(measured);
        return {index, std::move(measured)};
    }

    const Matches m_matches;
    std::unique_ptr<StreamedEntries> m_entries;
};

/// Finds, then has its finds measured.
class MeasuredSearch final : public MatchFinder {
public:
    MeasuredSearch(FolderNames names, Inspector inspector, FileUrl root,
                   std::unique_ptr<StreamedEntries> entries)
        : MatchFinder(std::move(names), std::move(inspector)), m_root(std::move(root)),
          m_entries(std::move(entries))
    {}

    void finish(bool stopped) override
    {
        if (stopped) {
            m_entries->end();
        } else {
            if (unreadRoot()) {
                m_entries->unreadable(*unreadRoot());
            }
            Matches matches = takeMatches();
            if (inspector() != nullptr) {
                conclude(matches);
            }
            MatchSizing::start(std::move(matches), unreadPlaces(), std::move(m_entries));
        }
    }

protected:
    StreamWake found(std::size_t before, std::size_t now) override
    {
        std::vector<ScanProgress> records;
        records.reserve(now - before);
        for (std::size_t count = before + 1; count <= now; ++count) {
            records.push_back({{}, 0, static_cast<std::int64_t>(count), true});
        }
        return m_entries->sender().enqueue(std::move(records));
    }

private:
    void conclude(Matches& matches) const
    {
        // The searched folder itself was found before the walk, on the caller's thread.
        if (matches.size() == 1 && matches.front().url == m_root) {
            if (const auto parent = openFolder(m_root.parent(), FolderAccess::throughOnly)) {
                inspector()->inspect(parent->get(), matches.front());
            }
        }
        inspector()->conclude(m_root, matches);
    }

    const FileUrl m_root;
    std::unique_ptr<StreamedEntries> m_entries;
};

/// Walks `root`, or ends at once when there is nothing to walk.
void startFinding(std::optional<FileUrl> root, std::unique_ptr<MatchFinder> finder, std::stop_token stop)
{
    std::vector<TreeWalk::Root> roots;
    if (root) {
        roots.push_back({std::move(*root), std::make_unique<TreeWalk::Folder>()});
    }
    TreeWalk::start(WorkerPool::shared(), std::move(roots), std::move(finder), std::move(stop));
}

/// A folder that is no link, as a match of its own; found below the folder that holds it.
std::optional<Entry> folderItself(const FileUrl& url)
{
    const FileUrl holder = url.parent();
    const auto parent = openFolder(holder, FolderAccess::throughOnly);
    const auto attributes = parent
                                ? fileAttributes(parent->get(), std::string{url.lastPathComponent()}.c_str())
                                : std::unexpected(parent.error());
    if (!attributes || attributes->type != EntryType::folder) {
        return std::nullopt;
    }
    return matchAt(url, attributes->modifiedAt, ScanRoots::add(holder, parent->get()).identify(*attributes));
}

const FolderNames& nodeModules()
{
    static const auto& names = *new FolderNames{"node_modules"}; // outlives every worker
    return names;
}

} // namespace

std::future<EntryList> FileScanner::findDirectories(FolderNames matching, const FileUrl& folder)
{
    return lastRecord(findDirectoriesStream(std::move(matching), folder),
                      [](const ScanProgress& last) { return rankedByPath(last.entries); });
}

FileScanner::ScanStream
FileScanner::findDirectoriesStream(FolderNames matching, const FileUrl& folder,
                                   const std::shared_ptr<const FindInspector>& inspector)
{
    std::optional root{folder.standardized()};
    auto [sender, stream] = makeProgressStream<ScanProgress>();
    std::stop_token stop = sender.stopToken();
    const bool isNamed = matching.contains(root->lastPathComponent());
    const bool nothingIsWanted = matching.empty();
    auto finder = std::make_unique<MeasuredSearch>(std::move(matching), inspector, *root,
                                                   std::make_unique<StreamedEntries>(std::move(sender)));
    if (isNamed) {
        // The only disk access on the caller's thread, for a folder that was just chosen.
        if (auto itself = folderItself(*root)) {
            finder->add({std::move(*itself)});
            root.reset();
        }
    }
    if (nothingIsWanted) {
        root.reset();
    }
    startFinding(std::move(root), std::move(finder), std::move(stop));
    return std::move(stream);
}

std::future<EntryList> FileScanner::findNodeModules(const FileUrl& folder)
{
    return findDirectories(nodeModules(), folder);
}

FileScanner::ScanStream
FileScanner::findNodeModulesStream(const FileUrl& folder,
                                   const std::shared_ptr<const FindInspector>& inspector)
{
    return findDirectoriesStream(nodeModules(), folder, inspector);
}

std::future<std::vector<FileUrl>> FileScanner::locateNodeModules(const FileUrl& folder)
{
    std::promise<std::vector<FileUrl>> promise;
    auto result = promise.get_future();
    startFinding(folder.standardized(), std::make_unique<MatchLocator>(nodeModules(), std::move(promise)),
                 {});
    return result;
}

} // namespace tallyroom
