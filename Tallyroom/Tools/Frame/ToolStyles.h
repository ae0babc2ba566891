#pragma once

#include "Text/PlainText.h"
#include "Tools/Frame/ListToolScreen.h"

#include <string>
#include <vector>

namespace tallyroom {

/// What the tools that search a whole tree show alike. Main thread.
namespace ToolStyles {

/// A list with rows of two lines, the path below the name.
[[nodiscard]] ListToolStyle search(const ToolText& text);

/// The same for folders of projects, which have the project's name, the tool's icon and a column with the
/// age.
[[nodiscard]] ListToolStyle projects(const ToolText& text);

/// The column with the age of an entry.
[[nodiscard]] EntryTableColumn ageColumn();

/// A badge for each of `words`.
[[nodiscard]] std::vector<EntryBadge> badges(const QStringList& words,
                                             Theme::Colour colour = Theme::Colour::old);

/// A chip for each case of a closed set.
template <class Cases>
[[nodiscard]] std::vector<CategoryChips::Chip> chips(const Cases& cases)
{
    std::vector<CategoryChips::Chip> chips;
    for (const auto& one : cases) {
        chips.push_back(
            {std::string{one.rawValue()}, toText(one.displayName()), std::string{one.symbolName()}});
    }
    return chips;
}

/// The project that a found folder belongs to: the name of the folder around it.
[[nodiscard]] std::string projectName(const Entry& entry);

} // namespace ToolStyles

} // namespace tallyroom
