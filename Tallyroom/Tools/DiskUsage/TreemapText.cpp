#include "Tools/DiskUsage/TreemapText.h"

#include "Bridge/FileUrlText.h"
#include "Bridge/NumberText.h"
#include "Bridge/SizeText.h"

namespace tallyroom::TreemapText {

namespace {

QString formatted(std::int64_t bytes)
{
    return sizeText(bytes);
}

QString shareOf(double share)
{
    const QString percentage = NumberText::percentage(share);
    return percentage.isEmpty() ? QStringLiteral("moins de ") + NumberText::percentage(0.001) : percentage;
}

QString tooSmall(std::size_t count)
{
    return count == 1 ? QStringLiteral("1 élément trop petit pour être dessiné")
                      : QStringLiteral("%1 éléments trop petits pour être dessinés")
                            .arg(NumberText::grouped(static_cast<std::int64_t>(count)));
}

QString hint(const QString& title, const QString& detail)
{
    return QStringLiteral("<qt><b>%1</b><br><nobr>%2</nobr></qt>").arg(title.toHtmlEscaped(), detail);
}

} // namespace

QString name(const Entry& entry)
{
    return FileUrlText::display(entry.name) + QStringLiteral(", ") + formatted(entry.sizeBytes);
}

QString toolTip(const TreemapScene& scene, std::size_t tile)
{
    const Entry& entry = scene.entry(tile);
    const QString share = shareOf(scene.share(tile));
    return hint(FileUrlText::display(entry.name), formatted(entry.sizeBytes) + QStringLiteral(" · ") + share);
}

QString toolTip(const TreemapScene::Crumbs& crumbs)
{
    return crumbs.count == 0
               ? QString{}
               : hint(tooSmall(crumbs.count), formatted(static_cast<std::int64_t>(crumbs.sizeBytes)));
}

QString noTiles(const TreemapScene::Crumbs& crumbs, bool allFiltered)
{
    if (crumbs.count > 0) {
        return tooSmall(crumbs.count);
    }
    return allFiltered ? QStringLiteral("Aucun élément ne correspond au filtre.")
                       : QStringLiteral("Rien à dessiner : aucun élément n'occupe d'espace.");
}

} // namespace tallyroom::TreemapText
