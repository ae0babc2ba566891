#pragma once

#include "Tools/Frame/ListToolScreen.h"

#include <string>
#include <vector>

namespace tallyroom {

/// What the tools that search a whole tree show alike. Main thread.
namespace ToolStyles {

/// The welcome and the filter by path.
[[nodiscard]] ToolScreenStyle frame(std::string icon, const QString& title, const QString& message);

/// The same for a list, with rows of two lines, the path below the name.
[[nodiscard]] ListToolStyle search(std::string icon, const QString& title, const QString& message);

/// The same for folders of projects, which have the project's name, the tool's icon and a column with the
/// age.
[[nodiscard]] ListToolStyle projects(const std::string& icon, const QString& title, const QString& message);

/// The column with the age of an entry.
[[nodiscard]] EntryTableColumn ageColumn();

/// A badge for each mark of an entry.
[[nodiscard]] std::vector<EntryBadge> markBadges(const Entry& entry);

/// The project that a found folder belongs to: the name of the folder around it.
[[nodiscard]] std::string projectName(const Entry& entry);

} // namespace ToolStyles

} // namespace tallyroom
