#include "Text/UnreadText.h"

#include "Text/NumberText.h"
#include "Text/SizeText.h"

#include <QStringList>

namespace tallyroom::UnreadText {

namespace {

QString sizeAfter(const QString& atLeast, const Entry& entry)
{
    if (entry.has(EntryMark::unreadable)) {
        return entry.has(EntryMark::excluded) ? QStringLiteral("exclu") : QStringLiteral("illisible");
    }
    if (entry.unread > 0 && entry.sizeBytes == 0) {
        return QStringLiteral("inconnue");
    }
    return (entry.unread > 0 ? atLeast : QString{}) + sizeText(entry.sizeBytes);
}

} // namespace

QString count(std::int64_t unread, bool hasItems)
{
    return hasItems ? NumberText::plural(unread, QStringLiteral("élément illisible"),
                                         QStringLiteral("éléments illisibles"))
                    : NumberText::plural(unread, QStringLiteral("dossier illisible"),
                                         QStringLiteral("dossiers illisibles"));
}

QString count(const SharedUnreadPlaces& unread)
{
    if (unread == nullptr) {
        return {};
    }
    QStringList parts;
    if (const std::int64_t refused = unread->count - unread->excluded; refused > 0) {
        parts += count(refused, unread->hasItems);
    }
    if (unread->excluded > 0) {
        parts += NumberText::plural(unread->excluded, QStringLiteral("dossier exclu"),
                                    QStringLiteral("dossiers exclus"));
    }
    return parts.join(QStringLiteral(", "));
}

QString size(const Entry& entry)
{
    return sizeAfter(QStringLiteral("≥\u00a0"), entry);
}

QString spokenSize(const Entry& entry)
{
    return sizeAfter(QStringLiteral("au moins "), entry);
}

QString toolTip(const Entry& entry)
{
    if (entry.unread == 0) {
        return {};
    }
    if (entry.has(EntryMark::excluded)) {
        return entry.has(EntryMark::unreadable)
                   ? QStringLiteral("Ce dossier est exclu des analyses.")
                   : QStringLiteral("Un ou plusieurs dossiers exclus des analyses ne sont pas comptés.");
    }
    if (entry.has(EntryMark::unreadable)) {
        return entry.isDirectory ? QStringLiteral("Ce dossier ne peut pas être lu.")
                                 : QStringLiteral("Cet élément ne peut pas être examiné.");
    }
    return count(entry.unread, entry.has(EntryMark::unreadItems));
}

} // namespace tallyroom::UnreadText
