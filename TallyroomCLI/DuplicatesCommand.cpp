#include "DuplicatesCommand.h"

#include "Duplicates/DuplicateExport.h"
#include "Duplicates/DuplicateFinder.h"
#include "EntryPrinter.h"
#include "Model/CheckedArithmetic.h"
#include "Terminal.h"
#include "Text/SizeFormatter.h"

#include <string>
#include <vector>

namespace tallyroom {

namespace {

using DuplicateFinder::DuplicateProgress;
using DuplicateFinder::Phase;

std::string progressText(const DuplicateProgress& record)
{
    switch (record.phase) {
    case Phase::scanning:
        return "Recherche… " + std::to_string(record.scanned);
    case Phase::hashing:
    case Phase::done:
        break;
    }
    return "Comparaison des contenus… " + SizeFormatter::string(record.hashedBytes) + "/" +
           SizeFormatter::string(record.bytesToHash);
}

void addTable(const std::vector<DuplicateGroup>& groups, OutputWriter& writer)
{
    std::int64_t wasted = 0;
    for (const DuplicateGroup& group : groups) {
        writer.add(std::to_string(group.entries.size()) + " × " + SizeFormatter::string(group.sizeBytes()) +
                   ", " + SizeFormatter::string(group.wastedBytes()) + " en trop\n");
        for (const Entry& entry : group.entries) {
            writer.add("  ");
            writer.add(Terminal::printable(entry.url.path()));
            writer.add("\n");
        }
        writer.add("\n");
        wasted = checkedSum(wasted, group.wastedBytes());
    }
    writer.add(std::to_string(groups.size()) + (groups.size() > 1 ? " groupes, " : " groupe, ") +
               SizeFormatter::string(wasted) + " en trop\n");
}

void addCsv(const std::vector<DuplicateGroup>& groups, OutputWriter& writer)
{
    writer.addRow(DuplicateExport::header());
    for (const DuplicateGroup& group : groups) {
        for (const Entry& entry : group.entries) {
            writer.addRow(DuplicateExport::line(group, entry));
        }
    }
}

void addJson(const std::vector<DuplicateGroup>& groups, OutputWriter& writer)
{
    for (const DuplicateGroup& group : groups) {
        for (const Entry& entry : group.entries) {
            writer.add(EntryPrinter::jsonLine(entry, group.id).line());
        }
    }
}

} // namespace

ExitCode runDuplicates(const DuplicatesOptions& options, const Interruption& interruption)
{
    const auto url = ScanCommand::folder(options.scan.folder);
    if (!url) {
        return ExitCode::failure;
    }
    const DuplicateProgress found = ScanCommand::follow(DuplicateFinder::stream(*url, options.minimumSize),
                                                        options.scan.quiet, interruption, progressText);
    if (found.phase != Phase::done || interruption.hasCome()) {
        Terminal::complain("recherche interrompue, aucun doublon n'est listé.");
        return ExitCode::interrupted;
    }
    if (found.truncated) {
        Terminal::complain(
            "trop de fichiers, la recherche s'est arrêtée avant la fin : des doublons peuvent manquer.");
    }
    ScanCommand::tellUnread(found.unreadPlaces);
    return ScanCommand::print(
        options.scan.format, interruption, [&](OutputWriter& writer) { addTable(found.groups, writer); },
        [&](OutputWriter& writer) { addCsv(found.groups, writer); },
        [&](OutputWriter& writer) { addJson(found.groups, writer); });
}

} // namespace tallyroom
