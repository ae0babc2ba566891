#include "Text/TreemapText.h"

#include "Text/AgeText.h"
#include "Text/FileUrlText.h"
#include "Text/NumberText.h"
#include "Text/UnreadText.h"

namespace tallyroom::TreemapText {

namespace {

QString shareOf(double share)
{
    const QString percentage = NumberText::percentage(share);
    return percentage.isEmpty() ? QStringLiteral("moins de ") + NumberText::percentage(0.001) : percentage;
}

} // namespace

QString name(const Entry& entry)
{
    return FileUrlText::display(entry.name) + QStringLiteral(", ") + UnreadText::spokenSize(entry);
}

QString description(std::size_t level, double share, std::optional<std::size_t> items)
{
    const QString text = QStringLiteral("niveau %1, part %2").arg(level).arg(shareOf(share));
    return items ? text + QStringLiteral(", ") + NumberText::plural(*items, QStringLiteral("élément")) : text;
}

QString facts(const Entry& entry, const Shares& shares, Timestamp now)
{
    QStringList parts{UnreadText::spokenSize(entry)};
    if (!shares.parent.isEmpty()) {
        parts << shareOf(shares.ofParent) + QStringLiteral(" de « ") + shares.parent + QStringLiteral(" »");
    }
    parts << shareOf(shares.ofAll) + QStringLiteral(" du total") << ageText(entry.modifiedAt, now);
    return parts.join(QStringLiteral(" · "));
}

QString tooSmall(std::size_t count)
{
    return NumberText::plural(count, QStringLiteral("élément trop petit pour être dessiné"),
                              QStringLiteral("éléments trop petits pour être dessinés"));
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
