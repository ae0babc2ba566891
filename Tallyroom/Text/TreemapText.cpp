#include "Text/TreemapText.h"

#include "Text/FileUrlText.h"
#include "Text/NumberText.h"
#include "Text/SizeText.h"
#include "Text/UnreadText.h"

namespace tallyroom::TreemapText {

namespace {

QString shareOf(double share)
{
    const QString percentage = NumberText::percentage(share);
    return percentage.isEmpty() ? QStringLiteral("moins de ") + NumberText::percentage(0.001) : percentage;
}

QString tooSmall(std::size_t count)
{
    return NumberText::plural(count, QStringLiteral("élément trop petit pour être dessiné"),
                              QStringLiteral("éléments trop petits pour être dessinés"));
}

QString hint(const QString& title, const QString& detail)
{
    return QStringLiteral("<qt><b>%1</b><br><nobr>%2</nobr></qt>").arg(title.toHtmlEscaped(), detail);
}

} // namespace

QString name(const Entry& entry)
{
    return FileUrlText::display(entry.name) + QStringLiteral(", ") + UnreadText::spokenSize(entry);
}

QString toolTip(const Entry& entry, double share)
{
    return hint(FileUrlText::display(entry.name),
                UnreadText::spokenSize(entry) + QStringLiteral(" · ") + shareOf(share));
}

QString smallEntriesToolTip(std::size_t count, std::int64_t sizeBytes)
{
    return count == 0 ? QString{} : hint(tooSmall(count), sizeText(sizeBytes));
}

QString noTiles(std::size_t smallEntries, bool allFiltered)
{
    if (smallEntries > 0) {
        return tooSmall(smallEntries);
    }
    return allFiltered ? QStringLiteral("Aucun élément ne correspond au filtre.")
                       : QStringLiteral("Rien à dessiner : aucun élément n'occupe d'espace.");
}

} // namespace tallyroom::TreemapText
