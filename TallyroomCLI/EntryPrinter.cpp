#include "EntryPrinter.h"

#include "Model/FileKind.h"
#include "Terminal.h"
#include "Text/CSVExport.h"
#include "Text/SizeFormatter.h"
#include "Text/SizeProportion.h"

#include <cmath>
#include <nlohmann/json.hpp>

namespace tallyroom::EntryPrinter {

namespace {

constexpr std::size_t sizeWidth = 9; // "1000,9 Ko" and all that is shorter
constexpr std::size_t gap = 2;
constexpr std::size_t leastWidthForBars = 60;
constexpr std::string_view reset = "\033[0m";

/// The colour of a kind among the sixteen that every terminal has its own shade for.
std::string_view colourOf(FileKind kind)
{
    switch (kind) {
    case FileKind::folder:
        return "\033[34m";
    case FileKind::image:
        return "\033[95m";
    case FileKind::video:
        return "\033[35m";
    case FileKind::audio:
        return "\033[35m";
    case FileKind::archive:
        return "\033[33m";
    case FileKind::code:
        return "\033[94m";
    case FileKind::document:
        return "\033[37m";
    case FileKind::spreadsheet:
        return "\033[32m";
    case FileKind::data:
        return "\033[36m";
    case FileKind::diskImage:
        return "\033[93m";
    case FileKind::other:
        return "\033[39m";
    }
    return {};
}

/// A bar in eighths of a column, padded to `width` columns.
std::string bar(double fraction, std::size_t width)
{
    static constexpr std::array<std::string_view, 8> parts{"", "▏", "▎", "▍", "▌", "▋", "▊", "▉"};
    const auto eighths = static_cast<std::size_t>(std::lround(fraction * static_cast<double>(width * 8)));
    std::string text;
    for (std::size_t full = 0; full < eighths / 8; ++full) {
        text += "█";
    }
    const std::string_view last = parts.at(eighths % 8);
    text += last;
    text.append(width - eighths / 8 - (last.empty() ? 0 : 1), ' ');
    return text;
}

std::string rightAligned(const std::string& text, std::size_t width)
{
    // The separator of some locales has more than one byte, but every character here is one column.
    const auto columns = static_cast<std::size_t>(std::ranges::count_if(
        text, [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U; }));
    return std::string(width - std::min(width, columns), ' ') + text;
}

std::string tableLine(const Entry& entry, double fraction, std::size_t barWidth, const TableStyle& style)
{
    const std::string_view colour = style.colours ? colourOf(FileKind::of(entry)) : std::string_view{};
    std::string line = rightAligned(SizeFormatter::string(entry.sizeBytes), sizeWidth);
    line.append(gap, ' ').append(colour);
    if (barWidth > 0) {
        line.append(bar(fraction, barWidth)).append(gap, ' ');
    }
    line += Terminal::printable(style.showsPaths ? entry.url.path() : entry.name);
    if (entry.isDirectory) {
        line.push_back('/');
    }
    return line.append(colour.empty() ? std::string_view{} : reset).append("\n");
}

/// Collects text and writes it in pieces; remembers a failure.
class Writer {
public:
    explicit Writer(std::FILE* output) : m_output(output) {}

    void add(std::string_view text)
    {
        m_waiting += text;
        if (m_waiting.size() >= pieceSize) {
            write();
        }
    }

    bool finish()
    {
        write();
        return m_isGood && std::fflush(m_output) == 0;
    }

private:
    static constexpr std::size_t pieceSize = 64 * 1024;

    void write()
    {
        m_isGood =
            m_isGood && std::fwrite(m_waiting.data(), 1, m_waiting.size(), m_output) == m_waiting.size();
        m_waiting.clear();
    }

    std::FILE* m_output;
    std::string m_waiting;
    bool m_isGood = true;
};

void addTable(const EntryList& entries, const TableStyle& style, Writer& writer)
{
    const std::size_t barWidth =
        style.columns < leastWidthForBars ? 0 : std::min<std::size_t>(style.columns / 4, 30);
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

std::string jsonLine(const Entry& entry)
{
    nlohmann::ordered_json object;
    object["name"] = entry.name;
    object["path"] = entry.url.path();
    object["url"] = entry.url.percentEncoded();
    object["sizeBytes"] = entry.sizeBytes;
    object["isDirectory"] = entry.isDirectory;
    object["modifiedAt"] = nullptr;
    if (entry.modifiedAt) {
        object["modifiedAt"] = CSVExport::internetDateTime(*entry.modifiedAt);
    }
    return object.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

bool print(const EntryList& entries, OutputFormat format, const TableStyle& style, std::FILE* output)
{
    Writer writer{output};
    switch (format) {
    case OutputFormat::table:
        addTable(entries, style, writer);
        break;
    case OutputFormat::csv:
        writer.add(CSVExport::header);
        for (const Entry& entry : entries) {
            writer.add("\n");
            writer.add(CSVExport::line(entry));
        }
        if (Terminal::outputIsTerminal()) {
            writer.add("\n"); // a file has no line end after its last line, a prompt wants one before it
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
