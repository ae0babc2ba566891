#include "Tools/Frame/ToolStyles.h"

#include "Text/AgeText.h"
#include "Text/FileUrlText.h"
#include "Text/MarkText.h"

namespace tallyroom::ToolStyles {

ListToolStyle search(const ToolText& text)
{
    ListToolStyle style{text, {}};
    style.table.firstColumnTitle = text.firstColumnTitle;
    style.table.hasStrongNames = true;
    style.table.secondLine = [](const Entry& entry) { return FileUrlText::displayFromHome(entry.url); };
    style.table.badges = [](const Entry& entry) { return badges(MarkText::words(entry)); };
    style.table.toolTip = MarkText::explanation;
    return style;
}

ListToolStyle projects(const ToolText& text)
{
    ListToolStyle style = search(text);
    style.table.name = projectName;
    style.table.symbol = [icon = text.icon](const Entry&) { return icon; };
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
