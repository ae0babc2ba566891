#include "ScanCommand.h"

#include "FileSystem/FolderReader.h"
#include "ProgressLine.h"
#include "Terminal.h"
#include "Text/SizeFormatter.h"

#include <cerrno>
#include <cstdio>
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

} // namespace

std::optional<FileUrl> folder(const std::string& argument)
{
    std::error_code failed;
    const std::filesystem::path path = std::filesystem::absolute(argument, failed);
    const FileUrl url = FileUrl{path.native()}.standardized();
    // Opened as named, since ".." behind a link is not what the text alone says.
    const auto opened = openFolder(FileUrl{path.native()}, FolderAccess::throughOnly);
    if (opened) {
        return FileUrl{path.native()} == url ? url
                                             : FileUrl{std::filesystem::canonical(path, failed).native()};
    }
    std::fprintf(stderr, "tallyroom-cli : %s : %s\n", Terminal::printable(argument).c_str(),
                 reasonOf(opened.error()).c_str());
    return std::nullopt;
}

ScanProgress follow(FileScanner::ScanStream stream, const ScanOptions& options,
                    const Interruption& interruption)
{
    const auto stop = interruption.whenItComes([&stream] { stream.cancel(); });
    ProgressLine line{!options.quiet && Terminal::errorIsTerminal()};
    ScanProgress newest;
    while (auto record = stream.next()) {
        newest = std::move(*record);
        line.show([&newest] { return progressText(newest); });
    }
    return newest;
}

ExitCode print(const EntryList& entries, const ScanOptions& options, const TableStyle& style,
               const Interruption& interruption)
{
    if (interruption.hasCome()) {
        std::fputs("tallyroom-cli : analyse interrompue, la liste est incomplète.\n", stderr);
    }
    return end(EntryPrinter::print(entries, options.format, style, stdout), interruption);
}

ExitCode end(bool isWritten, const Interruption& interruption)
{
    if (!isWritten) {
        std::fprintf(stderr, "tallyroom-cli : écriture impossible : %s\n",
                     SystemError::last().message().c_str());
        return ExitCode::failure;
    }
    return interruption.hasCome() ? ExitCode::interrupted : ExitCode::success;
}

} // namespace tallyroom::ScanCommand

namespace tallyroom {

ExitCode runUsage(const ScanOptions& options, const Interruption& interruption)
{
    const auto url = ScanCommand::folder(options.folder);
    if (!url) {
        return ExitCode::failure;
    }
    const ScanProgress found =
        ScanCommand::follow(FileScanner::directEntriesStream(*url, false), options, interruption);
    const TableStyle style{Terminal::columns(), Terminal::showsColours(), false};
    return ScanCommand::print(found.entries, options, style, interruption);
}

} // namespace tallyroom
