#pragma once

#include "Concurrency/ProgressStream.h"
#include "Scanning/ScanProgress.h"

#include <cstdint>
#include <future>

namespace tallyroom {

/// The scanning engine: measures, lists, searches, ranks. Nothing here reports an error: what cannot be read
/// has size 0, what cannot be listed is empty, a date that cannot be read is absent. Links are never
/// followed. Sizes are space used on disk (st_blocks × 512), else the logical size, else 0. All operations
/// may be called from any thread but a pool worker's; the blocking ones wait for the process's WorkerPool.
namespace FileScanner {

using ScanStream = ProgressStream<ScanProgress>;

/// The space used by a file or a link itself, or by everything below a folder that is no folder. Hard links
/// count once a link, mount points are crossed, the folder's own blocks are not added. Every folder met is
/// kept in SizeCache. Blocks the caller.
[[nodiscard]] std::int64_t directorySize(const FileUrl& url);

/// The folder's direct children, each with its total, largest first, equal sizes in the order of the
/// listing. With `useCache` a listing that ScanCache knows is returned at once; a fresh one is always kept.
[[nodiscard]] std::future<EntryList> directEntries(const FileUrl& url, bool useCache);

/// The same with a record after every child, in the order in which they are done. One record for a cached or
/// an empty folder. The last record has completed == total; a cancelled listing ends without one and is not
/// kept.
[[nodiscard]] ScanStream directEntriesStream(const FileUrl& url, bool useCache);

/// Forgets one folder's listing and every folder total. Done when it returns; touches no file system.
void invalidateCache(const FileUrl& url);

/// Forgets every listing and every folder total. Done when it returns.
void clearCache();

} // namespace FileScanner

} // namespace tallyroom
