#include "Support/Cases.h"

#include <fstream>
#include <sstream>
#include <stdexcept>

namespace tallyroom {

namespace {

std::string unescaped(const std::string& word)
{
    constexpr std::string_view letters = "nrs";
    constexpr std::string_view meant = "\n\r ";
    std::string bytes;
    for (std::size_t at = 0; at < word.size(); ++at) {
        if (word[at] != '\\') {
            bytes += word[at];
        } else if (word.at(++at) == 'x') {
            bytes += static_cast<char>(std::stoi(word.substr(at + 1, 2), nullptr, 16));
            at += 2;
        } else {
            const std::size_t letter = letters.find(word[at]);
            bytes += letter == std::string_view::npos ? word[at] : meant[letter];
        }
    }
    return bytes;
}

std::vector<std::string> wordsOf(const std::string& line)
{
    std::vector<std::string> words;
    std::istringstream parts{line};
    for (std::string part; std::getline(parts, part, '|');) {
        part.erase(part.find_last_not_of(' ') + 1);
        part.erase(0, part.find_first_not_of(' '));
        words.push_back(part == "\"\"" ? "" : unescaped(part));
    }
    return words;
}

} // namespace

std::vector<std::vector<std::string>> cases(const std::string& table)
{
    std::ifstream lines{TALLYROOM_CASES};
    std::vector<std::vector<std::string>> rows;
    bool isInTable = false;
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with('[')) {
            isInTable = line == "[" + table + "]";
        } else if (isInTable && !line.empty() && !line.starts_with('#')) {
            rows.push_back(wordsOf(line));
        }
    }
    if (rows.empty()) {
        throw std::runtime_error{"no table of " + table};
    }
    return rows;
}

void addCases(TemporaryTree& tree, const std::string& table)
{
    for (const auto& row : cases(table)) {
        tree.add(row[0] == "file"   ? file(row[1], row.size() > 2 ? std::stoll(row[2]) : 0)
                 : row[0] == "text" ? file(row[1], row.at(2))
                 : row[0] == "link" ? link(row[1], row.at(2))
                 : row[0] == "fifo" ? fifo(row[1])
                                    : folder(row[1]));
    }
}

} // namespace tallyroom
