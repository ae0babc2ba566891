#include "Deletion/ReclaimLine.h"

#include "Bridge/AskApart.h"
#include "Deletion/DeletionSupport.h"
#include "Text/SizeText.h"
#include "Text/UnreadText.h"
#include "Theme/Theme.h"

#include <utility>

namespace tallyroom {

namespace {

const QString& beginning()
{
    static const QString text = QStringLiteral("Suppression définitive : ");
    return text;
}

} // namespace

ReclaimLine::ReclaimLine(std::vector<Entry> entries, QWidget* parent)
    : QLabel(beginning() + QStringLiteral("calcul de l’espace libéré…"), parent)
{
    setWordWrap(true);
    Theme::style(this, Theme::Text::body);
    const std::int64_t size = totalSize(entries);
    const auto measure = [entries = std::move(entries), stop = m_stop.get_token()] {
        return measureReclaim(entries, stop);
    };
    askApart<Reclaim>(this, measure, [this, size](const Reclaim& reclaim) {
        setText(sentence(reclaim, size));
        Q_EMIT measured();
    });
}

ReclaimLine::~ReclaimLine()
{
    m_stop.request_stop();
}

QString ReclaimLine::sentence(const Reclaim& reclaim, std::int64_t size)
{
    const QString least = sizeText(reclaim.atLeast);
    if (reclaim.unread > 0) {
        return beginning() + QStringLiteral("au moins %1 libérés (%2)")
                                 .arg(least, UnreadText::count(reclaim.unread, reclaim.hasUnreadItems));
    }
    if (!reclaim.isExact()) {
        const QString most = sizeText(reclaim.atMost);
        const QString reason = QStringLiteral(" (blocs partagés avec d’autres fichiers ou des instantanés)");
        return beginning() +
               (reclaim.atLeast == 0 ? QStringLiteral("au plus %1 libérés").arg(most)
                                     : QStringLiteral("au moins %1 et au plus %2 libérés").arg(least, most)) +
               reason;
    }
    if (reclaim.linkedElsewhere > 0 && reclaim.atLeast < size) {
        return beginning() +
               (reclaim.atLeast == 0 ? QStringLiteral("rien n’est libéré")
                                     : QStringLiteral("%1 libérés").arg(least)) +
               QStringLiteral(" (%1 ont d’autres noms ailleurs)").arg(sizeText(reclaim.linkedElsewhere));
    }
    return beginning() + QStringLiteral("%1 libérés").arg(least);
}

} // namespace tallyroom
