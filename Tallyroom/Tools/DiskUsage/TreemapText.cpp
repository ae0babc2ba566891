#include "Tools/DiskUsage/TreemapText.h"

#include "Bridge/FileUrlText.h"
#include "Text/SizeFormatter.h"

#include <QLocale>

#include <cmath>

namespace tallyroom::TreemapText {

namespace {

QString formatted(std::int64_t bytes)
{
    return QString::fromStdString(SizeFormatter::string(bytes));
}

/// "12,3 %" of `share` within [0, 1].
QString percentage(double share)
{
    const QString separator = QString::fromStdString(SizeFormatter::decimalSeparator());
    const auto thousandths = std::lround(share * 1000);
    if (thousandths == 0) {
        return QStringLiteral("moins de 0%1%2 %").arg(separator).arg(1);
    }
    return QStringLiteral("%1%2%3 %").arg(thousandths / 10).arg(separator).arg(thousandths % 10);
}

QString tooSmall(std::size_t count)
{
    return count == 1 ? QStringLiteral("1 élément trop petit pour être dessiné")
                      : QStringLiteral("%1 éléments trop petits pour être dessinés")
                            .arg(QLocale{QLocale::French}.toString(static_cast<qulonglong>(count)));
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
    const QString share = percentage(scene.share(tile));
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
