#include "VolumesCommand.h"

#include "OutputWriter.h"
#include "TableText.h"
#include "Terminal.h"
#include "Text/CSVExport.h"
#include "Text/SizeFormatter.h"
#include "Volumes/VolumeInfo.h"

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>

namespace tallyroom {

namespace {

VolumeReport ask(const Interruption& interruption)
{
    auto stream = VolumeInfo::stream(VolumeInfo::usualLimit);
    const auto stop = interruption.whenItComes([&stream] { stream.cancel(); });
    VolumeReport newest;
    while (auto report = stream.nextUntilCancelled()) {
        newest = std::move(*report);
    }
    return newest;
}

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
        nlohmann::ordered_json object;
        object["name"] = volume.name;
        object["path"] = volume.url.path();
        object["url"] = volume.url.percentEncoded();
        object["totalBytes"] = volume.totalBytes;
        object["availableBytes"] = volume.availableBytes;
        object["usedBytes"] = volume.usedBytes();
        object["isInternal"] = volume.isInternal;
        writer.add(Terminal::printableJson(
                       object.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace)) +
                   "\n");
    }
}

bool print(const std::vector<VolumeUsage>& volumes, OutputFormat format)
{
    OutputWriter writer;
    switch (format) {
    case OutputFormat::table:
        addTable(volumes, writer);
        break;
    case OutputFormat::csv:
        addCsv(volumes, writer);
        break;
    case OutputFormat::json:
        addJson(volumes, writer);
        break;
    }
    return writer.finish();
}

} // namespace

ExitCode runVolumes(OutputFormat format, const Interruption& interruption)
{
    const VolumeReport report = ask(interruption);
    if (report.unanswered > 0) {
        Terminal::complain(std::to_string(report.unanswered) +
                           (report.unanswered > 1 ? " volumes ne répondent pas." : " volume ne répond pas."));
    }
    return ScanCommand::end(print(report.volumes, format), interruption);
}

} // namespace tallyroom
