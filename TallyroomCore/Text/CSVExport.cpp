#include "Text/CSVExport.h"

#include "Text/SizeFormatter.h"

#include <array>
#include <cstdio>

namespace tallyroom::CSVExport {

namespace {

bool needsQuotes(std::string_view field)
{
    for (std::size_t i = 0; i < field.size(); ++i) {
        const bool isLineFeed = field[i] == '\n' && (i == 0 || field[i - 1] != '\r');
        if (field[i] == ',' || field[i] == '"' || isLineFeed) {
            return true;
        }
    }
    return false;
}

} // namespace

std::string escape(std::string_view field)
{
    if (!needsQuotes(field)) {
        return std::string{field};
    }
    std::string quoted{'"'};
    for (const char letter : field) {
        quoted.append(letter == '"' ? 2U : 1U, letter);
    }
    quoted.push_back('"');
    return quoted;
}

std::string internetDateTime(Timestamp moment)
{
    using namespace std::chrono;
    const auto day = floor<days>(moment);
    const year_month_day date{day};
    const hh_mm_ss time{floor<seconds>(moment - day)};
    std::array<char, 40> text{};
    const int length =
        std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02dZ",
                      static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                      static_cast<unsigned>(date.day()), static_cast<int>(time.hours().count()),
                      static_cast<int>(time.minutes().count()), static_cast<int>(time.seconds().count()));
    return {text.data(), static_cast<std::size_t>(length)};
}

std::string line(const Entry& entry)
{
    std::string text = escape(entry.name);
    for (const std::string& field :
         {entry.url.path(), std::to_string(entry.sizeBytes), SizeFormatter::string(entry.sizeBytes),
          std::string{entry.isDirectory ? "Dossier" : "Fichier"},
          entry.modifiedAt ? internetDateTime(*entry.modifiedAt) : std::string{}}) {
        text.append(",").append(escape(field));
    }
    return text;
}

} // namespace tallyroom::CSVExport
