#pragma once

#include "EntryPrinter.h"
#include "ExitCode.h"
#include "Interruption.h"
#include "Scanning/FileScanner.h"

#include <functional>
#include <string>
#include <string_view>

namespace tallyroom {

/// What every scanning command takes.
struct ScanOptions {
    std::string folder;
    OutputFormat format = OutputFormat::table;
    bool quiet = false; ///< no progress, even on a terminal
};

/// What a table calls its entries by.
enum class Shown : bool { names, paths };

/// What the commands that scan a folder have in common: they check it, follow the stream, and stop on Ctrl+C.
namespace ScanCommand {

/// The folder as an absolute location, or nothing after a message on standard error.
[[nodiscard]] std::optional<FileUrl> folder(const std::string& argument);

/// Follows a scan to its end with a line of progress on standard error, and returns its newest record.
[[nodiscard]] ScanProgress follow(FileScanner::ScanStream stream, const ScanOptions& options,
                                  const Interruption& interruption);

/// Prints the entries, after a word on standard error when the scan was interrupted.
[[nodiscard]] ExitCode print(const EntryList& entries, const ScanOptions& options, const TableStyle& style,
                             const Interruption& interruption);

/// How a command ends that has printed its result, or could not and left the reason in errno.
[[nodiscard]] ExitCode end(bool isWritten, const Interruption& interruption);

/// Starts the scan of a folder.
using Start = std::function<FileScanner::ScanStream(const FileUrl&)>;

/// A whole command: the folder, the scan that `start` starts on it, what it found.
[[nodiscard]] ExitCode run(const ScanOptions& options, Shown shown, const Start& start,
                           const Interruption& interruption);

} // namespace ScanCommand

/// `usage`: the folder's direct children, largest first.
[[nodiscard]] ExitCode runUsage(const ScanOptions& options, const Interruption& interruption);

/// `largest`: the `limit` largest files below the folder.
[[nodiscard]] ExitCode runLargest(const ScanOptions& options, std::int64_t limit,
                                  const Interruption& interruption);

/// `node-modules`, `build-caches`, `git-repos`: the folders of these names below the folder.
[[nodiscard]] ExitCode runSearch(const ScanOptions& options, const FolderNames& names,
                                 const Interruption& interruption);

} // namespace tallyroom
