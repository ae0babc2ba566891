#include "VolumesCommand.h"

#include "JsonLine.h"
#include "TableText.h"
#include "Terminal.h"
#include "Text/CSVExport.h"
#include "Text/SizeFormatter.h"
#include "Volumes/VolumeInfo.h"

#include <algorithm>
#include <cmath>

namespace tallyroom {

namespace {

void addTable(const std::vector<VolumeUsage>& volumes, OutputWriter& writer)
{
    using namespace TableText;
    const std::size_t width = barWidth(Terminal::columns());
    const std::string between(gap, ' ');
    std::size_t nameWidth = columnsOf("Nom");
    for (const VolumeUsage& volume : volumes) {
        nameWidth = std::max(nameWidth, columnsOf(Terminal::printable(volume.name)));
    }
    const auto line = [&](const auto& used, const auto& available, const auto& total,
                          const std::string& share, const std::string& name, const std::string& place) {
        std::string text = rightAligned(used, sizeWidth).append(between);
        text.append(rightAligned(available, sizeWidth)).append(between);
        text.append(rightAligned(total, sizeWidth)).append(between);
        text.append(share).append(between).append(leftAligned(name, nameWidth)).append(between);
        return text.append(place).append("\n");
    };
    const std::string noShare(width > 0 ? width + gap + 5 : 5, ' ');
    writer.add(line("Utilisé", "Libre", "Capacité", noShare, "Nom", "Emplacement"));
    for (const VolumeUsage& volume : volumes) {
        const std::string percent =
            rightAligned(std::to_string(std::lround(volume.usedFraction() * 100)) + " %", 5);
        std::string share;
        if (width > 0) {
            share.append(bar(std::clamp(volume.usedFraction(), 0.0, 1.0), width)).append(between);
        }
        share.append(percent);
        writer.add(line(SizeFormatter::string(volume.usedBytes()),
                        SizeFormatter::string(volume.availableBytes),
                        SizeFormatter::string(volume.totalBytes), share, Terminal::printable(volume.name),
                        Terminal::printable(volume.url.path()) + (volume.isInternal ? "" : " (externe)")));
    }
}

void addCsv(const std::vector<VolumeUsage>& volumes, OutputWriter& writer)
{
    writer.addRow(
        "Nom,Chemin,Capacité (octets),Capacité,Disponible (octets),Disponible,Utilisé (octets),Utilisé,"
        "Type");
    for (const VolumeUsage& volume : volumes) {
        std::string row = CSVExport::escape(volume.name);
        row.append(",").append(CSVExport::escape(volume.url.path())).append(",");
        for (const std::int64_t bytes : {volume.totalBytes, volume.availableBytes, volume.usedBytes()}) {
            row.append(std::to_string(bytes)).append(",");
            row.append(CSVExport::escape(SizeFormatter::string(bytes))).append(",");
        }
        writer.addRow(row.append(volume.isInternal ? "Interne" : "Externe"));
    }
}

void addJson(const std::vector<VolumeUsage>& volumes, OutputWriter& writer)
{
    for (const VolumeUsage& volume : volumes) {
        writer.add(JsonLine{}
                       .text("name", volume.name)
                       .text("path", volume.url.path())
                       .text("url", volume.url.percentEncoded())
                       .number("totalBytes", volume.totalBytes)
                       .number("availableBytes", volume.availableBytes)
                       .number("usedBytes", volume.usedBytes())
                       .truth("isInternal", volume.isInternal)
                       .line());
    }
}

} // namespace

ExitCode runVolumes(OutputFormat format, const Interruption& interruption)
{
    const VolumeReport report =
        ScanCommand::follow(VolumeInfo::stream(VolumeInfo::usualLimit), true, interruption,
                            [](const VolumeReport&) { return std::string{}; });
    if (report.unanswered > 0) {
        Terminal::complain(std::to_string(report.unanswered) +
                           (report.unanswered > 1 ? " volumes ne répondent pas." : " volume ne répond pas."));
    }
    return ScanCommand::print(
        format, interruption, [&](OutputWriter& writer) { addTable(report.volumes, writer); },
        [&](OutputWriter& writer) { addCsv(report.volumes, writer); },
        [&](OutputWriter& writer) { addJson(report.volumes, writer); });
}

} // namespace tallyroom
