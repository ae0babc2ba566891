#include "KindsCommand.h"

#include "Kinds/FolderAnalyzer.h"
#include "OutputWriter.h"
#include "ProgressLine.h"
#include "TableText.h"
#include "Terminal.h"
#include "Text/CSVExport.h"
#include "Text/SizeFormatter.h"
#include "Text/SizeProportion.h"

#include <nlohmann/json.hpp>

namespace tallyroom {

namespace {

/// Nothing when the analysis was interrupted.
std::optional<FolderSummary> follow(const FileUrl& url, const ScanOptions& options,
                                    const Interruption& interruption)
{
    auto stream = FolderAnalyzer::stream(url);
    const auto stop = interruption.whenItComes([&stream] { stream.cancel(); });
    ProgressLine line{!options.quiet && Terminal::errorIsTerminal()};
    std::optional<FolderSummary> summary;
    while (auto record = stream.nextUntilCancelled()) {
        line.show([&record] { return "Analyse en cours… " + std::to_string(record->scanned); });
        summary = std::move(record->summary);
    }
    return summary;
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
        nlohmann::ordered_json object;
        object["kind"] = category.kind.rawValue();
        object["totalBytes"] = category.totalBytes;
        object["fileCount"] = category.fileCount;
        writer.add(object.dump() + "\n");
    }
}

bool print(const FolderSummary& summary, OutputFormat format)
{
    OutputWriter writer;
    switch (format) {
    case OutputFormat::table:
        addTable(summary, writer);
        break;
    case OutputFormat::csv:
        addCsv(summary, writer);
        break;
    case OutputFormat::json:
        addJson(summary, writer);
        break;
    }
    return writer.finish();
}

} // namespace

ExitCode runKinds(const ScanOptions& options, const Interruption& interruption)
{
    const auto url = ScanCommand::folder(options.folder);
    if (!url) {
        return ExitCode::failure;
    }
    const auto summary = follow(*url, options, interruption);
    if (!summary) {
        Terminal::complain("analyse interrompue.");
        return ExitCode::interrupted;
    }
    return ScanCommand::end(print(*summary, options.format), interruption);
}

} // namespace tallyroom
