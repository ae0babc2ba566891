#pragma once

#include "Concurrency/ProgressStream.h"
#include "Model/FileKind.h"
#include "Model/FolderNames.h"
#include "Scanning/FindInspector.h"
#include "Scanning/FolderContents.h"
#include "Scanning/FolderSize.h"
#include "Scanning/RunningFolders.h"
#include "Scanning/ScanProgress.h"

#include <cstdint>
#include <future>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace tallyroom {

/// The scanning engine: measures, lists, searches, ranks. No error ends a scan: what cannot be read has size
/// 0, what cannot be listed is empty, a date that cannot be read is absent; entries count what is unread
/// below them, and the last record of a stream tells all of it. Links are never
/// followed. Sizes are space used on disk (st_blocks × 512), else the logical size, else 0. All operations
/// may be called from any thread but a pool worker's; the blocking ones wait for the process's WorkerPool.
namespace FileScanner {

/// The records of a scan.
struct ScanStream : ProgressStream<ScanProgress> {
    ScanStream(ProgressStream<ScanProgress> records, std::shared_ptr<const RunningFolders> folders = {},
               SharedFolderContents found = {})
        : ProgressStream(std::move(records)), running(std::move(folders)), contents(std::move(found))
    {}

    /// Of a listing: the folders that its records do not contain yet. Null where nothing is measured.
    std::shared_ptr<const RunningFolders> running;
    /// Of a listing: what the listed folders hold besides bytes, so far.
    SharedFolderContents contents;
};

/// The space used by a file or a link itself, or by everything below a folder that is no folder. Hard links
/// count once a link, mount points are crossed, the folder's own blocks are not added. Every folder met is
/// kept in SizeCache. Blocks the caller.
[[nodiscard]] std::int64_t directorySize(const FileUrl& url);

/// The same with what could not be read.
[[nodiscard]] FolderSize measure(const FileUrl& url);

/// The folder's direct children, each with its total, largest first, equal sizes in the order of the
/// listing. With `useCache` a listing that ScanCache knows is returned at once; a fresh one is always kept.
[[nodiscard]] std::future<EntryList> directEntries(const FileUrl& url, bool useCache);

/// The same with a record after every child, in the order in which they are done. One record for a cached or
/// an empty folder. The last record has completed == total; a cancelled listing ends without one and is not
/// kept.
[[nodiscard]] ScanStream directEntriesStream(const FileUrl& url, bool useCache);

/// Which files a search for the largest is about; all without a criterion.
struct FileCriteria {
    std::optional<FileKind> kind{};
    /// Last modified before this moment; a file without a date never is.
    std::optional<Timestamp> modifiedBefore{};
};

/// The `limit` largest files anywhere below `folder`, larger first, equal sizes by path (bytes); none when
/// `limit` is 0 or negative. Folders called ".git", ".hg" or ".svn" are not entered, links not offered, what
/// cannot be read counts as a file of size 0. `folder` itself may be a link. Time linear in the files, memory
/// in `limit`.
[[nodiscard]] std::future<EntryList> findLargestFiles(const FileUrl& folder, std::int64_t limit,
                                                      const FileCriteria& criteria = {});

/// The same with a record of the ranking so far every 120 ms, `completed` and `total` the files seen so far,
/// whether they match or not. Only the last record, the whole result, has isDiscovering false; a cancelled
/// scan ends without it.
[[nodiscard]] ScanStream findLargestFilesStream(const FileUrl& folder, std::int64_t limit,
                                                const FileCriteria& criteria = {});

/// The folders below `folder` that bear one of the names, each with its total, largest first, equal sizes by
/// path. Matches are not searched inside, nor are ".git", ".hg" and ".svn" where they do not match; links
/// are never matches. `folder` itself, when it is a folder that bears a name, is the only match; when it is a
/// link, its target is searched. Nothing is found for no names. Totals come from SizeCache where it has them.
[[nodiscard]] std::future<EntryList> findDirectories(FolderNames matching, const FileUrl& folder);

/// The same as a stream. Discovery: a record after every match, without entries, `completed` 0, `total` the
/// matches so far, isDiscovering true. Then a record after every match that is measured, with all that are,
/// equal sizes in the order in which they were. One empty record when there is no match. A cancelled search
/// ends without more. `inspector`, where there is one, looks at each match, not on the caller's thread.
[[nodiscard]] ScanStream findDirectoriesStream(FolderNames matching, const FileUrl& folder,
                                               const std::shared_ptr<const FindInspector>& inspector = {});

/// The same for the one name "node_modules".
[[nodiscard]] std::future<EntryList> findNodeModules(const FileUrl& folder);
[[nodiscard]] ScanStream findNodeModulesStream(const FileUrl& folder,
                                               const std::shared_ptr<const FindInspector>& inspector = {});

/// The folders called "node_modules" below `folder`, by path, without measuring them. Discovery alone: it
/// always looks below `folder`, whatever its own name.
[[nodiscard]] std::future<std::vector<FileUrl>> locateNodeModules(const FileUrl& folder);

/// Forgets one folder's listing and every folder total. Done when it returns; touches no file system.
void invalidateCache(const FileUrl& url);

/// The same with the listings of all folders above it, which show its size, and below it.
void invalidateAround(const FileUrl& url);

/// Forgets every listing and every folder total. Done when it returns.
void clearCache();

} // namespace FileScanner

} // namespace tallyroom
