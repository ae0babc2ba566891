#include "ScanCommand.h"

#include "FileSystem/FolderReader.h"
#include "ProgressLine.h"
#include "Terminal.h"
#include "Text/SizeFormatter.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>

namespace tallyroom::ScanCommand {

namespace {

std::string progressText(const ScanProgress& record)
{
    if (record.isDiscovering) {
        return "Recherche… " + std::to_string(record.total);
    }
    return "Analyse en cours… " + std::to_string(record.completed) + "/" + std::to_string(record.total) +
           " " + std::to_string(static_cast<int>(record.fraction() * 100)) + " %";
}

/// The usual reasons in French whatever the locale; the others in the platform's words.
std::string reasonOf(const SystemError& error)
{
    switch (error.code) {
    case ENOENT:
        return "ce dossier n'existe pas";
    case ENOTDIR:
        return "ce n'est pas un dossier";
    case EACCES:
        return "accès refusé";
    default:
        return error.message();
    }
}

/// Equal sizes by path, so that a command prints the same twice.
EntryList repeatable(const EntryList& entries)
{
    const auto ranksBefore = [](const Entry& left, const Entry& right) {
        return left.sizeBytes != right.sizeBytes ? left.sizeBytes > right.sizeBytes : left.url < right.url;
    };
    if (std::ranges::is_sorted(entries, ranksBefore)) {
        return entries;
    }
    std::vector<Entry> sorted = entries.toVector();
    std::ranges::sort(sorted, ranksBefore);
    return EntryList{std::move(sorted)};
}

} // namespace

std::optional<FileUrl> folder(const std::string& argument)
{
    std::error_code failed;
    const std::filesystem::path path = std::filesystem::absolute(argument, failed);
    const FileUrl url = FileUrl{path.native()}.standardized();
    // Opened as named, since ".." behind a link is not what the text alone says; and for listing, since a
    // scan counts what it cannot list as empty.
    const auto opened = failed ? std::unexpected(SystemError{failed.value()})
                               : openFolder(FileUrl{path.native()}, FolderAccess::listing);
    if (opened) {
        return FileUrl{path.native()} == url ? url
                                             : FileUrl{std::filesystem::canonical(path, failed).native()};
    }
    Terminal::complain(argument + " : " + reasonOf(opened.error()));
    return std::nullopt;
}

ScanProgress follow(FileScanner::ScanStream stream, const ScanOptions& options,
                    const Interruption& interruption)
{
    const auto stop = interruption.whenItComes([&stream] { stream.cancel(); });
    ProgressLine line{!options.quiet && Terminal::errorIsTerminal()};
    ScanProgress newest;
    while (auto record = stream.nextUntilCancelled()) {
        newest = std::move(*record);
        line.show([&newest] { return progressText(newest); });
    }
    return newest;
}

ExitCode print(const EntryList& entries, const ScanOptions& options, const TableStyle& style,
               const Interruption& interruption)
{
    if (interruption.hasCome()) {
        Terminal::complain("analyse interrompue, la liste est incomplète.");
    }
    return end(EntryPrinter::print(entries, options.format, style), interruption);
}

ExitCode end(bool isWritten, const Interruption& interruption)
{
    if (!isWritten) {
        Terminal::complain("écriture impossible : " + SystemError::last().message());
        return ExitCode::failure;
    }
    return interruption.hasCome() ? ExitCode::interrupted : ExitCode::success;
}

ExitCode run(const ScanOptions& options, Shown shown, const Start& start, const Interruption& interruption)
{
    const auto url = folder(options.folder);
    if (!url) {
        return ExitCode::failure;
    }
    const ScanProgress found = follow(start(*url), options, interruption);
    const bool showsPaths = shown == Shown::paths;
    const TableStyle style{Terminal::columns(), Terminal::showsColours(), showsPaths};
    return print(showsPaths ? repeatable(found.entries) : found.entries, options, style, interruption);
}

} // namespace tallyroom::ScanCommand

namespace tallyroom {

ExitCode runUsage(const ScanOptions& options, const Interruption& interruption)
{
    const auto start = [](const FileUrl& url) { return FileScanner::directEntriesStream(url, false); };
    return ScanCommand::run(options, Shown::names, start, interruption);
}

ExitCode runLargest(const ScanOptions& options, std::int64_t limit, const Interruption& interruption)
{
    const auto start = [limit](const FileUrl& url) {
        return FileScanner::findLargestFilesStream(url, limit);
    };
    return ScanCommand::run(options, Shown::paths, start, interruption);
}

ExitCode runSearch(const ScanOptions& options, const FolderNames& names, const Interruption& interruption)
{
    const auto start = [&names](const FileUrl& url) {
        return FileScanner::findDirectoriesStream(names, url);
    };
    return ScanCommand::run(options, Shown::paths, start, interruption);
}

} // namespace tallyroom
