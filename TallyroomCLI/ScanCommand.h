#pragma once

#include "ExitCode.h"
#include "Interruption.h"
#include "Model/Ecosystem.h"
#include "OutputWriter.h"
#include "ProgressLine.h"
#include "Scanning/FileScanner.h"

#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace tallyroom {

/// The options of every scanning command.
struct ScanOptions {
    std::string folder;
    OutputFormat format = OutputFormat::table;
    bool quiet = false;                ///< no progress, even on a terminal
    std::vector<std::string> excluded; ///< names of folders, and folders
    bool staysOnFileSystem = false;
    bool verbose = false; ///< say how disks were read
};

/// Parts shared by the commands: they check the folder, follow the stream and stop on Ctrl+C.
namespace ScanCommand {

/// The folder as an absolute location, or nothing after a message on standard error.
[[nodiscard]] std::optional<FileUrl> folder(const std::string& argument);

/// Follows a stream to its end, or to an interruption, with a line of progress on standard error unless
/// `isQuiet`, and returns its newest record.
template <class Record>
[[nodiscard]] Record follow(ProgressStream<Record>&& stream, bool isQuiet, const Interruption& interruption,
                            std::string (*textOf)(const std::type_identity_t<Record>& record))
{
    const auto stop = interruption.whenItComes([&stream] { stream.cancel(); });
    ProgressLine line{!isQuiet && Terminal::errorIsTerminal()};
    Record newest;
    while (auto record = stream.nextUntilCancelled()) {
        newest = std::move(*record);
        line.show([&] { return textOf(newest); });
    }
    return newest;
}

/// Leaves out what the options say; false after a message on standard error. Before the first scan.
[[nodiscard]] bool applyScope(const ScanOptions& options);

/// Says on standard error that the scan could not read everything; nothing when it could.
void tellUnread(const SharedUnreadPlaces& places);

/// The exit code of a command that printed its result, or failed to and left the reason in errno.
[[nodiscard]] ExitCode end(bool isWritten, const Interruption& interruption);

/// Prints a result by the one of three writers that the format asks for, and ends the command.
template <class AddTable, class AddCsv, class AddJson>
[[nodiscard]] ExitCode print(OutputFormat format, const Interruption& interruption, AddTable addTable,
                             AddCsv addCsv, AddJson addJson)
{
    OutputWriter writer;
    switch (format) {
    case OutputFormat::table:
        addTable(writer);
        break;
    case OutputFormat::csv:
        addCsv(writer);
        break;
    case OutputFormat::json:
        addJson(writer);
        break;
    }
    return end(writer.finish(), interruption);
}

} // namespace ScanCommand

/// `usage`: the folder's direct children, largest first.
[[nodiscard]] ExitCode runUsage(const ScanOptions& options, const Interruption& interruption);

/// `largest`: the `limit` largest files below the folder that meet the criteria.
[[nodiscard]] ExitCode runLargest(const ScanOptions& options, std::int64_t limit,
                                  const FileScanner::FileCriteria& criteria,
                                  const Interruption& interruption);

/// `build-caches`: the folders that the tools of `ecosystems` make.
[[nodiscard]] ExitCode runBuildCaches(const ScanOptions& options, const std::set<Ecosystem>& ecosystems,
                                      const Interruption& interruption);

/// `git-repos`: the histories, as objects with what only this disk has of them.
[[nodiscard]] ExitCode runGitRepos(const ScanOptions& options, const Interruption& interruption);

/// `node-modules`: the folders of these names below the folder.
[[nodiscard]] ExitCode runSearch(const ScanOptions& options, const FolderNames& names,
                                 const Interruption& interruption);

} // namespace tallyroom
