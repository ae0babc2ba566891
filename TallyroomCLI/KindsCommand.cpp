#include "KindsCommand.h"

#include "JsonLine.h"
#include "Kinds/FolderAnalyzer.h"
#include "TableText.h"
#include "Terminal.h"
#include "Text/CSVExport.h"
#include "Text/SizeFormatter.h"
#include "Text/SizeProportion.h"

namespace tallyroom {

namespace {

std::string progressText(const FolderAnalyzer::Progress& record)
{
    return "Analyse en cours… " + std::to_string(record.scanned);
}

std::string fileCount(std::int64_t files)
{
    return std::to_string(files) + (files > 1 ? " fichiers" : " fichier");
}

void addTable(const FolderSummary& summary, OutputWriter& writer)
{
    using namespace TableText;
    const std::size_t width = barWidth(Terminal::columns());
    const bool colours = Terminal::showsColours();
    const std::int64_t largest = summary.categories.empty() ? 0 : summary.categories.front().totalBytes;
    const std::string between(gap, ' ');
    for (const CategorySize& category : summary.categories) {
        const std::string_view colour = colours ? colourOf(category.kind) : std::string_view{};
        std::string line = rightAligned(SizeFormatter::string(category.totalBytes), sizeWidth) + between;
        line += colour;
        if (width > 0) {
            line += bar(SizeProportion::fraction(category.totalBytes, largest), width) + between;
        }
        line += leftAligned(category.kind.displayName(), 13);
        line += (colours ? reset : std::string_view{});
        writer.add(line + between + fileCount(category.fileCount) + "\n");
    }
    writer.add(rightAligned(SizeFormatter::string(summary.totalBytes), sizeWidth) + between +
               fileCount(summary.totalFiles) + "\n");
}

void addCsv(const FolderSummary& summary, OutputWriter& writer)
{
    writer.addRow("Type,Taille (octets),Taille,Fichiers");
    for (const CategorySize& category : summary.categories) {
        std::string row = CSVExport::escape(category.kind.displayName());
        row.append(",").append(std::to_string(category.totalBytes)).append(",");
        row.append(CSVExport::escape(SizeFormatter::string(category.totalBytes))).append(",");
        writer.addRow(row.append(std::to_string(category.fileCount)));
    }
}

void addJson(const FolderSummary& summary, OutputWriter& writer)
{
    for (const CategorySize& category : summary.categories) {
        writer.add(JsonLine{}
                       .text("kind", category.kind.rawValue())
                       .number("totalBytes", category.totalBytes)
                       .number("fileCount", category.fileCount)
                       .line());
    }
}

} // namespace

ExitCode runKinds(const ScanOptions& options, const Interruption& interruption)
{
    const auto url = ScanCommand::folder(options.folder);
    if (!url) {
        return ExitCode::failure;
    }
    const FolderAnalyzer::Progress found =
        ScanCommand::follow(FolderAnalyzer::stream(*url), options.quiet, interruption, progressText);
    if (!found.summary) {
        Terminal::complain("analyse interrompue.");
        return ExitCode::interrupted;
    }
    ScanCommand::tellUnread(found.unreadPlaces);
    const FolderSummary& summary = *found.summary;
    return ScanCommand::print(
        options.format, interruption, [&](OutputWriter& writer) { addTable(summary, writer); },
        [&](OutputWriter& writer) { addCsv(summary, writer); },
        [&](OutputWriter& writer) { addJson(summary, writer); });
}

} // namespace tallyroom
