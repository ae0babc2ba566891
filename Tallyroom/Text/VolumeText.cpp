#include "Text/VolumeText.h"

#include "Text/FileUrlText.h"
#include "Text/NumberText.h"
#include "Text/SizeText.h"
#include "Text/UnreadText.h"

#include <QStringList>

#include <cmath>

namespace tallyroom::VolumeText {

namespace {

QString percentage(const VolumeUsage& volume)
{
    return QStringLiteral("%1 %").arg(std::lround(volume.usedFraction() * 100));
}

} // namespace

bool isNearlyFull(const VolumeUsage& volume)
{
    return volume.usedFraction() >= nearlyFull;
}

QString size(std::int64_t bytes)
{
    return sizeText(bytes);
}

QString atLeast(std::int64_t bytes, bool isLowerBound)
{
    return (isLowerBound ? QStringLiteral("au moins ") : QString{}) + size(bytes);
}

QString fill(const VolumeUsage& volume)
{
    if (!isNearlyFull(volume)) {
        return percentage(volume);
    }
    return volume.availableBytes < 1 ? QStringLiteral("plein") : QStringLiteral("presque plein");
}

QString name(const VolumeUsage& volume)
{
    const QStringList parts{
        FileUrlText::display(volume.name), FileUrlText::display(volume.url),
        QStringLiteral("%1 utilisés sur %2").arg(size(volume.usedBytes()), size(volume.totalBytes)),
        QStringLiteral("%1 disponibles").arg(size(volume.availableBytes))};
    return parts.join(QStringLiteral(", "));
}

QString description(const VolumeUsage& volume, bool isMain)
{
    QStringList parts;
    if (isMain) {
        parts << QStringLiteral("Volume principal");
    }
    parts << (volume.isInternal ? QStringLiteral("disque interne") : QStringLiteral("volume externe"));
    parts << percentage(volume) + QStringLiteral(" utilisés");
    if (isNearlyFull(volume)) {
        parts << fill(volume);
    }
    return parts.join(QStringLiteral(", ")) + QStringLiteral(". S’ouvre dans « Espace disque ».");
}

QString toolTip(const VolumeUsage& volume)
{
    return QStringLiteral(
               "<qt><b>%1</b><br><nobr>%2 · %3 utilisés</nobr><br><nobr>Cliquer pour l’ouvrir dans "
               "« Espace disque »</nobr></qt>")
        .arg(FileUrlText::display(volume.url).toHtmlEscaped(),
             volume.isInternal ? QStringLiteral("Disque interne") : QStringLiteral("Volume externe"),
             percentage(volume));
}

QString unanswered(std::int64_t count, bool mayStillAnswer)
{
    if (count < 1) {
        return {};
    }
    if (mayStillAnswer) {
        return NumberText::plural(count, QStringLiteral("volume n’a pas encore répondu…"),
                                  QStringLiteral("volumes n’ont pas encore répondu…"));
    }
    return NumberText::plural(count, QStringLiteral("volume ne répond pas."),
                              QStringLiteral("volumes ne répondent pas."));
}

QString account(const VolumeAccount& account, const SharedUnreadPlaces& unread)
{
    QStringList causes;
    if (unread != nullptr) {
        causes << UnreadText::count(unread);
    }
    if (account.skipped > 0) {
        causes << NumberText::plural(account.skipped, QStringLiteral("dossier de versions non ouvert"),
                                     QStringLiteral("dossiers de versions non ouverts"));
    }
    causes << QStringLiteral("fichiers supprimés encore ouverts…");
    QStringList parts{QStringLiteral("Utilisés sur le volume\u00a0: ") + size(account.used),
                      QStringLiteral("analysés\u00a0: ") + size(account.found)};
    if (account.reserved > 0) {
        parts << QStringLiteral("réservés au système\u00a0: ") + size(account.reserved);
    }
    if (account.missing() > 0) {
        parts << QStringLiteral("hors de portée\u00a0: %1 (%2)")
                     .arg(size(account.missing()), causes.join(QStringLiteral(", ")));
    }
    if (account.elsewhere > 0) {
        parts << QStringLiteral("en plus, sous d’autres points de montage\u00a0: ") + size(account.elsewhere);
    }
    return parts.join(QStringLiteral(" · "));
}

} // namespace tallyroom::VolumeText
