#include "Deletion/LargestNames.h"

#include "Text/FileUrlText.h"
#include "Text/MarkText.h"
#include "Text/NumberText.h"
#include "Text/SizeText.h"

#include <algorithm>
#include <iterator>

namespace tallyroom {

namespace {

constexpr std::size_t mostNames = 5;
constexpr qsizetype longestName = 60; // characters; the dialog is as wide as its longest line

/// A long name keeps its beginning and its end, which tell it from others.
QString shortened(const QString& name)
{
    return name.size() <= longestName
               ? name
               : name.first(longestName / 2) + QStringLiteral("…") + name.last(longestName / 2 - 1);
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
    QStringList lines;
    for (const Entry* const entry : named) {
        const bool isAlike = std::ranges::count(named, entry->name, &Entry::name) > 1;
        lines +=
            QStringLiteral("• ") + shortened(FileUrlText::display(entry->name)) +
            (isAlike ? QStringLiteral(" dans ") + shortened(FileUrlText::displayFromHome(entry->url.parent()))
                     : QString{}) +
            QStringLiteral(" (") +
            (QStringList{sizeText(entry->sizeBytes)} + MarkText::words(*entry)).join(QStringLiteral(", ")) +
            QLatin1Char{')'};
    }
    if (const std::size_t others = entries.size() - named.size(); others > 0) {
        lines += QStringLiteral("et ") + NumberText::plural(others, QStringLiteral("autre"));
    }
    return lines;
}

} // namespace tallyroom
