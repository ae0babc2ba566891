#include "Tools/ScanEnd.h"

#include <cerrno>

namespace tallyroom {

QString ScanEnd::emptyText(const QString& none) const
{
    switch (kind) {
    case Kind::complete:
        return none;
    case Kind::none:
    case Kind::stopped:
        return QStringLiteral("Rien n’a été trouvé avant l’arrêt de l’analyse.");
    case Kind::unread:
        break;
    }
    const bool isRefused = cause.code == EACCES || cause.code == EPERM;
    return QStringLiteral("Ce dossier ne peut pas être lu : %1.")
        .arg(isRefused ? QStringLiteral("accès refusé") : QString::fromStdString(cause.message()));
}

} // namespace tallyroom
