#include "Tools/Frame/ToolStyles.h"

#include "Text/AgeText.h"
#include "Text/FileUrlText.h"
#include "Text/MarkText.h"

namespace tallyroom::ToolStyles {

ToolScreenStyle frame(std::string icon, const QString& title, const QString& message)
{
    ToolScreenStyle style;
    style.title = title;
    style.searchPlaceholder = QStringLiteral("Filtrer par chemin");
    style.welcome.icon = std::move(icon);
    style.welcome.title = title;
    style.welcome.message = message;
    style.welcome.hint = QStringLiteral("Rien n’est modifié pendant l’analyse.");
    style.welcome.actionTitle = QStringLiteral("Choisir un dossier…");
    return style;
}

ListToolStyle search(std::string icon, const QString& title, const QString& message)
{
    ListToolStyle style{frame(std::move(icon), title, message), {}};
    style.table.hasStrongNames = true;
    style.table.secondLine = [](const Entry& entry) { return FileUrlText::displayFromHome(entry.url); };
    style.table.badges = markBadges;
    style.table.toolTip = MarkText::explanation;
    return style;
}

ListToolStyle projects(const std::string& icon, const QString& title, const QString& message)
{
    ListToolStyle style = search(icon, title, message);
    style.table.name = projectName;
    style.table.symbol = [icon](const Entry&) { return icon; };
    style.table.columns.push_back(ageColumn());
    return style;
}

EntryTableColumn ageColumn()
{
    return {QStringLiteral("Modifié"), 130,
            [](const Entry& entry) { return ageText(entry.modifiedAt, std::chrono::system_clock::now()); },
            modifiedAtSortKey};
}

std::vector<EntryBadge> markBadges(const Entry& entry)
{
    std::vector<EntryBadge> badges;
    for (const QString& word : MarkText::words(entry)) {
        badges.push_back({word, Theme::Colour::old});
    }
    return badges;
}

std::string projectName(const Entry& entry)
{
    return std::string{entry.url.parent().lastPathComponent()};
}

} // namespace tallyroom::ToolStyles
