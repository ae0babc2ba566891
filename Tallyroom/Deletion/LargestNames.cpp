#include "Deletion/LargestNames.h"

#include "Text/FileUrlText.h"
#include "Text/MarkText.h"
#include "Text/NumberText.h"
#include "Text/SizeText.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace tallyroom {

namespace {

constexpr std::size_t mostNames = 5;
constexpr qsizetype longestName = 60; // characters; the dialog is as wide as its longest line
constexpr qsizetype longestFolder = 40;

/// A long text keeps its beginning and its end, which tell it from others.
QString shortened(const QString& text, qsizetype longest)
{
    return text.size() <= longest
               ? text
               : text.first(longest / 2) + QStringLiteral("…") + text.last(longest / 2 - 1);
}

std::string_view folderPath(const Entry& entry)
{
    const std::string_view path = entry.url.path();
    return path.substr(0, path.rfind('/'));
}

QString folderOf(const Entry& entry)
{
    return shortened(FileUrlText::displayFromHome(entry.url.parent()), longestFolder);
}

QString lineOf(const Entry& entry, bool withFolder)
{
    return QStringLiteral("• ") + shortened(FileUrlText::display(entry.name), longestName) +
           (withFolder ? QStringLiteral(" dans ") + folderOf(entry) : QString{}) + QStringLiteral(" (") +
           (QStringList{sizeText(entry.sizeBytes)} + MarkText::words(entry)).join(QStringLiteral(", ")) +
           QLatin1Char{')'};
}

} // namespace

QStringList largestNames(const std::vector<Entry>& entries)
{
    std::vector<const Entry*> named;
    std::ranges::transform(entries, std::back_inserter(named), [](const Entry& entry) { return &entry; });
    const auto shown = static_cast<std::ptrdiff_t>(std::min(entries.size(), mostNames));
    std::ranges::partial_sort(named, named.begin() + shown, [](const Entry* left, const Entry* right) {
        if (left->needsOwnCheck() != right->needsOwnCheck()) {
            return left->needsOwnCheck();
        }
        return left->sizeBytes != right->sizeBytes ? left->sizeBytes > right->sizeBytes
                                                   : left->url < right->url;
    });
    named.resize(static_cast<std::size_t>(shown));
    const bool shareFolder = std::ranges::all_of(
        entries, [&entries](const Entry& entry) { return folderPath(entry) == folderPath(entries.front()); });
    QStringList lines;
    if (shareFolder && !entries.empty()) {
        lines += QStringLiteral("Dans %1 :").arg(folderOf(entries.front()));
    }
    for (const Entry* const entry : named) {
        lines += lineOf(*entry, !shareFolder);
    }
    if (const std::size_t others = entries.size() - named.size(); others > 0) {
        lines += QStringLiteral("et ") + NumberText::plural(others, QStringLiteral("autre"));
    }
    return lines;
}

} // namespace tallyroom
