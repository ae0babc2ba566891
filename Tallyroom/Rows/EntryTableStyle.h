#pragma once

#include "Model/Entry.h"
#include "Theme/Theme.h"

#include <QString>

#include <functional>
#include <string>
#include <vector>

namespace tallyroom {

/// A word beside a name, in a colour of the theme.
struct EntryBadge {
    QString text{};
    Theme::Colour colour = Theme::Colour::secondary;
};

/// A text column of a tool's own, between the name and the size. Names of optional ones go into the settings.
struct EntryTableColumn {
    QString title{};
    int width = 120; ///< device-independent pixels
    std::function<QString(const Entry&)> text{};
    /// What the column sorts by, smaller first when ascending; the column cannot be sorted without it. Called
    /// on other threads too: it must not touch the screen.
    std::function<double(const Entry&)> sortKey{};
    /// The name of an optional column: the user decides whether it is shown, and how wide.
    QString optionName{};
    /// What a screen reader says instead of the text.
    std::function<QString(const Entry&)> spoken{};
    bool isNumeric = false; ///< numbers, below each other to the right

    [[nodiscard]] bool isOptional() const { return !optionName.isEmpty(); }
};

/// A person's choice for an optional column.
struct EntryColumnChoice {
    QString optionName;
    bool isShown = false;
    int width = 0; ///< device-independent pixels

    friend bool operator==(const EntryColumnChoice&, const EntryColumnChoice&) = default;
};

/// How a tool's table shows an entry. Everything but the title is optional. A plain
/// value, given once to the table; the functions are called for the rows on screen only, on the main thread,
/// unless they say otherwise.
struct EntryTableStyle {
    QString firstColumnTitle{};
    bool showsChevronForDirectories = false;
    /// Whether names are set semibold, above a second line for example.
    bool hasStrongNames = false;

    /// The bytes shown and sorted as the name instead of the entry's own. Called on other threads too.
    std::function<std::string(const Entry&)> name{};
    /// The symbol's name instead of the kind's.
    std::function<std::string(const Entry&)> symbol{};
    /// The colour of icon and bar instead of the kind's.
    std::function<QColor(const Entry&)> tint{};
    /// A quiet line under the name; rows are 46 high when it is given.
    std::function<QString(const Entry&)> secondLine{};
    std::function<std::vector<EntryBadge>(const Entry&)> badges{};
    /// The tool tip of the name.
    std::function<QString(const Entry&)> toolTip{};
    std::vector<EntryTableColumn> columns{};
};

} // namespace tallyroom
