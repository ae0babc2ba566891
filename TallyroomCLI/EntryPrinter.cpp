#include "EntryPrinter.h"

#include "Model/FileKind.h"
#include "OutputWriter.h"
#include "TableText.h"
#include "Terminal.h"
#include "Text/CSVExport.h"
#include "Text/SizeFormatter.h"
#include "Text/SizeProportion.h"

#include <nlohmann/json.hpp>

namespace tallyroom::EntryPrinter {

namespace {

using TableText::gap;
using TableText::rightAligned;
using TableText::sizeWidth;

std::string tableLine(const Entry& entry, double fraction, std::size_t barWidth, const TableStyle& style)
{
    const std::string_view colour =
        style.colours ? TableText::colourOf(FileKind::of(entry)) : std::string_view{};
    std::string line = rightAligned(SizeFormatter::string(entry.sizeBytes), sizeWidth);
    line.append(gap, ' ').append(colour);
    if (barWidth > 0) {
        line.append(TableText::bar(fraction, barWidth)).append(gap, ' ');
    }
    line += Terminal::printable(style.showsPaths ? entry.url.path() : entry.name);
    if (entry.isDirectory) {
        line.push_back('/');
    }
    return line.append(colour.empty() ? std::string_view{} : TableText::reset).append("\n");
}

void addTable(const EntryList& entries, const TableStyle& style, OutputWriter& writer)
{
    const std::size_t barWidth = TableText::barWidth(style.columns);
    const std::int64_t reference = SizeProportion::reference(entries);
    std::int64_t total = 0;
    for (const Entry& entry : entries) {
        writer.add(tableLine(entry, SizeProportion::fraction(entry.sizeBytes, reference), barWidth, style));
        total = checkedSum(total, entry.sizeBytes);
    }
    const std::string count =
        std::to_string(entries.size()) + (entries.size() > 1 ? " éléments" : " élément");
    writer.add(rightAligned(SizeFormatter::string(total), sizeWidth) + std::string(gap, ' ') + count + "\n");
}

} // namespace

std::string jsonLine(const Entry& entry, std::string_view group)
{
    nlohmann::ordered_json object;
    if (!group.empty()) {
        object["group"] = group;
    }
    object["name"] = entry.name;
    object["path"] = entry.url.path();
    object["url"] = entry.url.percentEncoded();
    object["sizeBytes"] = entry.sizeBytes;
    object["isDirectory"] = entry.isDirectory;
    object["modifiedAt"] = nullptr;
    if (entry.modifiedAt) {
        object["modifiedAt"] = CSVExport::internetDateTime(*entry.modifiedAt);
    }
    return Terminal::printableJson(
        object.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace));
}

bool print(const EntryList& entries, OutputFormat format, const TableStyle& style)
{
    OutputWriter writer;
    switch (format) {
    case OutputFormat::table:
        addTable(entries, style, writer);
        break;
    case OutputFormat::csv:
        writer.addRow(CSVExport::header);
        for (const Entry& entry : entries) {
            writer.addRow(CSVExport::line(entry));
        }
        break;
    case OutputFormat::json:
        for (const Entry& entry : entries) {
            writer.add(jsonLine(entry) + "\n");
        }
        break;
    }
    return writer.finish();
}

} // namespace tallyroom::EntryPrinter
