#include "Tools/Frame/ToolStyles.h"

#include "Text/AgeText.h"
#include "Text/FileUrlText.h"
#include "Text/MarkText.h"

namespace tallyroom::ToolStyles {

ListToolStyle search(const ToolScreenStyle& screen, const QString& firstColumnTitle)
{
    ListToolStyle style{screen, {}};
    style.table.firstColumnTitle = firstColumnTitle;
    style.table.hasStrongNames = true;
    style.table.secondLine = [](const Entry& entry) { return FileUrlText::displayFromHome(entry.url); };
    style.table.badges = [](const Entry& entry) { return badges(MarkText::words(entry)); };
    style.table.toolTip = MarkText::explanation;
    return style;
}

ListToolStyle projects(const ToolScreenStyle& screen, const QString& firstColumnTitle)
{
    ListToolStyle style = search(screen, firstColumnTitle);
    style.table.name = projectName;
    style.table.symbol = [icon = screen.icon](const Entry&) { return icon; };
    style.table.columns.push_back(ageColumn());
    return style;
}

EntryTableColumn ageColumn()
{
    return {QStringLiteral("Modifié"), 130,
            [](const Entry& entry) { return ageText(entry.modifiedAt, std::chrono::system_clock::now()); },
            modifiedAtSortKey};
}

std::vector<EntryBadge> badges(const QStringList& words, Theme::Colour colour)
{
    std::vector<EntryBadge> badges;
    for (const QString& word : words) {
        badges.push_back({word, colour});
    }
    return badges;
}

std::string projectName(const Entry& entry)
{
    return std::string{entry.url.parent().lastPathComponent()};
}

} // namespace tallyroom::ToolStyles
