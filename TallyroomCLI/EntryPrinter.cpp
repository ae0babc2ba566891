#include "EntryPrinter.h"

#include "Model/CheckedArithmetic.h"
#include "Model/FileKind.h"
#include "TableText.h"
#include "Terminal.h"
#include "Text/CSVExport.h"
#include "Text/SizeFormatter.h"
#include "Text/SizeProportion.h"

namespace tallyroom::EntryPrinter {

namespace {

using TableText::dayWidth;
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
    if (style.showsDates) {
        line += TableText::leftAligned(entry.modifiedAt ? TableText::day(*entry.modifiedAt) : "–", dayWidth);
        line.append(gap, ' ');
    }
    line += Terminal::printable(style.showsPaths ? entry.url.path() : entry.name);
    if (entry.isDirectory) {
        line.push_back('/');
    }
    if (entry.has(EntryMark::excluded)) {
        line += entry.has(EntryMark::unreadable) ? "  (exclu)" : "  (exclu en partie)";
    }
    return line.append(colour.empty() ? std::string_view{} : TableText::reset).append("\n");
}

} // namespace

JsonLine jsonLine(const Entry& entry, std::string_view group)
{
    JsonLine line;
    if (!group.empty()) {
        line.text("group", group);
    }
    line.text("name", entry.name)
        .text("path", entry.url.path())
        .text("url", entry.url.percentEncoded())
        .number("sizeBytes", entry.sizeBytes)
        .truth("isDirectory", entry.isDirectory);
    if (entry.modifiedAt) {
        line.text("modifiedAt", CSVExport::internetDateTime(*entry.modifiedAt));
    } else {
        line.null("modifiedAt");
    }
    if (entry.has(EntryMark::excluded)) {
        line.truth("excluded", true);
    }
    return entry.unread > 0 ? line.number("unreadable", entry.unread) : line;
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

void addCsv(const EntryList& entries, OutputWriter& writer)
{
    writer.addRow(CSVExport::header);
    for (const Entry& entry : entries) {
        writer.addRow(CSVExport::line(entry));
    }
}

void addJson(const EntryList& entries, OutputWriter& writer, const AddMembers& addMembers)
{
    for (const Entry& entry : entries) {
        JsonLine line = jsonLine(entry);
        if (addMembers) {
            addMembers(entry, line);
        }
        writer.add(line.line());
    }
}

} // namespace tallyroom::EntryPrinter
