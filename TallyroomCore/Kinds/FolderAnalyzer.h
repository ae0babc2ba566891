#pragma once

#include "Concurrency/ProgressStream.h"
#include "FileSystem/UnreadPlaces.h"
#include "Kinds/VolumeAccount.h"
#include "Model/FileKind.h"
#include "Model/FileUrl.h"

#include <cstdint>
#include <future>
#include <optional>
#include <stop_token>
#include <tuple>
#include <vector>

namespace tallyroom {

/// The total of one kind of file.
struct CategorySize {
    FileKind kind = FileKind::other;
    std::int64_t totalBytes = 0; ///< allocated on disk
    std::int64_t fileCount = 0;

    friend bool operator==(const CategorySize&, const CategorySize&) = default;
};

/// A folder's content by kind of file.
struct FolderSummary {
    /// The kinds that occur: larger total first, then in the order in which FileKind declares them.
    std::vector<CategorySize> categories;
    std::int64_t totalBytes = 0;
    std::int64_t totalFiles = 0;

    friend bool operator==(const FolderSummary&, const FolderSummary&) = default;
};

/// Totals of a whole tree by kind of file.
///
/// Everything that is neither a folder nor a symbolic link is a file, FIFOs, sockets and devices too, and
/// each of its names counts. Links are neither counted nor followed; folders called ".git", ".hg" and ".svn"
/// are not entered, except the analysed folder itself. What cannot be read is passed over, and told with the
/// summary; a folder that cannot be opened gives the empty one.
///
/// Any thread; the walk runs on the shared pool, one pass, O(files), no memory a file.
namespace FolderAnalyzer {

struct Progress {
    enum class Phase : unsigned char { scanning, done };

    std::int64_t scanned = 0;             ///< files counted so far
    std::optional<FolderSummary> summary; ///< in the last record only
    Phase phase = Phase::scanning;
    /// Why the folder itself cannot be read; in the last record only. Not a part of equality.
    std::optional<SystemError> unread = {};
    /// What could not be read; null when all was, and but for the last record. Not a part of equality.
    SharedUnreadPlaces unreadPlaces = {};
    /// Of a folder that is the top of a volume; in the last record only. Not a part of equality.
    std::optional<VolumeAccount> volume = {};

    friend bool operator==(const Progress& left, const Progress& right)
    {
        const auto fields = [](const Progress& record) {
            return std::tie(record.scanned, record.summary, record.phase);
        };
        return fields(left) == fields(right);
    }
};

/// The number of files between two scanning records.
inline constexpr std::int64_t filesBetweenRecords = 4096;

/// The summary of a folder; after a stop, of the part that was walked until then.
[[nodiscard]] std::future<FolderSummary> summarize(const FileUrl& url, std::stop_token stop = {});

/// One scanning record at 4096 files, one at 8192 and so on, in this order; then the done record with the
/// summary, then the end. A cancelled stream ends without the done record.
[[nodiscard]] ProgressStream<Progress> stream(const FileUrl& url);

} // namespace FolderAnalyzer

} // namespace tallyroom
