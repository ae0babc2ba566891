#include "Support/Cases.h"

#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <sstream>
#include <stdexcept>
#include <sys/stat.h>

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

using Words = std::vector<std::string>;

mode_t octal(const std::string& word)
{
    return static_cast<mode_t>(std::stoul(word, nullptr, 8));
}

/// The item that the words tell, with its date or its mode.
TreeItem itemOf(const Words& words)
{
    const bool isWhole = words.size() > 2;
    if (words[0] == "folder") {
        TreeItem made = folder(words[1]);
        return isWhole ? std::move(made).withMode(octal(words[2])) : made;
    }
    if (words[0] == "file") {
        return file(words[1], isWhole ? std::stoll(words[2]) : 0);
    }
    TreeItem text = file(words[1], words.at(2));
    return words.size() > 3 ? std::move(text).modifiedAt(std::stoll(words[3])) : text;
}

void changeBy(TemporaryTree& tree, const Words& words)
{
    using Change = std::function<void(const Words&)>;
    const auto write = [&tree](const Words& w) { tree.overwrite(w[1], w.at(2), std::stoll(w.at(3))); };
    const std::map<std::string, Change> changes{
        {"file", [&](const Words& w) { tree.add(itemOf(w)); }},
        {"text", [&](const Words& w) { tree.add(itemOf(w)); }},
        {"folder", [&](const Words& w) { tree.add(itemOf(w)); }},
        {"link",
         [&](const Words& w) {
             tree.add(link(w[1], w.at(2).starts_with('%') ? tree.path() + w[2].substr(1) : w[2]));
         }},
        {"hard-link", [&](const Words& w) { tree.add(hardLink(w[1], w.at(2))); }},
        {"fifo", [&](const Words& w) { tree.add(fifo(w[1])); }},
        {"mode", [&](const Words& w) { ::chmod(tree.path(w[1]).c_str(), octal(w.at(2))); }},
        {"remove", [&](const Words& w) { tree.remove(w[1]); }},
        {"rename", [&](const Words& w) { tree.rename(w[1], w.at(2)); }},
        {"exchange", [&](const Words& w) { tree.exchange(w[1], w.at(2)); }},
        {"copy", [&](const Words& w) { tree.add(file(w.at(2), tree.content(w[1]))); }},
        {"write", write},
        {"write-unseen", [&](const Words& w) { tree.keepingItsTime(w[1], [&] { write(w); }); }},
        {"replace-unseen",
         [&](const Words& w) { tree.keepingItsTime(w[1], [&] { tree.rename(w.at(2), w[1]); }); }}};
    changes.at(words.at(0))(words);
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
        changeBy(tree, row);
    }
}

void change(TemporaryTree& tree, const std::string& changes)
{
    std::istringstream parts{changes};
    for (std::string part; std::getline(parts, part, ',');) {
        std::istringstream words{part};
        changeBy(tree, {std::istream_iterator<std::string>{words}, {}});
    }
}

} // namespace tallyroom
